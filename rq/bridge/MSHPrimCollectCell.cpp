#include <rq/bridge/MSHPrimCollectCell.h>

#include <rq/bridge/detail/MeshAttributes.h>
#include <rq/bridge/detail/hasAllPoints.h>
#include <rq/bridge/detail/parallelWalk.h>

namespace
{
// A cell costs 0 to 10 ns.  Pieces are whole pages.
constexpr int64_t kPrimitivesPerPiece = 8 * ELM_PAGE_SIZE;
}  // namespace

rq::BatchData::~BatchData() = default;
RQ_MSHPrimCollectCellData::~RQ_MSHPrimCollectCellData() = default;

void RQ_MSHPrimCollectCellData::append(const MSH_Primitive &cell)
{
    if (cell.type() != type_ || !rq::hasAllPoints(cell))
        return;
    const MSH_Detail::VertexRun run = cell.detail().vertexRun(cell.offset());
    primitives_.append(cell.offset(), 1);
    vertices_.append(run.start, run.count);
}

// Within a page of nothing but cells their vertices follow each other like the cells.
void RQ_MSHPrimCollectCellData::appendBlock(const MSH_Detail &detail, ELM_Offset begin, ELM_Offset end)
{
    if (detail.data().type.isConstantPage(begin >> ELM_PAGE_BITS))
    {
        if (detail.typeOf(begin) != type_)
            return;
        if (detail.topologyIsValid() && detail.sequentialVertices())
        {
            const MSH_Detail::VertexRun first = detail.vertexRun(begin), last = detail.vertexRun(end - 1);
            primitives_.append(begin, end - begin);
            vertices_.append(first.start, last.start + last.count - first.start);
            return;
        }
    }
    for (ELM_Offset primitive = begin; primitive < end; ++primitive)
        append(MSH_Primitive(detail, primitive));
}

void RQ_MSHPrimCollectCellData::append(const MSH_Detail &detail, const ELM_Range &range, BAS_Progress &progress)
{
    const rq::PieceWalk walk(detail, range, kPrimitivesPerPiece);
    std::vector<RQ_MSHPrimCollectCellData> pieces(size_t(walk.pieces()), RQ_MSHPrimCollectCellData(type_, parms_));
    walk.run(progress, [&](int64_t piece, const ELM_Range &part) {
        for (const auto [begin, end] : part.blocks())
            pieces[size_t(piece)].appendBlock(detail, begin, end);
    });
    for (RQ_MSHPrimCollectCellData &piece : pieces)
        append(piece);
}

void RQ_MSHPrimCollectCellData::append(RQ_MSHPrimCollectCellData &following)
{
    following.primitives_.flush();
    following.vertices_.flush();
    primitives_.append(following.primitives_.list());
    vertices_.append(following.vertices_.list());
}

RQ_CellMeshHandle RQ_MSHPrimCollectCellData::fill(const RQ_CellMeshHandle &mesh, const RQ_MSHDetailListHandle &details)
{
    primitives_.flush();
    vertices_.flush();
    const RQ_MSHOffsetList &primitives = primitives_.list(), &vertices = vertices_.list();
    if (primitives.entries() == 0)
        return nullptr;
    const MSH_Detail &detail = *details->getDetail();
    const rq::MeshAttributes attributes(*details, parms_);
    // Every offset, vacant ones too: vertex lists hold offsets of points, and use them as rows.
    const RQ_MSHOffsetList points(ELM_OffsetList(0, detail.capacity(ELM_OWNER_POINT)));
    mesh->init(vertices.createVertexPointArray(details->getHandle()), attributes.ofPoints(points),
               attributes.ofVertices(vertices), attributes.ofPrimitives(primitives), attributes.ofDetail());

    // A mesh that uses the whole detail keeps its points as they are: compacting would give up the host's memory for copies.
    const bool coversDetail = primitives.entries() == detail.primitiveCount() &&
                              vertices.entries() == detail.vertexCount() && !detail.hasVacantOffsets(ELM_OWNER_POINT);
    if (coversDetail && (RQ_RefineParms::getFastPolyCompacting(parms_) || !detail.hasUnusedPoints()))
        return mesh;
    return mesh->removeUnusedPoints();
}

RQ_PrimitiveHandle RQ_MSHPrimCollectCell::collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *primitives,
                                                  int, RQ_MSHPrimCollectData *data) const
{
    static_cast<RQ_MSHPrimCollectCellData *>(data)->append(*primitives[0]);
    return nullptr;
}

void RQ_MSHPrimCollectCell::mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const
{
    static_cast<RQ_MSHPrimCollectCellData *>(into)->append(*static_cast<RQ_MSHPrimCollectCellData *>(from));
}
