#pragma once

#include <apps/offline/Drawable.h>
#include <apps/offline/PlacedPoints.h>
#include <rq/surface/PrimCurveMesh.h>

namespace rq::offline
{
/// Linear curves as round ribbons of their width, or of one that suits their number.
class CurveDrawable final : public Drawable
{
public:
    CurveDrawable(const RQ_CurveMeshHandle &curves, const Placing &placing);

    RTCGeometryTy *makeGeometry(RTCDeviceTy *device) const override;
    void addTo(Outline &outline) const override;

protected:
    Place locate(int64_t piece, float u, float v, Hit &hit) const override;

private:
    const RQ_PrimCurveMesh &curves() const { return static_cast<const RQ_PrimCurveMesh &>(primitive()); }
    float radius(const Element &vertex) const;

    struct Piece
    {
        int64_t vertex;  // where it begins; it ends in the next one
        int64_t curve;
    };
    PlacedPoints points_;
    std::vector<Piece> pieces_;
};
}  // namespace rq::offline
