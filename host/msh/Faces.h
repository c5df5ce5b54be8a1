#pragma once

#include <host/msh/Grid.h>

/// What a polygon soup's payload holds: faces whose corners are numbers of the primitive's own vertices.
///
/// Shape  face f has the corners [f * faceSize, (f + 1) * faceSize) when `faceSize` is not 0, else those from faceStarts[f]
///        up to faceStarts[f + 1]
struct HOST_API MSH_SoupData
{
    int32_t faceSize = 3;
    ELM_PackedIndices faceStarts;
    ELM_PackedIndices corners;

    MSH_SoupData() = default;

    /// From the number of corners of each face.  What is wrong with them comes out when the soup is added to a detail.
    MSH_SoupData(std::span<const int32_t> faceSizes, std::span<const int32_t> corners);

    int64_t faces() const { return faceSize > 0 ? corners.size() / faceSize : std::max<int64_t>(faceStarts.size() - 1, 0); }
    int64_t start(int64_t face) const { return faceSize > 0 ? face * faceSize : faceStarts[face]; }

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("face_size", self.faceSize);
        visit("face_starts", self.faceStarts);
        visit("corners", self.corners);
    }
    bool check(const MSH_PayloadUse &use, std::string &why) const;
};

/// A primitive seen as its faces: a triangle fan, a triangle strip, a polygon soup, or the cells of a grid.
///
///     for (const MSH_Faces::Face face : MSH_Faces(primitive))
///         for (int64_t i = 0; i < face.size(); ++i)
///             use(face.vertex(i));
///
/// Shape  faces are closed.  Of a strip every other face is turned, so that all look to one side, and faces that use a point
///        twice, which strips are sewn together with, are passed over.
class HOST_API MSH_Faces : public MSH_Primitive
{
public:
    explicit MSH_Faces(const MSH_Primitive &primitive);
    MSH_Faces(const MSH_Detail &detail, ELM_Offset offset) : MSH_Faces(MSH_Primitive(detail, offset)) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return kind_ != Kind::None; }

    class Face
    {
    public:
        Face(const MSH_Faces *faces, int64_t index) : faces_(faces), index_(index) {}

        int64_t size() const { return faces_->sizeOf(index_); }
        ELM_Offset vertex(int64_t i) const { return faces_->run_.start + faces_->cornerOf(index_, i); }
        ELM_Offset point(int64_t i) const { return faces_->detail().vertexPoint(vertex(i)); }

    private:
        const MSH_Faces *faces_;
        int64_t index_;
    };

    class Iterator
    {
    public:
        Iterator(const MSH_Faces *faces, int64_t index) : faces_(faces), index_(index) { skip(); }
        Face operator*() const { return Face(faces_, index_); }
        Iterator &operator++()
        {
            ++index_;
            skip();
            return *this;
        }
        bool operator==(const Iterator &) const = default;

    private:
        void skip()
        {
            while (faces_->kind_ == Kind::Strip && index_ < faces_->faces_ && faces_->isSeam(index_))
                ++index_;
        }

        const MSH_Faces *faces_;
        int64_t index_;
    };

    Iterator begin() const { return Iterator(this, 0); }
    Iterator end() const { return Iterator(this, faces_); }

private:
    enum class Kind
    {
        None,
        Fan,
        Strip,
        Soup,
        Grid
    };

    int64_t sizeOf(int64_t face) const;
    int64_t cornerOf(int64_t face, int64_t i) const;
    bool isSeam(int64_t face) const;

    Kind kind_ = Kind::None;
    int64_t faces_ = 0;
    MSH_Detail::VertexRun run_;
    const MSH_SoupData *soup_ = nullptr;
    const MSH_GridData *grid_ = nullptr;
};
