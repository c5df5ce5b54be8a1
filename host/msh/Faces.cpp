#include <host/msh/Faces.h>

#include <fmt/format.h>

MSH_SoupData::MSH_SoupData(std::span<const int32_t> faceSizes, std::span<const int32_t> cornerVertices)
    : faceSize(faceSizes.empty() ? 3 : faceSizes[0]), corners(cornerVertices)
{
    const auto isFirst = [this](int32_t size) { return size == faceSize; };
    if (faceSize > 0 && std::all_of(faceSizes.begin(), faceSizes.end(), isFirst) &&
        int64_t(faceSizes.size()) * faceSize == corners.size())
        return;
    faceSize = 0;
    std::vector<int32_t> starts(1, 0);
    for (const int32_t size : faceSizes)
        starts.push_back(int32_t(uint32_t(starts.back()) + uint32_t(size)));
    faceStarts.assign(starts);
}

bool MSH_SoupData::check(const MSH_PayloadUse &use, std::string &why) const
{
    const std::vector<int32_t> starts = faceStarts.unpacked(), vertices = corners.unpacked();
    const auto isOutside = [&use](int32_t vertex) { return vertex < 0 || vertex >= use.vertices; };
    const auto bad = std::find_if(vertices.begin(), vertices.end(), isOutside);
    if (bad != vertices.end())
        why = fmt::format("corner {} of a soup is vertex {}, out of range [0, {})", bad - vertices.begin(), *bad,
                          use.vertices);
    else if (faceSize < 0 || (faceSize > 0 && (corners.size() % faceSize != 0 || !starts.empty())))
        why = fmt::format("{} corners do not make faces of {}", corners.size(), faceSize);
    else if (faceSize == 0 && (starts.empty() || starts.front() != 0 || starts.back() != corners.size() ||
                               !std::is_sorted(starts.begin(), starts.end())))
        why = fmt::format("the faces of a soup do not take its {} corners, one face after the other", corners.size());
    else
        return true;
    return false;
}

MSH_Faces::MSH_Faces(const MSH_Primitive &primitive)
    : MSH_Primitive(primitive), run_(primitive.detail().vertexRun(primitive.offset()))
{
    switch (type())
    {
    case ELM_PRIMITIVE_TRIANGLE_FAN:
    case ELM_PRIMITIVE_TRIANGLE_STRIP:
        kind_ = type() == ELM_PRIMITIVE_TRIANGLE_FAN ? Kind::Fan : Kind::Strip;
        faces_ = std::max<int64_t>(run_.count - 2, 0);
        break;
    case ELM_PRIMITIVE_SOUP:
        kind_ = Kind::Soup;
        soup_ = &payload<MSH_SoupData>();
        faces_ = soup_->faces();
        break;
    case ELM_PRIMITIVE_GRID:
        kind_ = Kind::Grid;
        grid_ = &payload<MSH_GridData>();
        faces_ = MSH_Grid(*this).cellsU() * MSH_Grid(*this).cellsV();
        break;
    default:
        break;
    }
}

int64_t MSH_Faces::sizeOf(int64_t face) const
{
    return kind_ == Kind::Grid ? 4 : kind_ == Kind::Soup ? soup_->start(face + 1) - soup_->start(face) : 3;
}

int64_t MSH_Faces::cornerOf(int64_t face, int64_t i) const
{
    switch (kind_)
    {
    case Kind::Fan:
        return i == 0 ? 0 : face + i;
    case Kind::Strip:
        return face + (i < 2 && face % 2 != 0 ? 1 - i : i);
    case Kind::Soup:
        return soup_->corners[soup_->start(face) + i];
    default: {
        const int64_t cells = grid_->columns - (grid_->wrapsU ? 0 : 1);
        const int64_t row = face / cells + (i >= 2), column = face % cells + (i == 1 || i == 2);
        return row % grid_->rows * grid_->columns + column % grid_->columns;
    }
    }
}

bool MSH_Faces::isSeam(int64_t face) const
{
    const auto point = [&](int64_t i) { return detail().vertexPoint(run_.start + face + i); };
    return point(0) == point(1) || point(1) == point(2) || point(0) == point(2);
}
