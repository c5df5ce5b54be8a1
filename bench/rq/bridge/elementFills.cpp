#include <algorithm>
#include <cmath>

#include <bench/arrays.h>
#include <bench/rq/bridge/details.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHElementArray.h>

// Fills of element arrays in other forms than the host's: quantised, with their box, and arrays of varying length.
namespace
{
using bench::kCells;
using bench::QuadMesh;
using bench::Work;

constexpr int64_t kPoints = int64_t(kCells + 1) * (kCells + 1), kVertices = int64_t(4) * kCells * kCells;
constexpr double kBlack = -0.25, kWhite = 0.75;

/// The points of a mesh, in order or seen from its vertices.
struct Fills
{
    QuadMesh quads{kCells};
    bool mapped;
    int64_t rows = mapped ? kVertices : kPoints;
    MOD_ConstDetailHandle detail = bench::makeDetail(quads, [](MOD_Edit &edit) {
        // Every point has none to three numbers.
        ELM_ArrayTuple<float> &arrays =
            *edit.arrayAttribute(ELM_OWNER_POINT, "weights", ELM_STORAGE_REAL32)->numericArrays()->as<float>();
        for (int64_t i = 0; i < kPoints; ++i)
        {
            const float weightsOf[] = {float(i), 1.0f, 2.0f};
            arrays.set(i, std::span(weightsOf, size_t(i % 4)));
        }
    });
    RQ_DataArrayHandle points = elements("P"), weights = elements("weights");
    std::vector<uint8_t> bytes = std::vector<uint8_t>(size_t(3 * rows));
    std::vector<float> values = std::vector<float>(size_t(3 * rows));
    BAS_BoundingBox box;
    std::vector<int> sizes;
    std::vector<float> flat;

    explicit Fills(bool mapped_) : mapped(mapped_) {}

    RQ_DataArrayHandle elements(const char *name) const
    {
        return new RQ_MSHElementArray(detail, detail.readLock()->find(ELM_OWNER_POINT, name),
                                      RQ_MSHOffsetList(ELM_OffsetList(0, rows)),
                                      mapped ? ELM_OWNER_VERTEX : ELM_OWNER_POINT);
    }
    int64_t pointOf(int64_t row) const { return mapped ? quads.indices[size_t(row)] : row; }

    void quantise() { points->fillArray(bytes.data(), 0, rows, 3, 3, kBlack, kWhite); }
    void quantisePlain()
    {
        for (int64_t i = 0; i < rows; ++i)
            for (int c = 0; c < 3; ++c)
            {
                const double t = (double(quads.positions[size_t(3 * pointOf(i) + c)]) - kBlack) / (kWhite - kBlack);
                bytes[size_t(3 * i + c)] = uint8_t(std::clamp(t, 0.0, 1.0) * 255.0 + 0.5);
            }
    }
    void fillBox() { points->fillVec3BBox(values.data(), 0, rows, box = {}); }
    void fillBoxPlain()
    {
        box = {};
        for (int64_t i = 0; i < rows; ++i)
        {
            std::copy_n(quads.positions.data() + 3 * pointOf(i), 3, values.data() + 3 * i);
            box.enlarge(BAS_Vec3f(values[size_t(3 * i)], values[size_t(3 * i + 1)], values[size_t(3 * i + 2)]));
        }
    }
    void fillArrays() { weights->fillArray(flat, sizes, 0, rows); }
    void fillArraysPlain()
    {
        flat.clear();
        sizes.clear();
        for (int64_t i = 0; i < rows; ++i)
        {
            const float both[] = {float(pointOf(i)), 1.0f, 2.0f};
            flat.insert(flat.end(), both, both + pointOf(i) % 4);
            sizes.push_back(int(pointOf(i) % 4));
        }
    }

    auto results() const { return std::make_tuple(bytes, values, box.minimum(), box.maximum(), sizes, flat); }
};

using Fill = void (Fills::*)();

void addFill(const char *job, double bytesPerRow, Fill ours, Fill plain)
{
    for (const bool mapped : {false, true})
    {
        const double count = double(mapped ? kVertices : kPoints);
        const auto add = [=](const char *who, int threads, Fill run, bool checks) {
            bench::add({job, mapped ? "vertices to points" : "run of points", who, threads, count,
                        count * (bytesPerRow + (mapped ? 4.0 : 0.0)), false, [=] {
                            const auto fills = std::make_shared<Fills>(mapped);
                            const auto turn = [=] {
                                (fills.get()->*run)();
                                return std::shared_ptr<void>();
                            };
                            const auto error = [=] {
                                (fills.get()->*plain)();
                                const auto expected = fills->results();
                                turn();
                                return fills->results() == expected ? 0.0 : 1.0;
                            };
                            return checks ? Work{turn, error} : Work{turn, {}};
                        }});
        };
        add("ours", 1, ours, true);
        add("plain loop", 1, plain, false);
        add("ours", 2, ours, true);
    }
}

const bool registered = [] {
    addFill("element_quantised", 15.0, &Fills::quantise, &Fills::quantisePlain);
    addFill("element_vec3_box", 24.0, &Fills::fillBox, &Fills::fillBoxPlain);
    addFill("element_arrays", 16.0, &Fills::fillArrays, &Fills::fillArraysPlain);
    return true;
}();
}  // namespace
