#pragma once

#include <rq/bridge/MSHPrimCollectPacked.h>

// The collectors of the host's own packed types.  The library binds them by itself; `install` binds one as a caller would,
// where another has taken its place, and does nothing when the host does not know the type.

/// Whole details: all that place the same snapshot can share its geometry.
class RQ_API RQ_MSHCollectPackedGeometry : public RQ_MSHPrimCollectPacked
{
public:
    static constexpr const char *kTypeName = "PackedGeometry";
    static void install();

protected:
    RQ_PrimitiveHandle makePrimitive(const RQ_MSHDetailListHandle &details, const MOD_PrimPacked &packed,
                                     RQ_MSHPrimCollectData *data) const override;
};

/// Files: all of the same path can share what is in it.
class RQ_API RQ_MSHCollectPackedDisk : public RQ_MSHCollectPackedGeometry
{
public:
    static constexpr const char *kTypeName = "PackedDisk";
    static void install();
};

/// Files of a sequence: all that show the same frame can share it.
class RQ_API RQ_MSHCollectPackedSequence : public RQ_MSHCollectPackedGeometry
{
public:
    static constexpr const char *kTypeName = "PackedDiskSequence";
    static void install();
};

/// Characters: each has its own pose.  What they refine to are packed shapes, which can be shared.
class RQ_API RQ_MSHCollectPackedAgent : public RQ_MSHPrimCollectPacked
{
public:
    static constexpr const char *kTypeName = "PackedAgent";
    static void install();
};

/// Parts of details.  With "coalescefragments", which is the default, all parts of one detail that are placed alike become
/// one primitive, which reads that detail in place; without it each becomes a packed primitive that adds its ids to what it
/// refines to.
class RQ_API RQ_MSHCollectPackedFragment : public RQ_MSHPrimCollectPacked
{
public:
    static constexpr const char *kTypeName = "PackedFragment";
    static void install();

    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details,
                                           const RQ_RefineParms *parms) const override;
    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override;
    void mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const override;

protected:
    RQ_PrimitiveHandle makePrimitive(const RQ_MSHDetailListHandle &details, const MOD_PrimPacked &packed,
                                     RQ_MSHPrimCollectData *data) const override;
};
