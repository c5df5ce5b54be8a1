#pragma once

#include <host/mod/NormalFaces.h>
#include <rq/bridge/MSHElementArray.h>

/// Normals of a detail that has none, computed from its faces, and read as an attribute would be.
///
/// Shape      3 x real32 of type normal; row i is the normal at element `offsets[i]`, see `RQ_MSHElementArray`
/// Units      `cuspAngle` in degrees, for vertex normals only: 0 and below is faceted, 180 and above smooth
/// Failure    not valid, and without rows, for normals of neither points nor vertices, and where `offsets` cannot reach them
/// Ownership  keeps the snapshot of the detail alive, and owns the normals
/// Threads    computes in parallel, with the same bits for any number of threads; see `RQ_MSHElementArray` for the rest
/// Cost       12 bytes an element of the owner, and what is known of the faces, see `MOD_NormalFaces`, which all arrays that
///            follow each other share while the topology stays
class RQ_API RQ_MSHAutoNormalArray final : public RQ_MSHElementArray
{
public:
    /// `normalOwner` is point or vertex; `offsets` are of `owner`.
    RQ_MSHAutoNormalArray(const MOD_ConstDetailHandle &detail, ELM_Owner normalOwner, const RQ_MSHOffsetList &offsets,
                          ELM_Owner owner, float cuspAngle);
    ~RQ_MSHAutoNormalArray() override;

    float getCuspAngle() const { return cuspAngle_; }

    /// The normals of another snapshot: these, where positions and faces are the same, else computed anew.
    RQ_DataArrayHandle boundTo(const MOD_ConstDetailHandle &detail) const override;

    const char *className() const override;
    int64_t getMemoryUsage() const override;

    /// Compute anew from a newer snapshot in which positions, topology or anything else changed; follow one in which nothing
    /// did.  The array stays as it is when the number of elements differs.
    void updateGeoDetail(const MOD_ConstDetailHandle &detail, const char *name, RQ_Owner owner, int segment) override;

private:
    /// What the normals were computed from.
    struct Stamps
    {
        int64_t position = -1, topology = -1, changes = -1;
        bool operator==(const Stamps &) const = default;
    };

    RQ_MSHAutoNormalArray(const RQ_MSHAutoNormalArray &other, const MOD_ConstDetailHandle &detail);

    void compute();
    void bind();

    ELM_Owner rowOwner_;
    ELM_Owner normalOwner_;
    float cuspAngle_;
    MOD_NormalFaces::Handle faces_;
    ELM_AttributeHandle normals_;
    ELM_AttributeHandle replaced_;  // keeps pointers good that were handed out before the last update
    Stamps stamps_;
};
