#include <host/mod/PackedImpl.h>

#include <fmt/format.h>

#include <host/mod/services.h>

// Everything kept of one unpacking.
struct MOD_PackedImpl::Unpacked : BAS_IntrusiveRefCounter<Unpacked>
{
    MOD_PackedContent content;
    BAS_BoundingBox bounds;
};

MOD_PackedImpl::MOD_PackedImpl() = default;
MOD_PackedImpl::~MOD_PackedImpl() = default;

const MOD_PackedImpl::Unpacked *MOD_PackedImpl::unpacked(std::string &why) const
try
{
    if (const Unpacked *known = unpacked_.get())
        return known;
    BAS_IntrusivePtr<Unpacked> made(new Unpacked);
    made->content = load(why);
    if (!made->content.detail)
        return nullptr;
    made->bounds = MODcomputeBounds(*made->content.detail.readLock());
    return &unpacked_.getOrBuild([&made] { return BAS_IntrusivePtr<const Unpacked>(made); });
}
catch (const std::bad_alloc &)
{
    why = "not enough memory";
    return nullptr;
}

MOD_ConstDetailHandle MOD_PackedImpl::unpack(std::string &why) const
{
    const Unpacked *content = unpacked(why);
    return content ? content->content.detail : MOD_ConstDetailHandle();
}

MOD_ConstDetailHandle MOD_PackedImpl::pointCloud(std::string &why) const
try
{
    const MOD_ConstDetailHandle whole = unpack(why);
    return whole ? MODpointsOf(*whole.readLock()) : whole;
}
catch (const std::bad_alloc &)
{
    why = "not enough memory";
    return {};
}

BAS_BoundingBox MOD_PackedImpl::bounds() const
{
    std::string why;
    const Unpacked *content = unpacked(why);
    return content ? content->bounds : BAS_BoundingBox();
}

MOD_PackedPayload::MOD_PackedPayload(BAS_IntrusivePtr<const MOD_PackedImpl> implementation, const BAS_Vec3d &pivot,
                                     int32_t viewportLOD)
    : impl_(std::move(implementation)), pivot_(pivot), viewportLOD_(viewportLOD)
{}

std::vector<MSH_ConstField> MOD_PackedPayload::fields() const
{
    std::vector<MSH_ConstField> all = {{"pivot", &pivot_}, {"viewport_lod", &viewportLOD_}};
    const std::vector<MSH_ConstField> inner = impl_->fields();
    all.insert(all.end(), inner.begin(), inner.end());
    return all;
}

std::vector<MSH_Field> MOD_PackedPayload::writableFields()
{
    // Others may hold, or have unpacked, the implementation: writing goes to a fresh one.
    const BAS_IntrusivePtr<MOD_PackedImpl> own = impl_->clone();
    impl_ = own;
    std::vector<MSH_Field> all = {{"pivot", &pivot_}, {"viewport_lod", &viewportLOD_}};
    const std::vector<MSH_Field> inner = own->writableFields();
    all.insert(all.end(), inner.begin(), inner.end());
    return all;
}

bool MOD_PackedPayload::check(const MSH_PayloadUse &use, std::string &why) const
{
    // What five bits with a sign hold.
    constexpr int32_t kLowest = -16, kHighest = 15;
    if (!impl_ || impl_->type() != use.type)
        why = "a packed primitive needs an implementation of its own type";
    else if (viewportLOD_ < kLowest || viewportLOD_ > kHighest)
        why = fmt::format("viewport level {} is out of range [{}, {}]", viewportLOD_, kLowest, kHighest);
    else
        return impl_->check(why);
    return false;
}
