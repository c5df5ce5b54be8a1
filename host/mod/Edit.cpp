#include <host/mod/Edit.h>

#include <fmt/format.h>

#include <host/mod/detail/DetailControl.h>

namespace
{
// Far beyond any memory, and far enough below the largest offset to calculate with.
constexpr int64_t kMaxPoints = int64_t(1) << 48;

ELM_Range vacantOf(const MSH_DetailData &data, ELM_Owner owner)
{
    const ELM_OffsetBitsHandle vacant(new ELM_OffsetBits(*data.live[owner]));
    for (int64_t i = 0; i < vacant->bits.wordCount(); ++i)
        vacant->bits.words()[i] = ~vacant->bits.words()[i];
    return ELM_Range(owner, vacant);
}
}  // namespace

MOD_Edit::MOD_Edit(const MOD_DetailHandle &detail)
    : detail_(detail), editing_(detail.control_->editing), data_(detail.read().readLock()->data())
{}

MOD_Edit::~MOD_Edit() = default;

bool MOD_Edit::fail(std::string message)
{
    message_ = std::move(message);
    return false;
}

bool MOD_Edit::isOpen() { return editing_ || fail("the edit has ended"); }

bool MOD_Edit::attempt(const std::function<bool()> &change)
{
    if (!isOpen())
        return false;
    try
    {
        if (change())
            return true;
    }
    catch (const std::bad_alloc &)
    {
        fail("not enough memory");
    }
    catch (const std::length_error &)
    {
        fail("not enough memory");
    }
    dropRows();
    return false;
}

// Take back the rows that a change made before it failed.
void MOD_Edit::dropRows()
{
    for (int owner = 0; owner < ELM_ELEMENT_OWNERS; ++owner)
    {
        resizeAttributes(ELM_Owner(owner), data_.capacity[owner]);
        if (data_.live[owner] && data_.live[owner]->end() > data_.capacity[owner])
            liveBits(ELM_Owner(owner), data_.capacity[owner]);
    }
    const int64_t primitives = capacity(ELM_OWNER_PRIMITIVE);
    data_.vertexPoint.resize(capacity(ELM_OWNER_VERTEX));
    data_.eachPrimitiveColumn([primitives](auto &column) { column.resize(primitives); });
}

// Let an owner have more offsets, with elements, and rows of its attributes.
void MOD_Edit::setCapacity(ELM_Owner owner, int64_t capacity)
{
    resizeAttributes(owner, capacity);
    if (data_.live[owner])
        liveBits(owner, capacity);
    data_.capacity[owner] = capacity;
}

void MOD_Edit::resizeAttributes(ELM_Owner owner, int64_t size)
{
    ELM_AttributeDict &dict = data_.attributes[owner];
    for (int64_t i = 0; i < dict.size(); ++i)
        if (dict[i].size() != size)
            touch(dict.writable(i))->resize(size);
}

ELM_Attribute *MOD_Edit::touch(ELM_Attribute *attribute)
{
    touched_.insert(attribute);
    changed_ = true;
    return attribute;
}

bool MOD_Edit::appendPoints(int64_t count)
{
    if (count < 0 || count > kMaxPoints - capacity(ELM_OWNER_POINT))
        return fail(fmt::format("{} points cannot be added", count));
    return attempt([&] {
        if (count == 0)
            return true;
        setCapacity(ELM_OWNER_POINT, capacity(ELM_OWNER_POINT) + count);
        changed_ = topologyChanged_ = true;
        return true;
    });
}

bool MOD_Edit::setVertexPoint(ELM_Offset vertex, ELM_Offset point)
{
    if (vertex < 0 || vertex >= capacity(ELM_OWNER_VERTEX))
        return fail(fmt::format("vertex {} is out of range [0, {})", vertex, capacity(ELM_OWNER_VERTEX)));
    if (point < -1 || point >= capacity(ELM_OWNER_POINT))
        return fail(fmt::format("point {} is out of range [0, {})", point, capacity(ELM_OWNER_POINT)));
    if (!data_.isLive(ELM_OWNER_VERTEX, vertex))
        return fail(fmt::format("vertex {} was removed", vertex));
    if (!refersToLive(std::span(&point, 1)))
        return false;
    return attempt([&] {
        const int64_t loose = (point < 0) - (data_.vertexPoint.value(vertex) < 0);
        data_.vertexPoint.set(vertex, point);
        data_.looseVertices += loose;
        changed_ = topologyChanged_ = true;
        return true;
    });
}

void MOD_Edit::finishColumns()
{
    for (ELM_AttributeDict &dict : data_.attributes)
        for (int64_t i = 0; i < dict.size(); ++i)
            if (touched_.contains(&dict[i]))
            {
                ELM_Attribute *attribute = dict.writable(i);
                attribute->renewDataId();
                attribute->defragment();
            }
    for (int owner = 0; owner < ELM_ELEMENT_OWNERS; ++owner)
    {
        data_.groups[owner].trim(data_.capacity[owner]);
        if (data_.live[owner])
            data_.groups[owner].subtract(vacantOf(data_, ELM_Owner(owner)));
    }
    if (topologyChanged_)
    {
        data_.topologyId = ELM_Attribute::nextDataId();
        data_.vertexPoint.defragment();
        data_.vertexStart.defragment();
        data_.vertexCount.compress();
        data_.type.compress();
        data_.flags.compress();
        data_.payload.compress();
    }
    ++data_.metaCacheCount;
}

MOD_ConstDetailHandle MOD_Edit::commit()
{
    if (!isOpen())
        return detail_.read();
    MOD_ConstDetailHandle published;
    attempt([&] {
        MOD_ConstDetailHandle previous = detail_.read();
        if (changed_)
        {
            finishColumns();
            BAS_IntrusivePtr<const MSH_Detail> next(new MSH_Detail(data_, previous.readLock()));
            published = MOD_ConstDetailHandle(next.get());
            const std::lock_guard lock(detail_.control_->pointer);
            detail_.control_->current.swap(next);
        }
        else
            published = std::move(previous);
        return true;
    });
    if (published)
        abort();
    return published;
}

void MOD_Edit::abort()
{
    data_ = MSH_DetailData();
    touched_.clear();
    if (editing_)
        editing_.unlock();
}
