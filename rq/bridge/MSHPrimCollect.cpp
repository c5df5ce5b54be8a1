#include <rq/bridge/MSHPrimCollect.h>

#include <mutex>
#include <unordered_map>

#include <host/elm/PrimitiveFactory.h>
#include <rq/bridge/detail/builtInCollectors.h>

namespace
{
using Collector = std::shared_ptr<const RQ_MSHPrimCollect>;
using CollectorMap = std::unordered_map<ELM_PrimitiveTypeId, Collector>;

/// The collectors of the process.  Never destroyed: collectors may be asked for while the process ends.
///
/// Threads  one lock, never held while a collector's own code runs: not even while one is deleted
class Registry
{
public:
    static Registry &get()
    {
        static Registry *registry = new Registry;
        return *registry;
    }

    Collector find(ELM_PrimitiveTypeId type)
    {
        CollectorMap replaced;
        const std::lock_guard lock(mutex_);
        // A new host type may be one that a built-in collector serves.
        if (ELM_PrimitiveFactory::count() != types_)
            replaced = rebuild();
        const auto found = active_.find(type);
        return found != active_.end() ? found->second : nullptr;
    }

    void bind(Collector collector, ELM_PrimitiveTypeId type)
    {
        CollectorMap replaced;
        const std::lock_guard lock(mutex_);
        std::swap(callers_[type], collector);
        replaced = rebuild();
    }

    /// Own a bare collector; one that is bound already is not owned twice.
    Collector adopt(const RQ_MSHPrimCollect *collector)
    {
        const std::lock_guard lock(mutex_);
        for (const CollectorMap *map : {&callers_, &active_})
            for (const auto &[type, bound] : *map)
                if (bound.get() == collector)
                    return bound;
        return Collector(collector);
    }

private:
    // Answers the map before, to be dropped when the lock is.
    CollectorMap rebuild()
    {
        types_ = ELM_PrimitiveFactory::count();
        CollectorMap fresh = rq::builtInCollectors();
        for (const auto &[type, collector] : callers_)
            if (collector)
                fresh[type] = collector;
        std::swap(active_, fresh);
        return fresh;
    }

    std::mutex mutex_;
    CollectorMap active_;
    CollectorMap callers_;  // null: a binding that was taken back
    int64_t types_ = -1;
};
}  // namespace

RQ_MSHPrimCollectData::~RQ_MSHPrimCollectData() = default;
RQ_MSHPrimCollect::~RQ_MSHPrimCollect() = default;

void RQ_MSHPrimCollectOffsets::append(const MSH_Primitive &primitive) { primitives_.append(primitive.offset()); }

RQ_MSHPrimCollectData *RQ_MSHPrimCollect::beginCollecting(const RQ_MSHDetailListHandle &, const RQ_RefineParms *) const
{
    return nullptr;
}

RQ_PrimitiveHandle RQ_MSHPrimCollect::endCollecting(const RQ_MSHDetailListHandle &, RQ_MSHPrimCollectData *) const
{
    return nullptr;
}

bool RQ_MSHPrimCollect::canMergeData() const { return false; }
void RQ_MSHPrimCollect::mergeData(RQ_MSHPrimCollectData *, RQ_MSHPrimCollectData *) const {}

void RQ_MSHPrimCollect::bind(ELM_PrimitiveTypeId type) const { bind(Registry::get().adopt(this), type); }

void RQ_MSHPrimCollect::bind(const std::shared_ptr<const RQ_MSHPrimCollect> &collector, ELM_PrimitiveTypeId type)
{
    Registry::get().bind(collector, type);
}

std::shared_ptr<const RQ_MSHPrimCollect> RQ_MSHPrimCollect::getCollector(ELM_PrimitiveTypeId type)
{
    return Registry::get().find(type);
}
