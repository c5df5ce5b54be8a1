#pragma once

#include <rq/bridge/detail/FaceLists.h>
#include <rq/bridge/detail/OffsetWriter.h>
#include <rq/bridge/detail/PolygonReader.h>

namespace rq
{
/// What is known of faces before their lists are written.
struct FaceTally
{
    OffsetTally primitives, vertices;
    int64_t least = 0, most = 0;

    void add(const FaceRun &run)
    {
        const auto [fewest, greatest] = std::minmax_element(run.counts, run.counts + (run.isUniform ? 1 : run.faces));
        noteCounts(*fewest, *greatest);
        primitives.addRun(run.primitive, run.faces);
        vertices.addRun(run.vertex, run.corners);
    }

    /// Answers whether there are any.
    bool add(const ManyFaces &many)
    {
        int64_t faces = 0, allCorners = 0, fewest = 0, greatest = 0;
        many.forEach([&](int64_t corners, const auto &) {
            fewest = faces > 0 ? std::min(fewest, corners) : corners;
            greatest = std::max(greatest, corners);
            allCorners += corners;
            ++faces;
        });
        if (faces == 0)
            return false;
        noteCounts(fewest, greatest);
        if (faces == 1)
            primitives.addRun(many.primitive(), 1);
        else
            primitives.addAny(faces, many.primitive());
        vertices.addAny(allCorners, many.lastVertex());
        return true;
    }

    void add(const FaceTally &following)
    {
        if (following.primitives.count > 0)
            noteCounts(following.least, following.most);
        primitives.add(following.primitives);
        vertices.add(following.vertices);
    }

private:
    void noteCounts(int64_t fewest, int64_t greatest)
    {
        least = primitives.count > 0 ? std::min(least, fewest) : fewest;
        most = primitives.count > 0 ? std::max(most, greatest) : greatest;
    }
};

/// The lists of faces that were tallied, to be written in any order by several threads.
class FaceWriter
{
public:
    /// How many faces and corners lie before the next one.
    struct Place
    {
        int64_t face = 0, corner = 0;
    };

    explicit FaceWriter(const FaceTally &all)
        : all_(all), primitives_(all.primitives), vertices_(all.vertices),
          counts_(all.least != all.most ? new RQ_DANumeric<int32_t>(all.primitives.count, 1, RQ_TYPE_NONE) : nullptr)
    {}

    bool isNeeded() const { return primitives_.isNeeded() || vertices_.isNeeded() || counts_; }

    void write(Place &place, const FaceRun &run)
    {
        primitives_.writeRun(place.face, run.primitive, run.faces);
        vertices_.writeRun(place.corner, run.vertex, run.corners);
        if (counts_ && run.isUniform)
            std::fill_n(counts_->data() + place.face, run.faces, *run.counts);
        else if (counts_)
            std::copy_n(run.counts, run.faces, counts_->data() + place.face);
        place.face += run.faces;
        place.corner += run.corners;
    }

    void write(Place &place, const ManyFaces &many)
    {
        const Place before = place;
        vertices_.writeAt(place.corner, [&]<class Offset>(Offset *vertices) {
            many.forEach([&](int64_t corners, const auto &vertexOf) {
                for (int64_t i = 0; i < corners; ++i)
                    *vertices++ = Offset(vertexOf(i));
                if (counts_)
                    counts_->data()[place.face] = int32_t(corners);
                ++place.face;
                place.corner += corners;
            });
        });
        primitives_.writeAt(before.face, [&]<class Offset>(Offset *primitives) {
            std::fill_n(primitives, place.face - before.face, Offset(many.primitive()));
        });
    }

    FaceLists finish() { return FaceLists(primitives_.finish(), vertices_.finish(), counts_, all_.least, all_.most); }

private:
    FaceTally all_;
    OffsetWriter primitives_, vertices_;
    FaceLists::Counts counts_;
};
}  // namespace rq
