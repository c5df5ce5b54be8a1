#include <rq/surface/Convexer.h>

#include <algorithm>
#include <initializer_list>

#include <host/bas/faceGeometry.h>
#include <rq/data/DANumeric.h>

RQ_Convexer::RQ_Convexer() = default;
RQ_Convexer::~RQ_Convexer() = default;

void RQ_Convexer::setSource(const rq::Positions &positions, const RQ_DataArrayHandle &vertexList)
{
    const bool wide = vertexList && vertexList->getStorage() == RQ_STORAGE_INT64;
    source_.reset();
    positions_ = positions;
    vertexList_ = vertexList;
    points64_ = wide ? vertexList->getArray<int64_t>(points_) : nullptr;
    points32_ = vertexList && !wide ? vertexList->getArray<int32_t>(points_) : nullptr;
}

bool RQ_Convexer::processFace(const RQ_DataArrayHandle &positions, int64_t count, int64_t first,
                              const RQ_DataArrayHandle &vertexList, int maxVertices, bool triangulate)
{
    if (!positions || positions != source_ || vertexList != vertexList_)
    {
        setSource(rq::Positions(positions), vertexList);
        source_ = positions;
    }
    return processFace(count, first, maxVertices, triangulate);
}

bool RQ_Convexer::processFace(int64_t count, int64_t first, int maxVertices, bool triangulate)
{
    vertices_.clear();
    ends_.clear();
    forced_ = 0;
    if (count < 3 || !positions_.isValid())
        return false;
    first_ = first;
    const int limit = std::max(maxVertices, 3);
    readCorners(count);

    vertices_.resize(size_t(3 * (count - 2)));
    nextVertex_ = vertices_.data();
    if (count == 3)
        emit({0, 1, 2});
    else if (count == 4)
        processQuad(limit);
    else
        processPolygon(limit, triangulate);
    vertices_.resize(size_t(nextVertex_ - vertices_.data()));
    return true;
}

void RQ_Convexer::readCorners(int64_t count)
{
    corners_.resize(size_t(count));
    const auto read = [&](const auto &pointOf) {
        positions_.visit([&](const auto &position) {
            for (int64_t i = 0; i < count; ++i)
                corners_[size_t(i)] = BAS_Vec3d(position(pointOf(first_ + i)));
        });
    };
    if (points32_)
        read([this](int64_t i) { return int64_t(points32_[i]); });
    else if (points64_)
        read([this](int64_t i) { return points64_[i]; });
    else
        read([](int64_t i) { return i; });
}

void RQ_Convexer::emit(std::initializer_list<int> corners)
{
    beginPolygon(int(corners.size()), false);
    for (int corner : corners)
        polyVertex(corner);
}

void RQ_Convexer::processQuad(int limit)
{
    const BAS_Vec3d *p = corners_.data();
    const bool split02 = canSplitQuad02(p[0], p[1], p[2], p[3]);
    if (limit > 3 && split02 && canSplitQuad02(p[1], p[2], p[3], p[0]))
        return emit({0, 1, 2, 3});
    emit(split02 ? std::initializer_list<int>{0, 1, 2} : std::initializer_list<int>{0, 1, 3});
    emit(split02 ? std::initializer_list<int>{2, 3, 0} : std::initializer_list<int>{1, 2, 3});
}

void RQ_Convexer::processPolygon(int limit, bool triangulate)
{
    const int64_t count = int64_t(corners_.size());
    host::faceFrame(host::newellVector(count, [this](int64_t i) { return corners_[size_t(i)]; }), axisX_, axisY_);

    run(limit, !triangulate);
    if (!ends_.empty() || count > limit || isConcave())
        return;
    beginPolygon(int(count), false);
    for (int i = 0; i < int(count); ++i)
        polyVertex(i);
}

int RQ_Convexer::getPointCount() const { return int(corners_.size()); }

BAS_Vec2d RQ_Convexer::getPoint(int i) const
{
    // Relative to the first corner: a face far from the origin keeps all its digits.
    const BAS_Vec3d offset = corners_[size_t(i)] - corners_[0];
    return {offset.dot(axisX_), offset.dot(axisY_)};
}

void RQ_Convexer::beginPolygon(int corners, bool forced)
{
    ends_.push_back(int32_t(nextVertex_ - vertices_.data()) + corners);
    forced_ += forced;
}

void RQ_Convexer::polyVertex(int corner) { *nextVertex_++ = first_ + corner; }

RQ_DataArrayHandle RQ_Convexer::getPolyMeshFaceList() const
{
    BAS_IntrusivePtr<RQ_DANumeric<int32_t>> counts(new RQ_DANumeric<int32_t>(getFaceCount(), 1, RQ_TYPE_NONE));
    for (int64_t face = 0; face < getFaceCount(); ++face)
        counts->data()[face] = int32_t(getVertexCount(face));
    return counts;
}

RQ_DataArrayHandle RQ_Convexer::getPolyMeshVertexList(const RQ_DataArrayHandle &source) const
{
    BAS_IntrusivePtr<RQ_DANumeric<int64_t>> list(new RQ_DANumeric<int64_t>(getVertexCount(), 1, RQ_TYPE_NONE));
    for (int64_t i = 0; i < getVertexCount(); ++i)
        list->data()[i] = source ? source->getI64(vertices_[size_t(i)]) : vertices_[size_t(i)];
    return list;
}
