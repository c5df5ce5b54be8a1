#pragma once

#include <vector>

#include <host/bas/Parallel.h>
#include <rq/bridge/detail/FaceLists.h>
#include <rq/bridge/detail/OffsetWriter.h>
#include <rq/bridge/detail/PolygonReader.h>

namespace rq
{
/// Some faces of a primitive that consists of many: how many there are, and their corners.
struct FacePart
{
    // A face costs 1 to 10 ns in each pass.
    static constexpr int64_t kFaces = 16384;

    int64_t faces = 0, corners = 0, least = 0, most = 0;

    FacePart() = default;
    FacePart(const ManyFaces &many, int64_t begin, int64_t end)
    {
        many.forEach(begin, end, [this](int64_t count, const auto &) { add({1, count, count, count}); });
    }
    FacePart(int64_t faces_, int64_t corners_, int64_t least_, int64_t most_)
        : faces(faces_), corners(corners_), least(least_), most(most_)
    {}

    /// All of a primitive, in parallel when it is large.
    static FacePart of(const ManyFaces &many)
    {
        if (const int64_t count = many.count(); count <= kFaces)
            return FacePart(many, 0, count);
        return host::parallelReduce(
            many.count(), kFaces, FacePart(), [&many](int64_t begin, int64_t end) { return FacePart(many, begin, end); },
            [](FacePart &into, const FacePart &from) { into.add(from); });
    }

    void add(const FacePart &following)
    {
        if (following.faces == 0)
            return;
        least = faces > 0 ? std::min(least, following.least) : following.least;
        most = faces > 0 ? std::max(most, following.most) : following.most;
        faces += following.faces;
        corners += following.corners;
    }
};

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
        const FacePart all = FacePart::of(many);
        if (all.faces == 0)
            return false;
        noteCounts(all.least, all.most);
        if (all.faces == 1)
            primitives.addRun(many.primitive(), 1);
        else
            primitives.addAny(all.faces, many.primitive());
        vertices.addAny(all.corners, many.lastVertex());
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
        const int64_t count = many.count(), parts = (count + FacePart::kFaces - 1) / FacePart::kFaces;
        const auto endOf = [count](int64_t part) { return std::min(count, (part + 1) * FacePart::kFaces); };
        if (parts < 2)
            return writePart(place, many, 0, count);
        std::vector<Place> places(static_cast<size_t>(parts));
        host::parallelFor(parts - 1, 1, [&](int64_t part) {
            const FacePart counted(many, part * FacePart::kFaces, endOf(part));
            places[size_t(part) + 1] = {counted.faces, counted.corners};
        });
        places[0] = place;
        for (size_t part = 1; part < places.size(); ++part)
            places[part] = {places[part - 1].face + places[part].face, places[part - 1].corner + places[part].corner};
        host::parallelFor(
            parts, 1, [&](int64_t part) { writePart(places[size_t(part)], many, part * FacePart::kFaces, endOf(part)); });
        place = places.back();
    }

    FaceLists finish() { return FaceLists(primitives_.finish(), vertices_.finish(), counts_, all_.least, all_.most); }

private:
    // The faces among [begin, end).
    void writePart(Place &place, const ManyFaces &many, int64_t begin, int64_t end)
    {
        Place at = place;  // not shared with other threads' cache lines
        vertices_.writeAt(at.corner, [&]<class Offset>(Offset *vertices) {
            many.forEach(begin, end, [&](int64_t corners, const auto &vertexOf) {
                for (int64_t i = 0; i < corners; ++i)
                    *vertices++ = Offset(vertexOf(i));
                if (counts_)
                    counts_->data()[at.face] = int32_t(corners);
                ++at.face;
                at.corner += corners;
            });
        });
        primitives_.writeAt(place.face, [&]<class Offset>(Offset *primitives) {
            std::fill_n(primitives, at.face - place.face, Offset(many.primitive()));
        });
        place = at;
    }

    FaceTally all_;
    OffsetWriter primitives_, vertices_;
    FaceLists::Counts counts_;
};
}  // namespace rq
