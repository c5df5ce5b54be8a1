#pragma once

#include <memory>

#include <host/bas/BoundingBox.h>
#include <host/mod/DetailHandle.h>

/// What a packed primitive unpacks to: a detail, and what must live as long as it is wanted (a file that others share).
struct MOD_PackedContent
{
    MOD_ConstDetailHandle detail;
    std::shared_ptr<const void> source{};
};

/// What a packed primitive stands for: geometry that lies elsewhere, and how to get it.
///
/// Ownership  intrusively counted; shared by all primitives that place it
/// Failure    what cannot be had is an empty handle and a reason; asking again tries again
/// Threads    immutable but for caches; every operation is safe from any thread
class HOST_API MOD_PackedImpl : public BAS_IntrusiveRefCounter<MOD_PackedImpl>
{
public:
    virtual ~MOD_PackedImpl();

    /// The type of the primitives that it is for.
    virtual ELM_PrimitiveTypeId type() const = 0;

    // As those of payloads.
    virtual std::vector<MSH_ConstField> fields() const = 0;
    virtual std::vector<MSH_Field> writableFields() = 0;
    virtual BAS_IntrusivePtr<MOD_PackedImpl> clone() const = 0;
    virtual bool check(std::string &why) const = 0;

    /// Describe the geometry so that two with equal keys can share it.  False when it cannot be shared.
    virtual bool instanceKey(BAS_Options &key) const = 0;

    /// The geometry, in its own space.  Kept from the first time on.
    MOD_ConstDetailHandle unpack(std::string &why) const;

    /// Its points alone.
    MOD_ConstDetailHandle pointCloud(std::string &why) const;

    /// Its bounds, kept as well; empty when it cannot be had.
    BAS_BoundingBox bounds() const;

protected:
    MOD_PackedImpl();

    virtual MOD_PackedContent load(std::string &why) const = 0;

private:
    struct Unpacked;

    const Unpacked *unpacked(std::string &why) const;

    host::Published<Unpacked> unpacked_;
};

/// The implementation made of a plain struct, which has, besides `describe` as the data of payloads have it,
///
///     static ELM_PrimitiveTypeId type();
///     bool check(std::string &why) const;
///     bool instanceKey(BAS_Options &key) const;
///     MOD_PackedContent load(std::string &why) const;
template <class Data> class MOD_PackedImplOf final : public MOD_PackedImpl
{
public:
    MOD_PackedImplOf() = default;
    explicit MOD_PackedImplOf(Data content) : data(std::move(content)) {}

    ELM_PrimitiveTypeId type() const override { return Data::type(); }
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
    BAS_IntrusivePtr<MOD_PackedImpl> clone() const override { return new MOD_PackedImplOf(data); }
    bool check(std::string &why) const override { return data.check(why); }
    bool instanceKey(BAS_Options &key) const override { return data.instanceKey(key); }

    Data data;

protected:
    MOD_PackedContent load(std::string &why) const override { return data.load(why); }
};

/// What primitives of every packed type hold: the implementation, and how it sits in the primitive.
class HOST_API MOD_PackedPayload final : public MSH_Payload
{
public:
    explicit MOD_PackedPayload(BAS_IntrusivePtr<MOD_PackedImpl> implementation) : impl_(std::move(implementation)) {}
    MOD_PackedPayload(BAS_IntrusivePtr<const MOD_PackedImpl> implementation, const BAS_Vec3d &pivot, int32_t viewportLOD);

    /// Make an empty one of an implementation, to be loaded: the `makePayload` of a packed type.
    template <class Data> static MSH_Payload *make()
    {
        return new MOD_PackedPayload(BAS_IntrusivePtr<MOD_PackedImpl>(new MOD_PackedImplOf<Data>));
    }

    const MOD_PackedImpl &implementation() const { return *impl_; }
    const BAS_Vec3d &pivot() const { return pivot_; }
    int32_t viewportLOD() const { return viewportLOD_; }

    std::vector<MSH_ConstField> fields() const override;
    std::vector<MSH_Field> writableFields() override;
    BAS_IntrusivePtr<MSH_Payload> clone() const override { return new MOD_PackedPayload(*this); }
    bool check(const MSH_PayloadUse &use, std::string &why) const override;

private:
    BAS_IntrusivePtr<const MOD_PackedImpl> impl_;
    BAS_Vec3d pivot_{0.0};
    int32_t viewportLOD_ = 4;  // full
};
