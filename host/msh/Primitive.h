#pragma once

#include <host/msh/Detail.h>

/// One primitive of a detail, as a value to pass around: nothing is stored per primitive but its columns' rows.
///
/// Ownership  none: valid while the detail lives
class MSH_Primitive
{
public:
    MSH_Primitive(const MSH_Detail &detail, ELM_Offset offset) : detail_(&detail), offset_(offset) {}

    const MSH_Detail &detail() const { return *detail_; }
    ELM_Offset offset() const { return offset_; }
    ELM_PrimitiveTypeId type() const { return detail_->typeOf(offset_); }

    int64_t vertexCount() const { return detail_->vertexRun(offset_).count; }
    ELM_OffsetList vertices() const { return detail_->vertices(offset_); }

    /// The i-th vertex, and its point.
    ELM_Offset vertex(int64_t i) const { return detail_->vertexRun(offset_).start + i; }
    ELM_Offset point(int64_t i) const { return detail_->vertexPoint(vertex(i)); }

protected:
    /// What the payload is made of, which the type of the primitive tells.
    template <class Data> const Data &payload() const { return MSHpayloadData<Data>(*detail_->payload(offset_)); }

private:
    const MSH_Detail *detail_;
    ELM_Offset offset_;
};

static_assert(sizeof(MSH_Primitive) == 16);
