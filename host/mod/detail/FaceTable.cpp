#include <host/mod/detail/FaceTable.h>

#include <host/msh/Faces.h>
#include <host/msh/Polygon.h>

namespace
{
// A face costs about 10 ns in both passes, so a page of primitives is some 10 us of work.
constexpr int64_t kPagesPerTask = 2;

// Call `visit(corners, vertexOf)` for every face of a primitive whose corners all have a point.
template <class Visit> void forEachFace(const MSH_Detail &detail, ELM_Offset primitive, Visit &&visit)
{
    const auto visitWhole = [&](int64_t corners, auto &&vertexOf) {
        if (!detail.topologyIsValid())
            for (int64_t i = 0; i < corners; ++i)
                if (detail.vertexPoint(vertexOf(i)) < 0)
                    return;
        visit(corners, vertexOf);
    };
    if (const MSH_Polygon polygon(detail, primitive); polygon.isValid())
    {
        const MSH_Detail::VertexRun run = detail.vertexRun(primitive);
        if (polygon.isClosed())
            visitWhole(run.count, [start = run.start](int64_t i) { return start + i; });
        return;
    }
    for (const MSH_Faces::Face face : MSH_Faces(detail, primitive))
        visitWhole(face.size(), [&face](int64_t i) { return face.vertex(i); });
}

template <class Visit> void forEachFaceOfPage(const MSH_Detail &detail, int64_t page, Visit &&visit)
{
    const int64_t end = std::min(detail.capacity(ELM_OWNER_PRIMITIVE), (page + 1) << ELM_PAGE_BITS);
    for (int64_t primitive = page << ELM_PAGE_BITS; primitive < end; ++primitive)
        forEachFace(detail, primitive, visit);
}
}  // namespace

host::FaceCounts::FaceCounts(const MSH_Detail &detail)
    : beforePage(size_t((detail.capacity(ELM_OWNER_PRIMITIVE) + ELM_PAGE_SIZE - 1) >> ELM_PAGE_BITS) + 1)
{
    host::parallelFor(int64_t(beforePage.size()) - 1, kPagesPerTask, [&](int64_t page) {
        Totals &totals = beforePage[size_t(page) + 1];
        forEachFaceOfPage(detail, page, [&](int64_t corners, auto &&) {
            ++totals.faces;
            totals.corners += corners;
        });
    });
    for (size_t page = 1; page < beforePage.size(); ++page)
    {
        beforePage[page].faces += beforePage[page - 1].faces;
        beforePage[page].corners += beforePage[page - 1].corners;
    }
}

template <class Index>
host::FaceTable<Index>::FaceTable(const MSH_Detail &detail, const FaceCounts &counts)
    : starts_(size_t(counts.beforePage.back().faces) + 1), vertices_(size_t(counts.beforePage.back().corners)),
      points_(vertices_.size())
{
    starts_[0] = 0;
    host::parallelFor(int64_t(counts.beforePage.size()) - 1, kPagesPerTask, [&](int64_t page) {
        auto [face, corner] = counts.beforePage[size_t(page)];
        forEachFaceOfPage(detail, page, [&](int64_t corners, auto &&vertexOf) {
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
