#include <host/mod/detail/AddedPrimitives.h>

#include <fmt/format.h>
#include <typeinfo>

#include <host/elm/PrimitiveFactory.h>

namespace
{
/// True for a type that needs no payload and a null one, and for a payload of the type's own class.
bool belongsTo(const ELM_PrimitiveDefinition &type, const MSH_Payload *payload)
{
    if (!payload)
        return !type.makePayload || type.id >= ELM_PRIMITIVE_FIRST_FREE;
    if (!type.makePayload)
        return false;
    const BAS_IntrusivePtr<MSH_Payload> example(type.makePayload());
    return typeid(*payload) == typeid(*example);
}

bool isOneOrEach(int64_t given, int64_t count) { return given <= 1 || given == count; }

/// Write matrices into rows of nine values; one for all rows is kept as repeated pages.
template <class Value, class Matrix>
void writeMatrices(ELM_PageArray<Value> &rows, int64_t first, int64_t count, std::span<const Matrix> matrices)
{
    const auto copy = [](const Matrix &matrix, Value *to) {
        for (int i = 0; i < 9; ++i)
            to[i] = Value(matrix[i / 3][i % 3]);
    };
    if (matrices.size() > 1)
    {
        rows.writeBlocks(first, count, [&](Value *to, int64_t row, int64_t block) {
            for (int64_t i = 0; i < block; ++i)
                copy(matrices[size_t(row - first + i)], to + 9 * i);
        });
        return;
    }
    Value same[9];
    copy(matrices.empty() ? Matrix() : matrices[0], same);
    rows.fill(first, count, same);
}

ELM_AttributeHandle makeTransforms(bool isWide, int64_t rows)
{
    return ELM_Attribute::create(ELM_OWNER_PRIMITIVE, ELM_SCOPE_PRIVATE, BAS_StringHolder::literal(ELM_TRANSFORM_NAME),
                                 isWide ? ELM_STORAGE_REAL64 : ELM_STORAGE_REAL32, 9, ELM_TYPE_MATRIX, rows);
}

ELM_AttributeHandle widened(const ELM_Attribute &narrow)
{
    ELM_AttributeHandle wide = makeTransforms(true, narrow.size());
    const ELM_PageArray<float> &from = *narrow.pages<float>();
    wide->pages<double>()->writeBlocks(0, narrow.size(), [&from](double *to, int64_t row, int64_t rows) {
        for (int64_t i = 0; i < rows; ++i)
            std::copy_n(from.tuple(row + i), 9, to + 9 * i);
    });
    return wide;
}
}  // namespace

bool MOD_Edit::append(const MOD_Primitives &primitives)
{
    static const ELM_PrimitiveDefinition kReserved{ELM_PRIMITIVE_RESERVED, BAS_StringHolder::literal("reserved"), {}};
    const int64_t count = primitives.count, payloads = int64_t(primitives.payloads.size());
    const ELM_PrimitiveDefinition *type =
        primitives.type == ELM_PRIMITIVE_RESERVED ? &kReserved : ELM_PrimitiveFactory::find(primitives.type);
    if (!type)
        return fail(fmt::format("{} is no type of primitives", primitives.type));
    const char *name = type->name.c_str();
    const bool hasCorners = !primitives.corners.empty();
    if (count < 0 || (hasCorners && count != int64_t(primitives.corners.size())))
        return fail(fmt::format("{} numbers of vertices are given for {} primitives", primitives.corners.size(), count));
    const int64_t same = primitives.sameCorners;
    if (!hasCorners &&
        (same < 0 || (same == 0 ? primitives.points.size() != 0
                                : primitives.points.size() % same != 0 || primitives.points.size() / same != count)))
        return fail(
            fmt::format("{} points do not make {} primitives of {} vertices", primitives.points.size(), count, same));
    const auto isWrong = [type](int32_t corners) { return corners < type->fewestVertices || corners > type->mostVertices; };
    const auto wrong = std::find_if(primitives.corners.begin(), primitives.corners.end(), isWrong);
    if (wrong != primitives.corners.end() || (!hasCorners && count > 0 && isWrong(int32_t(same))))
        return fail(fmt::format("{} vertices are not what a primitive of type {} has", hasCorners ? *wrong : same, name));
    if (!isOneOrEach(payloads, count) || !isOneOrEach(primitives.transforms.size(), count) ||
        (primitives.transforms.size() > 0 && !type->isPlaced))
        return fail(fmt::format("{} primitives of type {} cannot have {} payloads and {} transforms", count, name, payloads,
                                primitives.transforms.size()));
    Primitives added{primitives.type, Primitives::flagsOf(primitives.isClosed), count,
                     hasCorners ? primitives.corners.data() : nullptr, primitives.sameCorners};
    added.payloads = primitives.payloads;
    added.transforms = primitives.transforms;
    added.isPlaced = type->isPlaced;
    return attempt([&] { return appendPrimitives(added, primitives.points); });
}

