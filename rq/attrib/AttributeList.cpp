#include <rq/attrib/AttributeList.h>

#include <algorithm>
#include <cstdio>

#include <fmt/format.h>

#include <host/bas/JSONWriter.h>
#include <host/bas/MemoryTracker.h>
#include <rq/data/mixId.h>

namespace
{
// What a list accounts for itself, beside the handle in every slot.
constexpr int64_t kListBytes = 24;
}  // namespace

int64_t RQ_AttributeList::trackedBytes() const { return int64_t(data_.size() * sizeof(RQ_DataArrayHandle)) + kListBytes; }

RQ_AttributeList::RQ_AttributeList(const RQ_AttributeMapHandle &map, int segments)
    : segments_(std::max(1, segments)), entries_(map ? map->entries() : 0), map_(map),
      data_(size_t(segments_) * size_t(entries_))
{
    BAS_MemoryTracker::add(BAS_MEMORY_LIST, trackedBytes());
}

RQ_AttributeList::RQ_AttributeList(const RQ_AttributeList &other)
    : BAS_IntrusiveRefCounter<RQ_AttributeList>(), segments_(other.segments_), entries_(other.entries_), map_(other.map_),
      data_(other.data_)
{
    BAS_MemoryTracker::add(BAS_MEMORY_LIST, trackedBytes());
}

RQ_AttributeList::~RQ_AttributeList() { BAS_MemoryTracker::add(BAS_MEMORY_LIST, -trackedBytes()); }

const RQ_DataArrayHandle &RQ_AttributeList::noArray()
{
    static const RQ_DataArrayHandle none;
    return none;
}

const BAS_Array<BAS_StringHolder> &RQ_AttributeList::getNames() const
{
    static const BAS_Array<BAS_StringHolder> kNone;
    return map_ ? map_->getNames() : kNone;
}

int64_t RQ_AttributeList::getMemoryUsage() const
{
    int64_t bytes = (map_ ? map_->getMemoryUsage(true) : 0) + kListBytes;
    for (iterator it = begin(); !it.atEnd(); ++it)
        if (it.getData())
            bytes += segments_ * it.getData()->getMemoryUsage();
    return bytes;
}

bool RQ_AttributeList::getDataIdHash(uint64_t &hash, int segment) const
{
    hash = uint64_t(entries_);
    for (iterator it = begin(segment); !it.atEnd(); ++it)
    {
        const RQ_DataArrayHandle &array = it.getData();
        if (!array || !array->isValid())
            continue;
        const int64_t id = array->getDataId();
        if (id == -1)
            return false;
        hash = RQmixId(hash) + RQmixId(uint64_t(id));
    }
    return true;
}

bool RQ_AttributeList::matchDefinition(const RQ_AttributeList *a, const RQ_AttributeList *b)
{
    if (!a || !b)
        return a == b;
    return a->map_ == b->map_ || (a->map_ && b->map_ && *a->map_ == *b->map_);
}

void RQ_AttributeList::set(int index, const RQ_DataArrayHandle &array, int segment)
{
    if (index >= 0 && index < entries_)
        data_[slot(index, segment)] = array;
}

void RQ_AttributeList::setAllSegments(int index, const RQ_DataArrayHandle &array)
{
    for (int segment = 0; segment < segments_; ++segment)
        set(index, array, segment);
}

bool RQ_AttributeList::copySegment(int segment, const RQ_AttributeList &source, int sourceSegment)
{
    if (!matchDefinition(this, &source))
        return false;
    for (int i = 0; i < entries_; ++i)
        set(i, source.get(i, sourceSegment), segment);
    return true;
}

void RQ_AttributeList::updateGeoDetail(const MOD_ConstDetailHandle &detail, RQ_Owner owner)
{
    for (int segment = 0; segment < segments_; ++segment)
        for (int i = 0; i < entries_; ++i)
            if (const RQ_DataArrayHandle &array = get(i, segment); array && (segment == 0 || array != get(i, segment - 1)))
                array->updateGeoDetail(detail, getName(i).c_str(), owner, segment);
}

void RQ_AttributeList::dumpList(const char *label, bool values) const
{
    if (label && *label)
        std::printf("%s %d segments\n", label, segments_);
    for (int segment = 0; segment < segments_; ++segment)
    {
        if (segments_ > 1)
            std::printf("--- segment %d ---\n", segment);
        for (iterator it = begin(segment); !it.atEnd(); ++it)
        {
            const RQ_DataArrayHandle &array = it.getData();
            if (!array)
            {
                std::printf("  %s <null>\n", it.getName().c_str());
                continue;
            }
            const char *storage = RQstorage(array->getStorage());
            const std::string type = RQtype(array->getTypeInfo()), suffix = type.empty() ? "" : " " + type;
            // Printing with the formatting library would throw where the output is full or closed.
            const std::string line = fmt::format("  {}:{}{} {} [{}] ({}) id={} {}b\n", storage ? storage : "",
                                                 array->getTupleSize(), suffix, it.getName().view(), array->entries(),
                                                 array->className(), uint64_t(array->getDataId()), array->getMemoryUsage());
            std::fwrite(line.data(), 1, line.size(), stdout);
            if (values)
                array->dumpValues(nullptr);
        }
    }
}

bool RQ_AttributeList::save(BAS_JSONWriter &writer) const
{
    bool good = writer.beginMap();
    for (int i = 0; i < entries_ && good; ++i)
    {
        good = writer.key(getName(i).view()) && writer.beginArray();
        for (int segment = 0; segment < segments_ && good; ++segment)
            good = get(i, segment) ? get(i, segment)->save(writer, true) : writer.writeNull();
        good = good && writer.endArray();
    }
    return good && writer.endMap();
}
