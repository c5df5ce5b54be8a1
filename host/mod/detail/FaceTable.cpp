#include <host/mod/detail/FaceTable.h>

#include <host/msh/Polygon.h>

namespace
{
// A face costs about 10 ns in both passes, so a page of primitives is some 10 us of work.
constexpr int64_t kPagesPerTask = 2;

struct Totals
{
    int64_t faces = 0;
    int64_t corners = 0;
};

// Call `visit(corners, vertexOf)` for every face of a primitive whose corners all have a point.
template <class Visit> void forEachFace(const MSH_Detail &detail, ELM_Offset primitive, Visit &&visit)
{
    const MSH_Polygon polygon(detail, primitive);
    if (!polygon.isValid() || !polygon.isClosed())
        return;
    const MSH_Detail::VertexRun run = detail.vertexRun(primitive);
    if (!detail.topologyIsValid())
        for (int64_t i = 0; i < run.count; ++i)
            if (detail.vertexPoint(run.start + i) < 0)
                return;
    visit(run.count, [start = run.start](int64_t i) { return start + i; });
}
}  // namespace

template <class Index> host::FaceTable<Index>::FaceTable(const MSH_Detail &detail)
{
    const int64_t primitives = detail.capacity(ELM_OWNER_PRIMITIVE);
    const int64_t pages = (primitives + ELM_PAGE_SIZE - 1) >> ELM_PAGE_BITS;
    const auto forEachFaceOfPage = [&](int64_t page, auto &&visit) {
        const int64_t end = std::min(primitives, (page + 1) << ELM_PAGE_BITS);
        for (int64_t primitive = page << ELM_PAGE_BITS; primitive < end; ++primitive)
            forEachFace(detail, primitive, visit);
    };

    std::vector<Totals> before(size_t(pages) + 1);
    host::parallelFor(pages, kPagesPerTask, [&](int64_t page) {
        Totals &totals = before[size_t(page) + 1];
        forEachFaceOfPage(page, [&](int64_t corners, auto &&) {
            ++totals.faces;
            totals.corners += corners;
        });
    });
    for (size_t page = 1; page < before.size(); ++page)
    {
        before[page].faces += before[page - 1].faces;
        before[page].corners += before[page - 1].corners;
    }

    starts_.resize(size_t(before.back().faces) + 1);
    starts_[0] = 0;
    vertices_.resize(size_t(before.back().corners));
    points_.resize(vertices_.size());
    host::parallelFor(pages, kPagesPerTask, [&](int64_t page) {
        auto [face, corner] = before[size_t(page)];
        forEachFaceOfPage(page, [&](int64_t corners, auto &&vertexOf) {
            for (int64_t i = 0; i < corners; ++i, ++corner)
            {
                vertices_[size_t(corner)] = Index(vertexOf(i));
                points_[size_t(corner)] = Index(detail.vertexPoint(vertexOf(i)));
            }
            starts_[size_t(++face)] = Index(corner);
        });
    });
}

template class host::FaceTable<int32_t>;
template class host::FaceTable<int64_t>;