bool MOD_Edit::checkPayloads(const Primitives &added)
{
    const ELM_PrimitiveDefinition *type = ELM_PrimitiveFactory::find(added.type);
    if (!type || !type->makePayload)
        return added.payloads.empty() || fail(fmt::format("primitives of type {} have no payload", added.type));
    const MSH_Payload *checked = nullptr;
    int64_t checkedCorners = -1;
    for (int64_t i = 0; i < added.count; ++i)
    {
        const size_t at = added.payloads.size() > 1 ? size_t(i) : 0;
        const MSH_Payload *payload = added.payloads.empty() ? nullptr : added.payloads[at].get();
        const int64_t corners = added.corners ? added.corners[i] : added.sameCorners;
        if (i > 0 && payload == checked && corners == checkedCorners)
        {
            // All the others are the same, too.
            if (added.payloads.size() <= 1 && !added.corners)
                break;
            continue;
        }
        if ((i == 0 || payload != checked) && !belongsTo(*type, payload))
            return fail(fmt::format("primitives of type {} need a payload of their own class", type->name.c_str()));
        std::string why;
        if (payload && !payload->check({added.type, corners, capacity(ELM_OWNER_PRIMITIVE) + i, &data_}, why))
            return fail(std::move(why));
        checked = payload;
        checkedCorners = corners;
    }
    return true;
}

void MOD_Edit::writePayloads(const Primitives &added)
{
    const auto numberOf = [&](const MSH_PayloadHandle &payload) {
        return payload ? data_.payloads.add(added.type, payload) : -1;
    };
    if (added.payloads.size() == 1)
    {
        const int32_t number = numberOf(added.payloads[0]);
        data_.payload.fill(capacity(ELM_OWNER_PRIMITIVE), added.count, &number);
    }
    else if (added.payloads.size() > 1)
    {
        std::vector<int32_t> numbers(added.payloads.size());
        std::transform(added.payloads.begin(), added.payloads.end(), numbers.begin(), numberOf);
        data_.payload.writeCompact(capacity(ELM_OWNER_PRIMITIVE), added.count, numbers.data());
    }
}

// The column is in 32 bits until the first wide matrices come.  What an application has put in its place makes way.
void MOD_Edit::writeTransforms(const Primitives &added)
{
    ELM_AttributeDict &dict = data_.attributes[ELM_OWNER_PRIMITIVE];
    const ELM_Attribute *known = dict.find(ELM_SCOPE_PRIVATE, ELM_TRANSFORM_NAME);
    const int64_t first = capacity(ELM_OWNER_PRIMITIVE), rows = first + added.count;
    const bool isColumn = known && known->tupleSize() == 9 && (known->pages<float>() || known->pages<double>());
    if (!isColumn || (added.transforms.isWide() && known->pages<float>()))
    {
        touched_.erase(known);
        dict.insert(isColumn ? widened(*known) : makeTransforms(added.transforms.isWide(), rows));
    }
    ELM_Attribute *transforms = touch(dict.writable(ELM_SCOPE_PRIVATE, ELM_TRANSFORM_NAME));
    added.transforms.visit([&](auto matrices) {
        if (ELM_PageArray<float> *narrow = transforms->pages<float>())
            writeMatrices(*narrow, first, added.count, matrices);
        else if (ELM_PageArray<double> *wide = transforms->pages<double>())
            writeMatrices(*wide, first, added.count, matrices);
    });
}
