#pragma once

#include <initializer_list>
#include <vector>

#include <host/bas/Convex.h>
#include <rq/data/Positions.h>

/// Cut single faces into convex pieces of bounded size.
///
/// Shape    the output of one face: pieces in order, each corner a position in the vertex list the face came from
/// Threads  one object per thread; its buffers are kept from face to face, so one serves a whole range of faces
class RQ_API RQ_Convexer : private BAS_Convex
{
public:
    RQ_Convexer();
    ~RQ_Convexer() override;

    /// Cut the face of `count` corners that begins at `first` in `vertexList` (null: corners are positions themselves).
    ///
    /// Pieces have at most max(`maxVertices`, 3) corners.  With `triangulate` a face that is cut leaves as triangles,
    /// without it pieces are as large as the limit allows.  False only for a face of fewer than 3 corners, which every face
    /// is in an array that holds no positions.  Neither the range nor the points that it names are checked.  Arrays are
    /// looked at when they are not those of the call before: whoever changes values in place names them anew with
    /// `setSource`.
    bool processFace(const RQ_DataArrayHandle &positions, int64_t count, int64_t first, const RQ_DataArrayHandle &vertexList,
                     int maxVertices, bool triangulate);

    /// The same in two steps, for many faces of one mesh: name the arrays once, then cut face after face.
    void setSource(const rq::Positions &positions, const RQ_DataArrayHandle &vertexList);
    bool processFace(int64_t count, int64_t first, int maxVertices, bool triangulate);

    int64_t getFaceCount() const { return int64_t(ends_.size()); }
    int64_t getVertexCount() const { return int64_t(vertices_.size()); }
    int64_t getVertexCount(int64_t face) const { return ends_[size_t(face)] - begin(face); }

    /// Number of pieces for which no proper cut was left, because the face crosses itself; those of quads are not counted.
    int64_t getForcedCount() const { return forced_; }

    /// The corners of one piece.
    const int64_t *getVertexList(int64_t face) const { return vertices_.data() + begin(face); }

    /// The corners of each piece as an integer array.
    RQ_DataArrayHandle getPolyMeshFaceList() const;

    /// All corners as an integer array; with a source each is replaced by that entry of it.
    RQ_DataArrayHandle getPolyMeshVertexList(const RQ_DataArrayHandle &source = {}) const;

private:
    int getPointCount() const override;
    BAS_Vec2d getPoint(int i) const override;
    void beginPolygon(int corners, bool forced) override;
    void polyVertex(int corner) override;
    void endPolygon() override {}
    bool earlyTermination() override { return false; }

    int64_t begin(int64_t face) const { return face > 0 ? ends_[size_t(face) - 1] : 0; }
    void readCorners(int64_t count);
    void emit(std::initializer_list<int> corners);
    void processQuad(int limit);
    void processPolygon(int limit, bool triangulate);

    RQ_DataArrayHandle source_;
    rq::Positions positions_;
    RQ_DataArrayHandle vertexList_;
    RQ_DataArrayHandle points_;  // keeps the values of one of the pointers below
    const int32_t *points32_ = nullptr;
    const int64_t *points64_ = nullptr;

    int64_t first_ = 0;
    std::vector<BAS_Vec3d> corners_;
    BAS_Vec3d axisX_;
    BAS_Vec3d axisY_;

    std::vector<int64_t> vertices_;  // while a face is cut, with room for all that it may become
    int64_t *nextVertex_ = nullptr;
    std::vector<int32_t> ends_;
    int64_t forced_ = 0;
};
