#include <host/mod/NormalFaces.h>

#include <host/mod/detail/NormalTables.h>

int64_t host::EvenFaces::cornersOfEach(const MSH_Detail &detail)
{
    const MSH_DetailData &columns = detail.data();
    const int64_t faces = detail.capacity(ELM_OWNER_PRIMITIVE);
    if (faces == 0 || detail.primitiveCount(ELM_PRIMITIVE_POLYGON) != faces || !detail.sequentialVertices() ||
        !detail.topologyIsValid() || !detail.vertexPoint().contiguous32())
        return 0;
    const int64_t corners = columns.vertexCount.value(0);
    for (int64_t first = 0; first < faces; first += ELM_PAGE_SIZE)
    {
        const int64_t page = first >> ELM_PAGE_BITS;
        if (!columns.flags.isConstantPage(page) || !detail.isClosed(first) || !columns.vertexCount.isConstantPage(page) ||
            columns.vertexCount.value(first) != corners)
            return 0;
    }
    const int64_t vertices = detail.capacity(ELM_OWNER_VERTEX);
    return faces * corners == vertices && std::max(vertices, detail.capacity(ELM_OWNER_POINT)) < ELM_INDEX32_LIMIT ? corners
                                                                                                                   : 0;
}

host::NormalTables::NormalTables(const MSH_Detail &detail)
{
    if (EvenFaces::cornersOfEach(detail) > 0)
    {
        table_.emplace<NormalTable<EvenFaces>>(detail);
        return;
    }
    const FaceCounts counts(detail);
    if (std::max({counts.beforePage.back().corners, detail.capacity(ELM_OWNER_VERTEX), detail.capacity(ELM_OWNER_POINT)}) <
        ELM_INDEX32_LIMIT)
        table_.emplace<NormalTable<FaceTable<int32_t>>>(detail, counts);
    else
        table_.emplace<NormalTable<FaceTable<int64_t>>>(detail, counts);
}

MOD_NormalFaces::MOD_NormalFaces(const MSH_Detail &detail)
    : topologyId_(detail.topologyId()), tables_(new host::NormalTables(detail))
{}

MOD_NormalFaces::~MOD_NormalFaces() = default;

MOD_NormalFaces::Handle MOD_NormalFaces::create(const MSH_Detail &detail)
try
{
    return Handle(new MOD_NormalFaces(detail));
}
catch (const std::bad_alloc &)
{
    return nullptr;
}

int64_t MOD_NormalFaces::memoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this) + sizeof(*tables_));
    tables_->visit([&](const auto &table) { bytes += table.memoryUsage(); });
    return bytes;
}
