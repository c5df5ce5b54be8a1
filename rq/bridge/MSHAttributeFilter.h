#pragma once

#include <unordered_set>

#include <host/elm/Attribute.h>
#include <rq/api.h>

/// Decide which host attributes primitives carry: public ones that can be read.  Derive to narrow the choice.
///
/// Threads  asked from many threads at once
class RQ_API RQ_MSHAttributeFilter
{
public:
    virtual ~RQ_MSHAttributeFilter();
    virtual bool isValid(const ELM_Attribute &attribute) const;
};

/// Leave out attributes that a viewport handles in another way.
class RQ_API RQ_MSHViewportAttributeFilter : public RQ_MSHAttributeFilter
{
public:
    void setHandledAttrib(const BAS_StringHolder &name) { handled_.insert(name); }
    template <class Names> void setHandledAttribs(const Names &names) { handled_.insert(names.begin(), names.end()); }

    bool isValid(const ELM_Attribute &attribute) const override;

private:
    std::unordered_set<BAS_StringHolder> handled_;
};

/// Floats that a shading language can bind: scalars, 3- and 4-vectors, 3x3 and 4x4 matrices.
class RQ_API RQ_MSHStdKelAttributeFilter : public RQ_MSHAttributeFilter
{
public:
    bool isValid(const ELM_Attribute &attribute) const override;
};

/// Leave out two attributes that a mesh of quadrics carries by itself.  The attributes must outlive the filter; null is
/// none.
class RQ_API RQ_MSHQuadricAttributeFilter : public RQ_MSHAttributeFilter
{
public:
    RQ_MSHQuadricAttributeFilter(const ELM_Attribute *first, const ELM_Attribute *second) : first_(first), second_(second) {}

    bool isValid(const ELM_Attribute &attribute) const override;

private:
    const ELM_Attribute *first_;
    const ELM_Attribute *second_;
};
