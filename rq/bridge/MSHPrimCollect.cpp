#include <rq/bridge/MSHPrimCollect.h>

#include <mutex>
#include <unordered_map>

#include <host/elm/PrimitiveFactory.h>
#include <rq/bridge/MSHPrimCollectPoly.h>

namespace
{
using CollectorPointer = std::shared_ptr<const RQ_MSHPrimCollect>;
using CollectorMap = std::unordered_map<ELM_PrimitiveTypeId, CollectorPointer>;

/// The collectors of the process.  Never destroyed: collectors may be asked for while the process ends.
class Registry
{
public:
    static Registry &get()
    {
        static Registry *registry = new Registry;
        return *registry;
    }

    CollectorPointer find(ELM_PrimitiveTypeId type)
    {
        const std::lock_guard lock(mutex_);
        update();
        const auto found = active_.find(type);
        return found != active_.end() ? found->second : nullptr;
    }

    void bind(const CollectorPointer &collector, ELM_PrimitiveTypeId type)
    {
        const std::lock_guard lock(mutex_);
        if (collector)
            callers_[type] = collector;
        else
            callers_.erase(type);
        rebuild();
    }

    /// Own a bare collector; one that is bound already is not owned twice.
    CollectorPointer adopt(const RQ_MSHPrimCollect *collector)
    {
        const std::lock_guard lock(mutex_);
        for (const CollectorMap *map : {&callers_, &active_})
            for (const auto &[type, bound] : *map)
                if (bound.get() == collector)
                    return bound;
        return CollectorPointer(collector);
    }

private:
    // A new host type may be one that a built-in collector serves.
    void update()
    {
        if (ELM_PrimitiveFactory::count() != types_)
            rebuild();
    }

    void rebuild()
    {
        types_ = ELM_PrimitiveFactory::count();
        active_.clear();
        active_[ELM_PRIMITIVE_POLYGON] = polygons_;
        for (const auto &[type, collector] : callers_)
            active_[type] = collector;
    }

    std::mutex mutex_;
    CollectorMap active_;
    CollectorMap callers_;
    CollectorPointer polygons_ = std::make_shared<RQ_MSHPrimCollectPoly>();
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

void RQ_MSHPrimCollect::bind(ELM_PrimitiveTypeId type) const { bind(Registry::get().adopt(this), type); }

void RQ_MSHPrimCollect::bind(const std::shared_ptr<const RQ_MSHPrimCollect> &collector, ELM_PrimitiveTypeId type)
{
    Registry::get().bind(collector, type);
}

std::shared_ptr<const RQ_MSHPrimCollect> RQ_MSHPrimCollect::getCollector(ELM_PrimitiveTypeId type)
{
    return Registry::get().find(type);
}
