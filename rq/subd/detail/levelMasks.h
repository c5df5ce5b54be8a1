#pragma once

#include <opensubdiv/sdc/bilinearScheme.h>
#include <opensubdiv/sdc/catmarkScheme.h>
#include <opensubdiv/sdc/loopScheme.h>

#include <rq/subd/detail/osd.h>

// The neighbourhoods that OpenSubdiv's rules ask for their weights, seen in one level of a refined topology, without the
// level below it.

namespace rq
{
/// Weights of a rule, as OpenSubdiv's schemes fill them in.
template <class T> class Mask
{
public:
    using Weight = T;

    int GetNumVertexWeights() const { return vertices_; }
    int GetNumEdgeWeights() const { return int(edge_.size()); }
    int GetNumFaceWeights() const { return int(face_.size()); }
    void SetNumVertexWeights(int count) { vertices_ = count; }
    void SetNumEdgeWeights(int count) { edge_.resize(size_t(count)); }
    void SetNumFaceWeights(int count) { face_.resize(size_t(count)); }
    T &VertexWeight(int i) { return vertex_[i]; }
    T &EdgeWeight(int i) { return edge_[size_t(i)]; }
    T &FaceWeight(int i) { return face_[size_t(i)]; }
    bool AreFaceWeightsForFaceCenters() const { return centres_; }
    void SetFaceWeightsForFaceCenters(bool on) { centres_ = on; }

private:
    T vertex_[2];
    std::vector<T> edge_, face_;
    int vertices_ = 0;
    bool centres_ = false;
};

class VertexAround
{
public:
    VertexAround(const Far::TopologyLevel &level, int vertex)
        : level_(level), vertex_(vertex), edges_(level.GetVertexEdges(vertex))
    {}

    int GetNumEdges() const { return edges_.size(); }
    int GetNumFaces() const { return level_.GetVertexFaces(vertex_).size(); }
    float GetSharpness() const { return level_.GetVertexSharpness(vertex_); }
    float *GetSharpnessPerEdge(float *sharpness) const
    {
        for (int i = 0; i < edges_.size(); ++i)
            sharpness[i] = level_.GetEdgeSharpness(edges_[i]);
        return sharpness;
    }
    float GetChildSharpness(const Sdc::Crease &crease) const { return crease.SubdivideVertexSharpness(GetSharpness()); }
    float *GetChildSharpnessPerEdge(const Sdc::Crease &crease, float *sharpness) const
    {
        std::vector<float> own(size_t(edges_.size()));
        crease.SubdivideEdgeSharpnessesAroundVertex(edges_.size(), GetSharpnessPerEdge(own.data()), sharpness);
        return sharpness;
    }

private:
    const Far::TopologyLevel &level_;
    int vertex_;
    Far::ConstIndexArray edges_;
};

class EdgeAround
{
public:
    EdgeAround(const Far::TopologyLevel &level, int edge) : level_(level), edge_(edge) {}

    int GetNumFaces() const { return level_.GetEdgeFaces(edge_).size(); }
    float GetSharpness() const { return level_.GetEdgeSharpness(edge_); }
    void GetNumVerticesPerFace(int *counts) const
    {
        const Far::ConstIndexArray faces = level_.GetEdgeFaces(edge_);
        for (int i = 0; i < faces.size(); ++i)
            counts[i] = level_.GetFaceVertices(faces[i]).size();
    }
    void GetChildSharpnesses(const Sdc::Crease &crease, float *sharpness) const
    {
        for (int end = 0; end < 2; ++end)
        {
            const VertexAround vertex(level_, level_.GetEdgeVertices(edge_)[end]);
            std::vector<float> around(size_t(vertex.GetNumEdges()));
            sharpness[end] = crease.SubdivideEdgeSharpnessAtVertex(GetSharpness(), vertex.GetNumEdges(),
                                                                   vertex.GetSharpnessPerEdge(around.data()));
        }
    }

private:
    const Far::TopologyLevel &level_;
    int edge_;
};
}  // namespace rq
