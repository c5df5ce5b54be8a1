#include <io/detail/GLTFAttributes.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <io/detail/JSONText.h>
#include <io/detail/Tally.h>
#include <io/detail/bytes.h>
#include <io/detail/rowReader.h>
#include <io/detail/screenColour.h>

namespace rq::io
{
namespace
{
constexpr int kMostComponents = 16;

bool isReal(const ELM_Attribute &attribute, int least, int most)
{
    return attribute.storageClass() == ELM_STORAGE_CLASS_FLOAT && attribute.tupleSize() >= least &&
           attribute.tupleSize() <= most;
}

// "uv" is the first set, "uv2" the second; -1 for another name.
int setOf(std::string_view name, std::string_view stem)
{
    if (!name.starts_with(stem))
        return -1;
    const std::string_view rest = name.substr(stem.size());
    return rest.empty() ? 0 : rest.size() == 1 && rest[0] >= '2' && rest[0] <= '9' ? rest[0] - '1' : -1;
}

bool unitVector(float *v)
{
    const double length = std::sqrt(double(v[0]) * v[0] + double(v[1]) * v[1] + double(v[2]) * v[2]);
    if (!(length > 0.0) || !std::isfinite(length))
        return false;
    for (int c = 0; c < 3; ++c)
        v[c] = float(v[c] / length);
    return true;
}
}  // namespace

GLTFAttributes::GLTFAttributes(const MSH_Detail &detail, bool hasCorners, const ELM_Attribute *primitiveColors,
                               Leftovers &leftovers)
    : detail_(detail), leftovers_(leftovers)
{
    for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_POINT})
        for (const ELM_Attribute &attribute : detail.attributes(owner))
            if ((hasCorners || owner == ELM_OWNER_POINT) && attribute.scope() == ELM_SCOPE_PUBLIC &&
                attribute.numericTuple())
                plan(attribute);
    if (hasCorners && primitiveColors && !isPlanned("COLOR_0"))
        plan(*primitiveColors);
}

bool GLTFAttributes::isPlanned(const std::string &semantic) const
{
    return std::ranges::find(planned_, semantic, &Planned::semantic) != planned_.end();
}

void GLTFAttributes::plan(const ELM_Attribute &attribute)
{
    const std::string_view name = attribute.name().view();
    const int size = attribute.tupleSize();
    Planned planned{fmt::format("_{}", name), Role::Custom, &attribute, size};
    if (&attribute == &detail_.positions())
        planned = {"POSITION", Role::Position, &attribute, 3};
    else if (name == "N" && isReal(attribute, 3, 3))
        planned = {"NORMAL", Role::Normal, &attribute, 3};
    else if (name == "tangent" && isReal(attribute, 4, 4))
        planned = {"TANGENT", Role::Tangent, &attribute, 4};
    else if (const int uvs = setOf(name, "uv"); uvs >= 0 && isReal(attribute, 2, 3))
        planned = {fmt::format("TEXCOORD_{}", uvs), Role::UV, &attribute, 2};
    else if (const int colors = setOf(name, "Cd"); colors >= 0 && isReal(attribute, 3, 3))
        planned = {fmt::format("COLOR_{}", colors), Role::Color, &attribute, 3};
    else if (name == "Alpha")
        if (const ELM_Attribute *cd = detail_.find(attribute.owner(), "Cd"); cd && isReal(*cd, 3, 3))
            return;
    const bool hasForm = size <= 4 || size == 9 || size == 16;
    if (isPlanned(planned.semantic) || !hasForm)
        return;
    if (planned.semantic == "COLOR_0")
        if (const ELM_Attribute *alpha = detail_.find(attribute.owner(), "Alpha"); alpha && isReal(*alpha, 1, 1))
        {
            planned.alpha = alpha;
            planned.components = 4;
            leftovers_.hold(alpha);
        }
    leftovers_.hold(&attribute);
    if (planned.role == Role::UV && size == 3)
        leftovers_.warn(fmt::format("attribute \"{}\" keeps two of three numbers", name));
    planned_.push_back(std::move(planned));
}

std::vector<const ELM_Attribute *> GLTFAttributes::ofCorners() const
{
    std::vector<const ELM_Attribute *> found;
    for (const Planned &planned : planned_)
        for (const ELM_Attribute *attribute : {planned.attribute, planned.alpha})
            if (attribute && attribute->owner() != ELM_OWNER_POINT)
                found.push_back(attribute);
    return found;
}

// Whole numbers take the smallest type that holds all; glTF has none of 32 bits here.
GLTFType GLTFAttributes::typeFor(const Planned &planned) const
{
    if (planned.role != Role::Custom || planned.attribute->storageClass() != ELM_STORAGE_CLASS_INTEGER ||
        planned.components > 4)
        return GLTFType::Real32;
    return planned.attribute->numericTuple()->visit([](const auto &pages) {
        int64_t least = 0, most = 0;
        for (int64_t row = 0; row < pages.size(); ++row)
            for (int c = 0; c < pages.tupleSize(); ++c)
            {
                least = std::min(least, int64_t(pages.value(row, c)));
                most = std::max(most, int64_t(pages.value(row, c)));
            }
        if (least >= 0 && most <= UINT16_MAX)
            return most <= UINT8_MAX ? GLTFType::UInt8 : GLTFType::UInt16;
        if (least < INT16_MIN || most > INT16_MAX)
            return GLTFType::Real32;
        return least >= INT8_MIN && most <= INT8_MAX ? GLTFType::Int8 : GLTFType::Int16;
    });
}

