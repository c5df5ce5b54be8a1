#pragma once

#include <mutex>

#include <host/bas/Array.h>
#include <rq/prim/Primitive.h>
#include <rq/prim/Refine.h>

/// Refine primitives into a plain list.
///
/// Shape    in the order of arrival; undefined for producers that hand over from several threads
/// Threads  one thread at a time; while refining, primitives may arrive from several
class RQ_API RQ_RefineList
{
public:
    class iterator;

    RQ_RefineList();
    RQ_RefineList(const RQ_RefineList &other);
    RQ_RefineList &operator=(const RQ_RefineList &other);
    ~RQ_RefineList();

    /// Append what `primitive` refines to, null handles included.  Answers what its `refine` answers, false for null.
    bool refine(const RQ_Primitive *primitive, const RQ_RefineParms *parms);

    int entries() const { return int(primitives_.size()); }

    /// The primitive at `index`, which is not checked.
    const RQ_PrimitiveHandle &getPrimitive(int index) const;

    void clear();

    iterator begin() const;

private:
    // The list's own sink.
    class refiner final : public RQ_Refine
    {
    public:
        explicit refiner(RQ_RefineList &list) : list_(&list) {}
        void addPrimitive(const RQ_PrimitiveHandle &primitive) override;

    private:
        RQ_RefineList *list_;
        std::mutex mutex_;
    };

    refiner sink_;
    BAS_Array<RQ_PrimitiveHandle> primitives_;
};

/// Walk a list, which must outlive the iterator.
class RQ_RefineList::iterator
{
public:
    explicit iterator(const RQ_RefineList &list) : list_(&list) {}

    bool atEnd() const { return index_ >= list_->entries(); }
    void advance() { ++index_; }
    iterator &operator++()
    {
        advance();
        return *this;
    }
    void rewind() { index_ = 0; }
    int getCurr() const { return index_; }
    RQ_PrimitiveHandle getPrimitive() const { return list_->getPrimitive(index_); }

private:
    const RQ_RefineList *list_;
    int index_ = 0;
};
