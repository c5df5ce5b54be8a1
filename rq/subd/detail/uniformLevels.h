#pragma once

#include <host/bas/Published.h>
#include <rq/subd/detail/cage.h>
#include <rq/subd/detail/levelValues.h>
#include <rq/subd/detail/refiner.h>
#include <rq/subd/detail/regularPatches.h>
#include <rq/subd/detail/stepPoints.h>

namespace rq
{
/// A cage subdivided some times: its topology, and how values follow it.
///
/// Only levels above the last are kept as topology: the points of the last follow from the one before, its faces are a
/// vertex list.  Where faces are regular the last steps are taken at once, and only what is left goes through the levels.
class UniformLevels : public BAS_IntrusiveRefCounter<UniformLevels>
{
public:
    /// `level` is at least 1.
    UniformLevels(const Cage &cage, const Refiner &base, int level);

    int level() const { return level_; }
    const Cage &cage() const { return cage_; }
    LevelSize size() const { return size_; }
    const RQ_DataArrayHandle &vertexList() const { return vertexList_; }

    /// Corners of each face.
    int corners() const { return cage_.scheme == RQ_SCHEME_LOOP ? 3 : 4; }

    // For each refined face its face of the cage; for each refined point, or corner, one of the cage that lies nearby.
    const RQ_DataArrayHandle &sourceFaces() const
    {
        return faces_.get([this] { return makeSourceFaces(); });
    }
    const RQ_DataArrayHandle &sourcePoints() const
    {
        return points_.get([this] { return makeSourcePoints(); });
    }
    const RQ_DataArrayHandle &sourceCorners() const;

    /// The refined values of a floating-point array of points.
    RQ_DataArrayHandle interpolatePoints(const RQ_DataArray &array) const;

    /// The refined values of a vertex attribute: with the seams that the cage found under its name, else linear on each
    /// face.
    RQ_DataArrayHandle interpolateCorners(const BAS_StringHolder &name, const RQ_DataArray &array) const;

    int64_t getMemoryUsage() const;

private:
    /// An array that is made when first wanted.
    class Lazy
    {
    public:
        template <class Make> const RQ_DataArrayHandle &get(Make &&make) const
        {
            return place_.getOrBuild([&] { return BAS_IntrusivePtr<const Holder>(new Holder(make())); }).array;
        }
        int64_t getMemoryUsage() const { return place_.get() ? place_.get()->array->getMemoryUsage() : 0; }

    private:
        struct Holder : BAS_IntrusiveRefCounter<Holder>
        {
            explicit Holder(RQ_DataArrayHandle made) : array(std::move(made)) {}
            RQ_DataArrayHandle array;
        };
        host::Published<Holder> place_;
    };

    template <class T> RQ_DataArrayHandle interpolate(const RQ_DataArray &array) const;
    RQ_DataArrayHandle makeSourceFaces() const;
    RQ_DataArrayHandle makeSourcePoints() const;

    const Cage &cage_;
    int level_;
    RefinerHandle refiner_;
    LevelSize size_;
    RQ_DataArrayHandle vertexList_;
    int base_;  // the level that patches begin from
    RegularPatches patches_;
    std::vector<StepPoints> others_;  // from there on, beside patches
    Lazy faces_, points_, corners_;
    std::vector<Lazy> channels_;
};
}  // namespace rq
