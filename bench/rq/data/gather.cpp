#include <algorithm>
#include <cstring>

#include <bench/arrays.h>
#include <rq/data/DAIndirect.h>

namespace
{
template <class Index> using Indices = BAS_IntrusivePtr<RQ_DANumeric<Index>>;

template <class Index> Indices<Index> makeGrid()
{
    const bench::QuadMesh quads(1024);
    const Indices<Index> indices(new RQ_DANumeric<Index>(bench::kRows));
    std::copy_n(quads.indices.begin(), bench::kRows, indices->data());
    return indices;
}

template <class Index> Indices<Index> makeRandom()
{
    const Indices<Index> indices(new RQ_DANumeric<Index>(bench::kRows));
    bench::Random random(11);
    for (int64_t i = 0; i < bench::kRows; ++i)
        indices->data()[i] = Index(random.next() % uint64_t(bench::kRows));
    return indices;
}

BAS_IntrusivePtr<RQ_DANumeric<float>> makeSource() { return bench::makeNumbers<float>(bench::kRows, 3); }

/// The share of values that are not those of the row the index names.
double gatherError(const RQ_DataArray &view, const RQ_DANumeric<float> &source, const RQ_DataArray &indices)
{
    RQ_DataArrayHandle buffer;
    const float *values = view.getF32Array(buffer);
    int64_t wrong = 0;
    for (int64_t i = 0; i < bench::kRows; ++i)
        wrong += std::memcmp(values + 3 * i, source.data() + 3 * indices.getI64(i), 12) != 0;
    return double(wrong) / double(bench::kRows);
}

/// Through a view, into memory that is reused.
template <class Index> bench::Work gatherOurs(const Indices<Index> &indices)
{
    const auto source = makeSource();
    const RQ_DataArrayHandle view = RQ_DAIndirect::createIndirect(source, indices);
    const auto to = bench::makeNumbers<float>(bench::kRows, 3);
    return {[view, to] {
                view->fillArray(to->data(), 0, bench::kRows);
                return std::shared_ptr<void>();
            },
            [view, source, indices] { return gatherError(*view, *source, *indices); }};
}

struct Row
{
    float x, y, z;
};

template <class Index> bench::Work gatherPlain(const Indices<Index> &indices)
{
    const auto source = makeSource(), to = makeSource();
    const auto run = [=] {
        const Row *from = reinterpret_cast<const Row *>(source->data());
        Row *out = reinterpret_cast<Row *>(to->data());
        const Index *rows = indices->data();
        for (int64_t i = 0; i < bench::kRows; ++i)
            out[i] = from[rows[i]];
        return std::shared_ptr<void>();
    };
    return {run, [=] {
                run();
                return gatherError(*to, *source, *indices);
            }};
}

template <class Index> void addGather(const char *mesh, Indices<Index> (*make)())
{
    const std::string job = sizeof(Index) == 8 ? "gather3_i64" : "gather3_i32";
    const double rows = double(bench::kRows), bytes = rows * double(24 + sizeof(Index));
    bench::add({job, mesh, "ours", 1, rows, bytes, false, [make] { return gatherOurs<Index>(make()); }});
    bench::add({job, mesh, "plain loop", 1, rows, bytes, false, [make] { return gatherPlain<Index>(make()); }});
    bench::add({job, mesh, "ours", 2, rows, bytes, false, [make] { return gatherOurs<Index>(make()); }});
}

/// A view of a view of a view, read into memory that is reused: stacked or flattened, and both when read for the first time.
enum class Nested
{
    stacked,
    flattened,
    readOnce,
    flattenedAndRead
};

RQ_DataArrayHandle makeNested(const RQ_DataArrayHandle &source, const Indices<int32_t> &indices, bool flatten)
{
    const auto below = RQ_DAIndirect::createIndirect(RQ_DAIndirect::createIndirect(source, indices), indices);
    return RQ_DAIndirect::createIndirect(below, indices, flatten);
}

void addNested(const char *who, Nested form)
{
    bench::add({"view_of_view_of_view", "grid4M", who, 1, double(bench::kRows), double(bench::kRows) * 28.0, false, [form] {
                    const auto source = makeSource(), to = makeSource();
                    const auto indices = makeGrid<int32_t>(), composed = makeGrid<int32_t>();
                    for (int64_t i = 0; i < bench::kRows; ++i)
                        composed->data()[i] = indices->data()[indices->data()[indices->data()[i]]];
                    const bool flatten = form == Nested::flattened || form == Nested::flattenedAndRead;
                    const bool once = form == Nested::readOnce || form == Nested::flattenedAndRead;
                    const RQ_DataArrayHandle view = makeNested(source, indices, flatten);
                    return bench::Work{[=] {
                                           const RQ_DataArrayHandle read =
                                               once ? makeNested(source, indices, flatten) : view;
                                           read->fillArray(to->data(), 0, bench::kRows);
                                           return std::shared_ptr<void>();
                                       },
                                       [=] { return gatherError(*view, *source, *composed); }};
                }});
}

const bool registered = [] {
    addGather<int32_t>("grid4M", makeGrid<int32_t>);
    addGather<int64_t>("grid4M", makeGrid<int64_t>);
    addGather<int32_t>("random4M", makeRandom<int32_t>);
    addGather<int64_t>("random4M", makeRandom<int64_t>);
    addNested("ours", Nested::stacked);
    addNested("flattened", Nested::flattened);
    addNested("ours, read once", Nested::readOnce);
    addNested("flattened, then read once", Nested::flattenedAndRead);
    return true;
}();
}  // namespace