void GLTFAttributes::write(const GLTFVertices &vertices, GLTFBuffer &buffer)
{
    for (Planned &planned : planned_)
    {
        mended_ = 0;
        const GLTFType type = typeFor(planned);
        if (type == GLTFType::Real32)
            writeReals(planned, vertices, buffer);
        else
            writeIntegers(planned, type, vertices, buffer);
        warnOfMended(planned);
    }
}

// What glTF does not allow, becomes what does least harm.
void GLTFAttributes::mend(Role role, float *row, int components)
{
    bool changed = false;
    const auto set = [&](float &value, float allowed) {
        changed |= value != allowed;
        value = allowed;
    };
    for (int c = 0; c < components; ++c)
        if (!std::isfinite(row[c]))
            set(row[c], 0.0f);
    if (role == Role::Color)
        for (int c = 0; c < components; ++c)
            set(row[c], std::clamp(row[c], 0.0f, 1.0f));
    if ((role == Role::Normal || role == Role::Tangent) && !unitVector(row))
    {
        changed = true;
        row[0] = row[1] = 0.0f;
        row[2] = 1.0f;
    }
    if (role == Role::Tangent)
        set(row[3], row[3] < 0.0f ? -1.0f : 1.0f);
    mended_ += changed;
}

void GLTFAttributes::writeReals(Planned &planned, const GLTFVertices &vertices, GLTFBuffer &buffer)
{
    const int size = planned.components;
    buffer.beginView(GLTFBuffer::Use::Attribute);
    GLTFBuffer::Rows rows{.begin = buffer.bytes.size(), .count = vertices.count(), .components = size};
    const bool bounded = planned.role == Role::Position;
    rows.least.assign(bounded ? size_t(size) : 0, std::numeric_limits<double>::infinity());
    rows.most.assign(bounded ? size_t(size) : 0, -std::numeric_limits<double>::infinity());
    for (int64_t i = 0; i < rows.count; ++i)
    {
        float row[kMostComponents];
        const int64_t from = vertices.row(planned.attribute->owner(), i);
        readRow(*planned.attribute, from, row, planned.alpha ? 3 : size);
        if (planned.alpha)
            readRow(*planned.alpha, from, row + 3, 1);
        if (planned.role == Role::UV)
            row[1] = 1.0f - row[1];
        mend(planned.role, row, size);
        if (planned.role == Role::Color)
            std::transform(row, row + 3, row, toLight);
        for (int c = 0; c < size; ++c)
            appendBytes(buffer.bytes, row[c]);
        for (size_t c = 0; c < rows.least.size(); ++c)
        {
            rows.least[c] = std::min(rows.least[c], double(row[c]));
            rows.most[c] = std::max(rows.most[c], double(row[c]));
        }
    }
    planned.accessor = buffer.add(std::move(rows));
}

void GLTFAttributes::writeIntegers(Planned &planned, GLTFType type, const GLTFVertices &vertices, GLTFBuffer &buffer)
{
    const bool isByte = type == GLTFType::Int8 || type == GLTFType::UInt8;
    const int size = planned.components, stride = (size * (isByte ? 1 : 2) + 3) / 4 * 4;
    buffer.beginView(GLTFBuffer::Use::Attribute, stride);
    const size_t begin = buffer.bytes.size();
    for (int64_t i = 0; i < vertices.count(); ++i)
    {
        int64_t row[4];
        readRow(*planned.attribute, vertices.row(planned.attribute->owner(), i), row, size);
        for (int c = 0; c < size; ++c)
            if (isByte)
                appendBytes(buffer.bytes, uint8_t(row[c]));
            else
                appendBytes(buffer.bytes, uint16_t(row[c]));
        buffer.bytes.resize(begin + size_t(i + 1) * size_t(stride));
    }
    planned.accessor = buffer.add({.begin = begin, .count = vertices.count(), .type = type, .components = size});
}

void GLTFAttributes::warnOfMended(const Planned &planned)
{
    const char *name = planned.attribute->name().c_str();
    constexpr const char *kAllowed[] = {"finite numbers", "directions",          "directions",
                                        "finite numbers", "numbers from 0 to 1", "finite numbers"};
    if (mended_ > 0)
        leftovers_.warn(fmt::format("attribute \"{}\" must have {}: {} changed", name, kAllowed[int(planned.role)],
                                    counted(mended_, "row is", "rows are")));
    if (planned.attribute->storage() == ELM_STORAGE_REAL64)
        leftovers_.warn(fmt::format("attribute \"{}\" has 64 bits, of which 32 are kept", name));
}

void GLTFAttributes::writeMap(BAS_JSONWriter &json) const
{
    json.key("attributes");
    json.beginMap();
    for (const Planned &planned : planned_)
        json.writeKeyInt(toJSONText(planned.semantic), planned.accessor);
    json.endMap();
}
}  // namespace rq::io
