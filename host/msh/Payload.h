#pragma once

#include <variant>

#include <host/bas/OptionsHolder.h>
#include <host/bas/Vector.h>
#include <host/elm/PackedIndices.h>
#include <host/elm/types.h>
#include <host/msh/Opaque.h>

class MSH_Detail;
struct MSH_DetailData;
class MSH_Payload;
using MSH_PayloadHandle = BAS_IntrusivePtr<const MSH_Payload>;

/// Elements of the same detail that a payload refers to.  Removing and renumbering elements keeps them right.
struct MSH_ElementRefs
{
    ELM_Owner owner = ELM_OWNER_PRIMITIVE;
    std::vector<ELM_Offset> offsets;

    bool operator==(const MSH_ElementRefs &) const = default;
};

/// Details that a payload embeds.
using MSH_DetailList = std::vector<BAS_IntrusivePtr<const MSH_Detail>>;

/// A list of the types that a field of a payload can have, to make variants of.
template <class... Types> struct MSH_FieldTypes
{
    using Value = std::variant<Types *...>;
    using ConstValue = std::variant<const Types *...>;
};
using MSH_AnyField =
    MSH_FieldTypes<bool, int32_t, int64_t, double, BAS_Vec3d, BAS_StringHolder, std::vector<uint8_t>, std::vector<int32_t>,
                   std::vector<int64_t>, std::vector<float>, std::vector<double>, std::vector<BAS_StringHolder>,
                   ELM_PackedIndices, MSH_ElementRefs, BAS_OptionsHolder, MSH_OpaqueHandle, MSH_DetailList>;

/// One named value of a payload, to change (while it is loaded) or to read.
struct MSH_Field
{
    const char *name;
    MSH_AnyField::Value value;
};
struct MSH_ConstField
{
    const char *name;
    MSH_AnyField::ConstValue value;
};

/// The primitive that a payload is checked for.
struct MSH_PayloadUse
{
    ELM_PrimitiveTypeId type;
    int64_t vertices;
    ELM_Offset primitive;          ///< the offset that it will have
    const MSH_DetailData *detail;  ///< as it is before
};

/// What a primitive holds beyond its rows of the columns: knots, voxels, the geometry that it stands for.
///
/// A payload is a set of named fields; saving, loading, comparing and counting memory all go through them.
///
/// Ownership  intrusively counted; primitives, and snapshots of a detail, share one
/// Threads    immutable from when a detail holds it
class HOST_API MSH_Payload : public BAS_IntrusiveRefCounter<MSH_Payload>
{
public:
    virtual ~MSH_Payload();

    /// The fields, in an order that never changes.  They point into the payload.
    virtual std::vector<MSH_ConstField> fields() const = 0;

    /// The same to set, for who has just made or cloned the payload.
    virtual std::vector<MSH_Field> writableFields() = 0;

    /// A copy that nobody shares.
    virtual BAS_IntrusivePtr<MSH_Payload> clone() const = 0;

    /// Tell whether the content makes sense for a primitive.  Content is not trusted before: it may come from a file.
    virtual bool check(const MSH_PayloadUse &use, std::string &why) const = 0;

    /// True for payloads of the same class with equal fields.
    bool isEqual(const MSH_Payload &other) const;

    /// The same for equal payloads, in every process.
    uint64_t hash() const;

    /// Bytes of the fields, without details that they embed.
    int64_t memoryUsage() const;

protected:
    MSH_Payload() = default;
    MSH_Payload(const MSH_Payload &) = default;
};

/// The payload made of a plain struct.  `Data` has
///
///     template <class Self, class Visit> static void describe(Self &self, Visit &&visit);  // visit("name", self.member)...
///     bool check(const MSH_PayloadUse &use, std::string &why) const;
///
/// with members of the types of `MSH_AnyField`.
template <class Data> class MSH_PayloadOf final : public MSH_Payload
{
public:
    MSH_PayloadOf() = default;
    explicit MSH_PayloadOf(Data content) : data(std::move(content)) {}

    /// Make an empty one, to be loaded.
    static MSH_Payload *make() { return new MSH_PayloadOf; }

    std::vector<MSH_ConstField> fields() const override
    {
        std::vector<MSH_ConstField> all;
        Data::describe(data, [&all](const char *name, const auto &value) { all.push_back({name, &value}); });
        return all;
    }
    std::vector<MSH_Field> writableFields() override
    {
        std::vector<MSH_Field> all;
        Data::describe(data, [&all](const char *name, auto &value) { all.push_back({name, &value}); });
        return all;
    }
    BAS_IntrusivePtr<MSH_Payload> clone() const override { return new MSH_PayloadOf(data); }
    bool check(const MSH_PayloadUse &use, std::string &why) const override { return data.check(use, why); }

    Data data;
};

/// The struct behind a payload, which must be one of it.
template <class Data> const Data &MSHpayloadData(const MSH_Payload &payload)
{
    return static_cast<const MSH_PayloadOf<Data> &>(payload).data;
}
