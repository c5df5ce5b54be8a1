#pragma once

#include <rq/prim/PrimCollect.h>
#include <rq/prim/Refine.h>

/// Gather primitives into a collection.
///
/// Ownership  shares the collection, which lives on after the sink if others hold it
/// Threads    accepts primitives from several threads at once; their order is then undefined
class RQ_API RQ_RefineCollect : public RQ_Refine
{
public:
    /// Gather into a new collection.
    RQ_RefineCollect();

    /// Append to `primitive` when that is a collection.  Anything else is dropped, not added, and gathering starts with a
    /// new collection.
    explicit RQ_RefineCollect(const RQ_PrimitiveHandle &primitive);

    // Copies gather into the same collection.
    RQ_RefineCollect(const RQ_RefineCollect &other);
    RQ_RefineCollect &operator=(const RQ_RefineCollect &other);
    ~RQ_RefineCollect() override;

    bool allowThreading() const override { return true; }

    /// Append; null is ignored.
    void addPrimitive(const RQ_PrimitiveHandle &primitive) override;

    int64_t entries() const;

    /// The primitive at `index`, null out of range.
    RQ_PrimitiveHandle getPrim(int64_t index) const;

    /// The collection itself.
    RQ_PrimitiveHandle getPrim() const;
    const RQ_PrimCollect *getPrimCollect() const { return collect_.get(); }

    void clear();

private:
    BAS_IntrusivePtr<RQ_PrimCollect> collect_;
};
