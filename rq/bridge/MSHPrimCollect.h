#pragma once

#include <memory>

#include <host/msh/Primitive.h>
#include <rq/bridge/MSHDetailList.h>
#include <rq/prim/Primitive.h>

/// What one collector gathers during one refinement.
class RQ_API RQ_MSHPrimCollectData
{
public:
    virtual ~RQ_MSHPrimCollectData();

    /// Note that the user interrupted what a collector did with this data: the refinement then gives nothing at all, rather
    /// than a part that looks like the whole.
    void setInterrupted() { interrupted_ = true; }
    bool isInterrupted() const { return interrupted_; }

private:
    bool interrupted_ = false;
};

/// Gathers the offsets of primitives.
class RQ_API RQ_MSHPrimCollectOffsets : public RQ_MSHPrimCollectData
{
public:
    virtual void append(const MSH_Primitive &primitive);

    /// Append what other data gathered.
    void append(const RQ_MSHPrimCollectOffsets &following) { primitives_.concat(following.primitives_); }
    const RQ_MSHOffsetList &getPrimitives() const { return primitives_; }

private:
    RQ_MSHOffsetList primitives_;
};

/// Turn host primitives of some types into primitives of the library, one by one or many into one.
///
/// Within one refinement a collector in use gets `beginCollecting` once, `collect` for every primitive of its types in
/// offset order, and `endCollecting` once.  One that can merge data gets `beginCollecting` once for each of several parts of
/// a large detail instead, `collect` from several threads, and `mergeData` until a single data is left.
///
/// Ownership  bound collectors belong to the registry of the process
/// Threads    shared by all concurrent refinements: everything that a run remembers lies in its data
class RQ_API RQ_MSHPrimCollect
{
public:
    virtual ~RQ_MSHPrimCollect();

    /// Make the data of one run, owned by the caller.  Null when the collector needs none.
    virtual RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details, const RQ_RefineParms *parms) const;

    /// Take one host primitive, given once per motion segment.  What is to be emitted now, or null when the data absorbed
    /// it.
    virtual RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &details, const MSH_Primitive *const *primitives,
                                       int segments, RQ_MSHPrimCollectData *data) const = 0;

    /// What the data gathered, or null.
    virtual RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const;

    /// Whether `mergeData` works; asked once per run.  One that cannot is given all primitives on one thread.
    virtual bool canMergeData() const;

    /// Move what `from` gathered to the end of `into`; `from` gathered the primitives that follow.
    virtual void mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const;

    /// Register this collector, made with `new`, for a host primitive type; the registry takes ownership.  It replaces the
    /// one before, stays when built-in collectors are registered anew, and the last binding of a type wins.
    void bind(ELM_PrimitiveTypeId type) const;

    /// The same for a collector that others own too; null takes a binding back.
    static void bind(const std::shared_ptr<const RQ_MSHPrimCollect> &collector, ELM_PrimitiveTypeId type);

    /// The collector of a type, null when there is none: its primitives are wrapped one by one then.
    static std::shared_ptr<const RQ_MSHPrimCollect> getCollector(ELM_PrimitiveTypeId type);
};
