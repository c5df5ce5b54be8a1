#pragma once

#include <vector>

#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimNet.h>

/// The keys of a function of time.
///
/// Shape  for each key its time, which rises, its value, the slope on either side, and how the function goes on behind it
/// Units  times in seconds, slopes in values a second
struct RQ_ChannelKeys
{
    /// The numbers are part of the interface.
    enum Segment : int32_t
    {
        CONSTANT,
        LINEAR,
        CUBIC  ///< with the slopes of both keys
    };

    std::vector<double> times, values, slopesBefore, slopesBehind;
    std::vector<int32_t> segments;

    int64_t count() const { return int64_t(times.size()); }
};

/// A function of time, drawn as a curve.
///
/// Shape  the curve goes through the vertices, one a key, where there are any.  Without vertices it is the function's graph:
///        x is the time, y the value, z is 0; jumps are upright, and cubic stretches are cut into 8 pieces times the option
///        "lod"
class RQ_API RQ_PrimChannel final : public RQ_PrimNet
{
public:
    RQ_PrimChannel();
    RQ_PrimChannel(const RQ_PrimChannel &other);
    ~RQ_PrimChannel() override;

    /// Replace everything of a channel that is not yet shared.  False, and nothing changed, for keys that lack something and
    /// for attributes of another number of vertices.
    bool init(RQ_ChannelKeys keys, const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform = {},
              const RQ_AttributeListHandle &detail = {});

    const RQ_ChannelKeys &getKeys() const { return keys_; }

    /// The curve, linear and one, with the channel's attributes.  Null for fewer than two keys.
    RQ_CurveMeshHandle refineToCurve(const RQ_RefineParms *parms) const;

    const char *className() const override;
    int getPrimitiveType() const override;

    /// What the curve covers, and around it the largest "width" or "pscale" where there is one.
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;

    /// Hand over the curve of `refineToCurve`.  False when there is none.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;
    int64_t getMemoryUsage() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

protected:
    bool saveShape(BAS_JSONWriter &writer) const override;

private:
    RQ_ChannelKeys keys_;
};
