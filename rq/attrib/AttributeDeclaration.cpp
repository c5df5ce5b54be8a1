#include <rq/attrib/AttributeBuilder.h>

#include <cstdlib>
#include <cstring>
#include <limits>

namespace
{
constexpr size_t kMaxFields = 5;

bool isBlank(char c) { return c != '\0' && std::strchr(" \t\n\v\f\r", c); }

// Every blank and every bracket begins a field, so two blanks in a row leave an empty one.
BAS_Array<std::string> splitFields(const char *declaration)
{
    BAS_Array<std::string> fields(1);
    for (const char *c = declaration; *c; ++c)
    {
        if ((isBlank(*c) || *c == '[') && fields.size() < kMaxFields)
            fields.emplace_back();
        if (!isBlank(*c))
            fields.back() += *c;
    }
    return fields;
}

// These words are not the owners' names: "facevarying" is none, and "shared" is no binding.
RQ_Owner bindingOwner(const std::string &binding)
{
    static constexpr struct
    {
        const char *name;
        RQ_Owner owner;
    } kBindings[] = {
        {"vertex", RQ_OWNER_VERTEX}, {"facevarying", RQ_OWNER_VERTEX}, {"point", RQ_OWNER_POINT},
        {"varying", RQ_OWNER_POINT}, {"primitive", RQ_OWNER_UNIFORM},  {"uniform", RQ_OWNER_UNIFORM},
        {"detail", RQ_OWNER_DETAIL}, {"constant", RQ_OWNER_DETAIL},
    };
    for (const auto &known : kBindings)
        if (binding == known.name)
            return known.owner;
    return RQ_OWNER_INVALID;
}

int componentsOf(RQ_Type type)
{
    switch (type)
    {
    case RQ_TYPE_POINT:
    case RQ_TYPE_VECTOR:
    case RQ_TYPE_NORMAL:
    case RQ_TYPE_COLOR:
        return 3;
    case RQ_TYPE_HPOINT:
    case RQ_TYPE_QUATERNION:
        return 4;
    case RQ_TYPE_MATRIX3:
        return 9;
    case RQ_TYPE_MATRIX:
        return 16;
    default:
        return 1;
    }
}

RQ_Storage storageOf(const std::string &typeName, RQ_Type type)
{
    const auto has = [&](const char *width) { return typeName.find(width) != std::string::npos; };
    if (type == RQ_TYPE_NONE)
        return RQstorage(typeName.c_str());
    if (has("32"))
        return RQ_STORAGE_REAL32;
    if (has("16"))
        return RQ_STORAGE_REAL16;
    if (has("64"))
        return RQ_STORAGE_REAL64;
    return type == RQ_TYPE_MATRIX ? RQ_STORAGE_REAL64 : RQ_STORAGE_REAL32;
}
}  // namespace

bool RQ_AttributeBuilder::guessTypeInformation(RQ_BuilderStatus &status, const char *declaration, BAS_StringHolder &name,
                                               RQ_Owner &owner, RQ_Storage &storage, RQ_Type &type, int &tupleSize)
{
    declaration = declaration ? declaration : "";
    const BAS_Array<std::string> fields = splitFields(declaration);
    if (fields.size() < 3)
    {
        status.addError("Missing arguments when parsing '%s'", declaration);
        return false;
    }
    owner = bindingOwner(fields[0]);
    type = RQtype(fields[1].c_str());
    tupleSize = componentsOf(type);
    storage = storageOf(fields[1], type);
    if (storage == RQ_STORAGE_INVALID)
    {
        status.addError("Unknown storage type '%s' when parsing '%s'", fields[1].c_str(), declaration);
        return false;
    }
    name = BAS_StringHolder(fields[2]);
    if (fields.size() != 4 || fields[3][0] != '[')
        return true;

    // A number too large for the type saturates, and then the product is too large as well.
    const long long count = std::strtoll(fields[3].c_str() + 1, nullptr, 10);
    if (count < 1 || count > std::numeric_limits<int>::max() / tupleSize)
    {
        status.addError("Invalid array size %s when parsing '%s'", fields[3].c_str(), declaration);
        return false;
    }
    tupleSize *= int(count);
    return true;
}
