#include <rq/subd/detail/stepPoints.h>

#include <rq/subd/detail/osd.h>

namespace
{
using namespace rq;

/// The children of one level's points, faces and edges, and what they are made of.
class Step
{
public:
    Step(const Far::TopologyLevel &level, std::vector<uint8_t> &children)
        : level_(level), children_(children), firstFace_(level.GetNumVertices()),
          firstEdge_(firstFace_ + level.GetNumFaces())
    {}

    /// Points are made of the new points of the edges and faces around them, and those of edges of those of their faces.
    void wantBesides()
    {
        for (int vertex = 0; vertex < firstFace_; ++vertex)
            if (children_[size_t(vertex)])
            {
                want(children_, firstEdge_, level_.GetVertexEdges(vertex));
                want(children_, firstFace_, level_.GetVertexFaces(vertex));
            }
        for (int edge = 0; edge < level_.GetNumEdges(); ++edge)
            if (children_[size_t(firstEdge_ + edge)])
                want(children_, firstFace_, level_.GetEdgeFaces(edge));
    }

    StepPoints select() const
    {
        return {chosen(0, firstFace_), chosen(firstFace_, firstEdge_), chosen(firstEdge_, int(children_.size()))};
    }

    /// The points of the level itself that `chosen` ones are made of.
    std::vector<uint8_t> wantParents(const StepPoints &chosen) const
    {
        std::vector<uint8_t> parents(size_t(firstFace_), 0);
        want(parents, 0, chosen.points);
        for (const int vertex : chosen.points)
            for (const int edge : level_.GetVertexEdges(vertex))
                want(parents, 0, level_.GetEdgeVertices(edge));
        for (const int face : chosen.faces)
            want(parents, 0, level_.GetFaceVertices(face));
        for (const int edge : chosen.edges)
            want(parents, 0, level_.GetEdgeVertices(edge));
        return parents;
    }

private:
    template <class Items> static void want(std::vector<uint8_t> &flags, int first, const Items &items)
    {
        for (const int item : items)
            flags[size_t(first + item)] = 1;
    }

    std::vector<int32_t> chosen(int begin, int end) const
    {
        std::vector<int32_t> items;
        for (int child = begin; child < end; ++child)
            if (children_[size_t(child)])
                items.push_back(child - begin);
        return items;
    }

    const Far::TopologyLevel &level_;
    std::vector<uint8_t> &children_;
    int firstFace_;
    int firstEdge_;
};
}  // namespace

std::vector<StepPoints> rq::selectPoints(const Refiner &refiner, int base, int level, std::vector<uint8_t> wanted)
{
    std::vector<StepPoints> steps(size_t(level - base));
    for (int step = level - 1; step >= base; --step)
    {
        Step above(refiner.far->GetLevel(step), wanted);
        if (step < level - 1)
            above.wantBesides();
        StepPoints &chosen = steps[size_t(step - base)];
        chosen = above.select();
        wanted = above.wantParents(chosen);
    }
    return steps;
}
