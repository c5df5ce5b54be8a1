#include <rq/attrib/AttributeMap.h>

#include <algorithm>

namespace
{
// A scan of so many names still costs less than hashing one.
constexpr size_t kScannedNames = 32;
}  // namespace

RQ_AttributeMapFilter::~RQ_AttributeMapFilter() = default;

RQ_AttributeMap::RQ_AttributeMap() = default;
RQ_AttributeMap::RQ_AttributeMap(const RQ_AttributeMap &other) = default;
RQ_AttributeMap::~RQ_AttributeMap() = default;

int RQ_AttributeMap::add(const BAS_StringHolder &name, bool replace)
{
    const int found = get(name);
    if (found >= 0)
        return replace ? found : -1;
    names_.push_back(name);
    owners_.push_back(RQ_OWNER_INVALID);
    if (!index_.empty())
        index_.emplace(name, entries() - 1);
    else if (names_.size() > kScannedNames)
        rebuildIndex();
    return entries() - 1;
}

int RQ_AttributeMap::remove(const BAS_StringHolder &name)
{
    const int found = get(name);
    if (found < 0)
        return -1;
    // The name that was given may be our own.
    exportNames_.erase(name);
    names_.erase(names_.begin() + found);
    owners_.erase(owners_.begin() + found);
    if (!index_.empty())
        rebuildIndex();
    return found;
}

int RQ_AttributeMap::get(const BAS_StringHolder &name) const
{
    if (!index_.empty())
    {
        const auto found = index_.find(name);
        return found != index_.end() ? found->second : -1;
    }
    const auto found = std::find(names_.begin(), names_.end(), name);
    return found != names_.end() ? int(found - names_.begin()) : -1;
}

void RQ_AttributeMap::rebuildIndex()
{
    index_.clear();
    for (int i = 0; i < entries(); ++i)
        index_.emplace(names_[size_t(i)], i);
}

const BAS_StringHolder &RQ_AttributeMap::getExportName(int index) const
{
    const auto found = exportNames_.find(getName(index));
    return found != exportNames_.end() ? found->second : getName(index);
}

void RQ_AttributeMap::addExportName(int index, const BAS_StringHolder &exportName)
{
    addExportName(getName(index), exportName);
}

void RQ_AttributeMap::addExportName(const BAS_StringHolder &name, const BAS_StringHolder &exportName)
{
    if (name == exportName)
        exportNames_.erase(name);
    else if (hasName(name))
        exportNames_[name] = exportName;
}

RQ_AttributeMapHandle RQ_AttributeMap::filter(const RQ_AttributeMapFilter &filter, BAS_Array<int> &sources) const
{
    const RQ_AttributeMapHandle kept(new RQ_AttributeMap);
    sources.clear();
    for (int i = 0; i < entries(); ++i)
    {
        if (!filter.keep(*this, i))
            continue;
        const int index = kept->add(getName(i), false);
        kept->setOriginalOwner(index, getOriginalOwner(i));
        kept->addExportName(index, getExportName(i));
        sources.push_back(i);
    }
    return kept;
}

std::string RQ_AttributeMap::getLabel() const
{
    std::string label;
    for (const BAS_StringHolder &name : names_)
        label.append(label.empty() ? "" : " ").append(name.view());
    return label;
}

int64_t RQ_AttributeMap::getMemoryUsage(bool inclusive) const
{
    constexpr int64_t kNameSlot = 16, kIndexSlot = 24, kOwner = 4, kMap = 88;
    return kNameSlot * int64_t(names_.capacity()) + (index_.empty() ? 0 : kIndexSlot * int64_t(index_.bucket_count())) +
           kOwner * int64_t(owners_.size()) + (inclusive ? kMap : 0);
}
