#include <algorithm>
#include <cstring>

#include <benchmark/benchmark.h>

#include <bench/arrays.h>
#include <bench/rq/bridge/details.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHElementArray.h>

namespace
{
using bench::kCells;
using bench::QuadMesh;
using bench::Work;

constexpr int64_t kPoints = int64_t(kCells + 1) * (kCells + 1), kVertices = int64_t(4) * kCells * kCells;

enum class Rows
{
    POINTS,    ///< all of them, in order
    CORNERS,   ///< the point of every corner, as an explicit list
    VERTICES,  ///< the vertices, which reach points through the detail's map
    RANDOM     ///< random points, as an explicit list
};

constexpr int64_t countOf(Rows rows) { return rows == Rows::POINTS ? kPoints : kVertices; }

struct Elements
{
    QuadMesh quads{kCells};
    std::vector<int32_t> rows;  // the point of every row
    MOD_ConstDetailHandle detail = bench::makeDetail(quads);
    RQ_DataArrayHandle array;
    std::vector<float> out;

    explicit Elements(Rows which) : rows(size_t(countOf(which))), out(3 * rows.size())
    {
        bench::Random random(11);
        for (size_t i = 0; i < rows.size(); ++i)
            rows[i] = which == Rows::POINTS   ? int32_t(i)
                      : which == Rows::RANDOM ? int32_t(random.next() % uint64_t(kPoints))
                                              : quads.indices[i];
        const bool mapped = which == Rows::VERTICES;
        const RQ_MSHOffsetList list(mapped ? ELM_OffsetList(0, kVertices) : ELM_OffsetList(std::span<const int32_t>(rows)));
        array = new RQ_MSHElementArray(detail, &detail.readLock()->positions(), list,
                                       mapped ? ELM_OWNER_VERTEX : ELM_OWNER_POINT);
    }

    /// The share of values that are not those of the row.
    double error() const
    {
        int64_t wrong = 0;
        for (size_t i = 0; i < rows.size(); ++i)
            wrong += std::memcmp(out.data() + 3 * i, quads.positions.data() + 3 * rows[i], 12) != 0;
        return double(wrong) / double(rows.size());
    }

    void fill() { array->fillArray(out.data(), 0, array->entries()); }
    void fillByPages()
    {
        for (int64_t first = 0; first < array->entries(); first += ELM_PAGE_SIZE)
            array->fillArray(out.data() + 3 * first, first, std::min(ELM_PAGE_SIZE, array->entries() - first));
    }
    void gatherPlain()
    {
        struct Point
        {
            float x, y, z;
        };
        const Point *from = reinterpret_cast<const Point *>(quads.positions.data());
        Point *to = reinterpret_cast<Point *>(out.data());
        for (size_t i = 0; i < rows.size(); ++i)
            to[i] = from[rows[i]];
    }
};

void addFill(const char *mesh, Rows rows, double bytesPerRow, void (Elements::*ours)())
{
    const double count = double(countOf(rows));
    const auto add = [=](const char *who, int threads, void (Elements::*run)()) {
        bench::add({"element_array", mesh, who, threads, count, count * bytesPerRow, false, [=] {
                        const auto elements = std::make_shared<Elements>(rows);
                        const auto turn = [=] {
                            (elements.get()->*run)();
                            return std::shared_ptr<void>();
                        };
                        return Work{turn, [=] {
                                        turn();
                                        return elements->error();
                                    }};
                    }});
    };
    add("ours", 1, ours);
    add("plain loop", 1, &Elements::gatherPlain);
    add("ours", 2, ours);
}

void addBounds(const char *who, Rows rows, bool plain)
{
    bench::add({"element_bounds", rows == Rows::POINTS ? "points1M" : "corners4M", who, 1, double(countOf(rows)),
                double(countOf(rows)) * 12.0, false, [=] {
                    const auto elements = std::make_shared<Elements>(rows);
                    if (plain)
                    {
                        elements->gatherPlain();
                        elements->array = new RQ_DANumeric<float>(elements->out.data(), countOf(rows), 3, RQ_TYPE_POINT);
                    }
                    return Work{[elements] {
                                    BAS_BoundingBox box;
                                    elements->array->enlargeBounds(box);
                                    benchmark::DoNotOptimize(box);
                                    return std::shared_ptr<void>();
                                },
                                {}};
                }});
}

const bool registered = [] {
    addFill("run of points, by pages", Rows::POINTS, 24.0, &Elements::fillByPages);
    addFill("list of corner points", Rows::CORNERS, 28.0, &Elements::fill);
    addFill("vertices to points", Rows::VERTICES, 28.0, &Elements::fill);
    addFill("list of random points", Rows::RANDOM, 28.0, &Elements::fill);
    for (const Rows rows : {Rows::POINTS, Rows::CORNERS})
    {
        addBounds("ours", rows, false);
        addBounds("plain array", rows, true);
    }
    addBounds("ours, through vertices", Rows::VERTICES, false);
    return true;
}();
}  // namespace
