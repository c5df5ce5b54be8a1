#include <io/detail/UnpackedColumns.h>

#include <algorithm>

#include <fmt/format.h>

#include <host/bas/Parallel.h>
#include <io/detail/Leftovers.h>
#include <io/detail/coloursOfPoints.h>
#include <io/detail/rowReader.h>
#include <rq/bridge/MSHElementArray.h>
#include <rq/data/DANumeric.h>
#include <rq/data/NumericTypes.h>
#include <rq/data/Values.h>
#include <rq/prim/Transform.h>

namespace rq::io
{
namespace
{
constexpr ELM_Owner kOwners[] = {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE};

// A copy of a few points costs about 1 us.
constexpr int64_t kCopiesPerTask = 32;

/// A storage that holds the values of both.
ELM_Storage wider(ELM_Storage a, ELM_Storage b)
{
    if (a == b)
        return a;
    const bool areWhole = ELMstorageClass(a) == ELM_STORAGE_CLASS_INTEGER && ELMstorageClass(b) == ELM_STORAGE_CLASS_INTEGER;
    const bool areReal = ELMstorageClass(a) == ELM_STORAGE_CLASS_FLOAT && ELMstorageClass(b) == ELM_STORAGE_CLASS_FLOAT;
    return areReal ? std::max(a, b) : areWhole ? std::max({a, b, ELM_STORAGE_INT32}) : ELM_STORAGE_REAL64;
}

/// What values mean where their attribute does not say so: RQ_TYPE_NONE for all others.
RQ_Type meaningOf(std::string_view name, ELM_Storage storage, int size)
{
    if (size < 3 || ELMstorageClass(storage) != ELM_STORAGE_CLASS_FLOAT)
        return RQ_TYPE_NONE;
    return name == ELM_POSITION_NAME ? RQ_TYPE_POINT
           : name == "N"             ? RQ_TYPE_NORMAL
           : name == "tangent"       ? RQ_TYPE_VECTOR
                                     : RQ_TYPE_NONE;
}

bool isColumn(const ELM_Attribute &attribute) { return attribute.numericTuple() || attribute.strings(); }

bool isColor(const BAS_StringHolder &name) { return name.view() == "Cd" || name.view() == "Alpha"; }

template <class T> void makeUnits(T *rows, int64_t count, int size)
{
    for (int64_t i = 0; i < count; ++i, rows += size)
    {
        const BAS_Vec3d unit = BAS_Vec3d(double(rows[0]), double(rows[1]), double(rows[2])).normalized();
        for (int c = 0; c < 3; ++c)
            rows[c] = T(unit[c]);
    }
}
}  // namespace

UnpackedColumns::UnpackedColumns(const PackedCopies &copies, const std::vector<MOD_ConstDetailHandle> &plain,
                                 const std::string &name, Messages &messages)
    : copies_(copies), plain_(plain), name_(name), messages_(messages)
{
    // The root first, so that its attributes keep their order and what they are.
    for (size_t part = plain.size(); part-- > 0;)
        take(part);
}

void UnpackedColumns::take(size_t part)
{
    const MSH_Detail &plain = *plain_[part].readLock(), &root = *plain_.back().readLock();
    for (const ELM_Owner owner : kOwners)
        for (const ELM_Attribute &attribute : plain.attributes(owner))
        {
            // What only says where something is placed ends with the placing.
            const bool isGiven = isOfPlaced(attribute) && !copies_.parts().all()[part].placements.empty();
            if (attribute.scope() != ELM_SCOPE_PUBLIC || (plain.count(owner) == 0 && !isGiven))
                continue;
            const ELM_Attribute *known = root.count(owner) > 0 ? root.find(owner, attribute.name().view()) : nullptr;
            if (isColumn(attribute) && (!known || isColumn(*known)))
                take(attribute);
            else if (part + 1 < plain_.size())
                messages_.warn(name_, {},
                               fmt::format("attribute \"{}\" of {} in packed geometry is left out", attribute.name().c_str(),
                                           Leftovers::nameOf(owner)));
        }
}

void UnpackedColumns::take(const ELM_Attribute &attribute)
{
    const auto known = std::ranges::find_if(columns_, [&](const Column &column) {
        return column.owner == attribute.owner() && column.name == attribute.name();
    });
    const bool isPosition = attribute.name().view() == ELM_POSITION_NAME && attribute.owner() == ELM_OWNER_POINT;
    // Half the bits do not tell where a copy lies.
    const ELM_Storage storage = isPosition ? wider(ELM_STORAGE_REAL32, attribute.storage()) : attribute.storage();
    if (known == columns_.end())
        columns_.push_back({attribute.owner(), attribute.name(), storage, attribute.tupleSize(), attribute.typeInfo()});
    else if (known->isText() != (attribute.strings() != nullptr))
        messages_.warn(name_, {},
                       fmt::format("attribute \"{}\" of {} has texts here and numbers there; one sort is left out",
                                   attribute.name().c_str(), Leftovers::nameOf(attribute.owner())));
    else
    {
        known->storage = known->isText() ? known->storage : wider(known->storage, storage);
        known->size = std::max(known->size, attribute.tupleSize());
    }
}

bool UnpackedColumns::has(size_t part, std::string_view name) const
{
    const MSH_Detail &plain = *plain_[part].readLock();
    return plain.find(ELM_OWNER_DETAIL, name) ||
           std::ranges::any_of(kOwners, [&](ELM_Owner owner) { return plain.count(owner) > 0 && plain.find(owner, name); });
}

// What vertices have here, points or primitives may have there.
const ELM_Attribute *UnpackedColumns::find(size_t part, const Column &column) const
{
    const MSH_Detail &plain = *plain_[part].readLock();
    for (const ELM_Owner owner : kOwners)
        if (owner == column.owner || column.owner == ELM_OWNER_VERTEX)
            if (const ELM_Attribute *found = plain.find(owner, column.name.view());
                found && (column.isText() ? found->strings() && owner == column.owner : found->numericTuple() != nullptr))
                return found;
    return nullptr;
}

const ELM_Attribute *UnpackedColumns::inherited(const PackedCopy &copy, const Column &column, int64_t &row) const
{
    const ELM_Attribute *given =
        has(copy.part, column.name.view()) ? nullptr : copies_.inherited(copy, column.name.view(), row);
    return given && column.isText() == (given->strings() != nullptr) ? given : nullptr;
}

RQ_DataArrayHandle UnpackedColumns::sourceOf(size_t part, const Column &column) const
{
    const MOD_ConstDetailHandle &plain = plain_[part];
    const ELM_Attribute *found = plain.readLock()->count(column.owner) > 0 ? find(part, column) : nullptr;
    const ELM_Attribute *ofPrimitives = plain.readLock()->find(ELM_OWNER_PRIMITIVE, column.name.view());
    if (!found && column.owner == ELM_OWNER_POINT && isColor(column.name) && ofPrimitives && ofPrimitives->numericTuple())
        return coloursOfPoints(*plain.readLock(), *ofPrimitives);
    if (!found)
        return nullptr;
    const RQ_MSHOffsetList all(*plain.readLock(), column.owner);
    const RQ_DataArrayHandle array(new RQ_MSHElementArray(plain, found, all, column.owner));
    const RQ_Type meaning = meaningOf(column.name.view(), column.storage, int(array->getTupleSize()));
    if (meaning == RQ_TYPE_NONE || (array->getTypeInfo() == meaning && RQisFloat(array->getStorage())))
        return array;
    return new RQ_DANumeric<double>(Values<double>(*array).data(), array->entries(), array->getTupleSize(), meaning);
}

template <class T>
void UnpackedColumns::fill(const Column &column, const PackedCopy &copy, const RQ_DataArrayHandle &source, T *rows) const
{
    const int64_t count = plain_[copy.part].readLock()->count(column.owner);
    int64_t row = 0;
    if (source)
    {
        const RQ_TransformHandle transform(new RQ_Transform(&copy.matrix, 1));
        const RQ_DataArrayHandle placed = transform->transform(source, 0);
        placed->fillArray(rows, 0, count, int(source->getTupleSize()), column.size);
        const RQ_Type meaning = meaningOf(column.name.view(), column.storage, int(source->getTupleSize()));
        if (copy.isMoved() && (meaning == RQ_TYPE_NORMAL || meaning == RQ_TYPE_VECTOR))
            makeUnits(rows, count, column.size);
    }
    else if (const ELM_Attribute *given = inherited(copy, column, row))
    {
        std::vector<T> values(size_t(column.size));
        readRow(*given, row, values.data(), std::min(given->tupleSize(), column.size));
        for (int64_t i = 0; i < count; ++i, rows += column.size)
            std::ranges::copy(values, rows);
    }
    else if (isColor(column.name))
        std::fill_n(rows, count * column.size, T(1));
}

/// Whether the rows of the root are in the edit as they are to be.
bool UnpackedColumns::keepsFirst(const Column &column) const
{
    const ELM_Attribute *found = plain_.back().readLock()->find(column.owner, column.name.view());
    return found && found->storage() == column.storage && found->tupleSize() == column.size && !found->hasArrays();
}

bool UnpackedColumns::writeNumbers(MOD_Edit &edit, const Column &column) const
{
    const bool keeps = keepsFirst(column);
    ELM_Attribute *to = edit.attribute(column.owner, column.name.view(), column.storage, column.size, column.type);
    if (!to)
        return false;
    std::vector<RQ_DataArrayHandle> sources;
    for (size_t part = 0; part < plain_.size(); ++part)
        sources.push_back(sourceOf(part, column));
    to->numericTuple()->visit([&](auto &pages) {
        auto *values = pages.modifyAll();
        host::parallelFor(std::ssize(copies_.all), kCopiesPerTask, [&](int64_t i) {
            const PackedCopy &copy = copies_.all[size_t(i)];
            if (values && (i > 0 || !keeps))
                fill(column, copy, sources[copy.part], values + copy.first[size_t(column.owner)] * column.size);
        });
    });
    return true;
}

bool UnpackedColumns::writeTexts(MOD_Edit &edit, const Column &column) const
{
    const bool keeps = keepsFirst(column);
    ELM_Attribute *attribute = edit.stringAttribute(column.owner, column.name.view(), column.size);
    if (!attribute)
        return false;
    ELM_StringTuple &to = *attribute->strings();
    for (size_t i = keeps ? 1 : 0; i < copies_.all.size(); ++i)
    {
        const PackedCopy &copy = copies_.all[i];
        const int64_t first = copy.first[size_t(column.owner)], count = plain_[copy.part].readLock()->count(column.owner);
        int64_t row = 0;
        if (const ELM_Attribute *found = find(copy.part, column))
        {
            std::vector<int32_t> places;
            for (const BAS_StringHolder &text : found->strings()->table())
                places.push_back(to.add(text.view()));
            std::vector<int32_t> rows(size_t(count * column.size), -1);
            for (int64_t r = 0; r < count * found->tupleSize(); ++r)
            {
                const int64_t at = r / found->tupleSize();
                const int component = int(r % found->tupleSize());
                if (const int32_t place = found->strings()->index(at, component); place >= 0)
                    rows[size_t(at * column.size + component)] = places[size_t(place)];
            }
            to.writeIndices(first, count, rows.data());
        }
        else if (const ELM_Attribute *given = inherited(copy, column, row))
        {
            const int32_t place = given->strings()->index(row);
            if (place >= 0 && column.size == 1)
                to.fill(first, count, to.add(given->strings()->table()[size_t(place)].view()));
        }
    }
    return true;
}

// Of elements that only placed something.
bool UnpackedColumns::dropOthers(MOD_Edit &edit) const
{
    const MSH_Detail &root = *plain_.back().readLock();
    for (const ELM_Owner owner : kOwners)
        for (const ELM_Attribute &attribute : root.attributes(owner))
        {
            const bool isTaken = std::ranges::any_of(
                columns_, [&](const Column &column) { return column.owner == owner && column.name == attribute.name(); });
            if (root.count(owner) == 0 && attribute.scope() == ELM_SCOPE_PUBLIC && !isTaken &&
                attribute.name().view() != ELM_POSITION_NAME && !edit.removeAttribute(owner, attribute.name().view()))
                return false;
        }
    return true;
}

bool UnpackedColumns::write(MOD_Edit &edit) const
{
    return dropOthers(edit) && std::ranges::all_of(columns_, [&](const Column &column) {
               return column.isText() ? writeTexts(edit, column) : writeNumbers(edit, column);
           });
}
}  // namespace rq::io
