#include <rq/subd/detail/levelValues.h>

#include <host/bas/Parallel.h>
#include <rq/subd/detail/TupleSum.h>
#include <rq/subd/detail/levelMasks.h>
#include <rq/subd/detail/stepPoints.h>

namespace
{
using namespace rq;

// A value costs some 20 ns: 80 us of work a task.
constexpr int64_t kItemsPerTask = 4096;

/// One step of refinement of N neighbouring components of the points' values.
template <Sdc::SchemeType kScheme, class T, int N> class Step
{
public:
    static constexpr bool kTriangles = kScheme == Sdc::SCHEME_LOOP;

    Step(const Refiner &refiner, int level, const T *from, int64_t stride, T *to)
        : level_(refiner.far->GetLevel(level)), scheme_(refiner.far->GetSchemeOptions()), from_(from), to_(to),
          stride_(stride), firstFace_(level_.GetNumVertices()),
          firstEdge_(firstFace_ + (kTriangles ? 0 : level_.GetNumFaces())),
          evenEdges_(kScheme == Sdc::SCHEME_CATMARK &&
                     (level > 0 || scheme_.GetOptions().GetTriangleSubdivision() == Sdc::Options::TRI_SUB_CATMARK))
    {}

    void run(const StepPoints *only) const
    {
        if (!kTriangles)
            forEach(level_.GetNumFaces(), only ? &only->faces : nullptr,
                    [this](int face, Mask<T> &) { makeFacePoint(face); });
        forEach(level_.GetNumEdges(), only ? &only->edges : nullptr,
                [this](int edge, Mask<T> &mask) { makeEdgePoint(edge, mask); });
        forEach(level_.GetNumVertices(), only ? &only->points : nullptr,
                [this](int vertex, Mask<T> &mask) { makeVertexPoint(vertex, mask); });
    }

private:
    using Sum = TupleSum<T, N>;

    template <class Make> static void forEach(int64_t count, const std::vector<int32_t> *only, Make &&make)
    {
        host::parallelForRange(only ? int64_t(only->size()) : count, kItemsPerTask, [&](int64_t begin, int64_t end) {
            Mask<T> mask;
            for (int64_t i = begin; i < end; ++i)
                make(only ? (*only)[size_t(i)] : int(i), mask);
        });
    }

    const T *at(int vertex) const { return from_ + vertex * stride_; }
    const T *facePoint(int face) const { return to_ + (firstFace_ + face) * stride_; }

    void makeFacePoint(int face) const
    {
        const Far::ConstIndexArray corners = level_.GetFaceVertices(face);
        Sum sum, mean;
        for (int i = 0; i < corners.size(); ++i)
            sum.add(at(corners[i]));
        mean.add(sum, T(1) / T(corners.size()));
        mean.store(to_ + (firstFace_ + face) * stride_);
    }

    void makeEdgePoint(int edge, Mask<T> &mask) const
    {
        const Far::ConstIndexArray ends = level_.GetEdgeVertices(edge);
        const Far::ConstIndexArray faces = level_.GetEdgeFaces(edge);
        Sum sum;
        if (evenEdges_ && level_.GetEdgeSharpness(edge) <= 0.0f)
        {
            // The common case, and the ends and both faces all weigh the same.
            for (const T *tuple : {at(ends[0]), at(ends[1]), facePoint(faces[0]), facePoint(faces[1])})
                sum.add(tuple, T(0.25));
            return sum.store(to_ + (firstEdge_ + edge) * stride_);
        }
        scheme_.ComputeEdgeVertexMask(EdgeAround(level_, edge), mask);
        sum.add(at(ends[0]), mask.VertexWeight(0));
        sum.add(at(ends[1]), mask.VertexWeight(1));
        for (int i = 0; i < mask.GetNumFaceWeights(); ++i)
            sum.add(kTriangles ? at(oppositeOf(faces[i], ends)) : facePoint(faces[i]), mask.FaceWeight(i));
        sum.store(to_ + (firstEdge_ + edge) * stride_);
    }

    void makeVertexPoint(int vertex, Mask<T> &mask) const
    {
        const Far::ConstIndexArray edges = level_.GetVertexEdges(vertex);
        const Sdc::Crease::Rule rule = level_.GetVertexRule(vertex);
        Sum sum;
        if (evenEdges_ && rule == Sdc::Crease::RULE_SMOOTH)
        {
            // The middles of its edges hold what the other ends would add, and are found at once.
            const Far::ConstIndexArray faces = level_.GetVertexFaces(vertex);
            const T valence = T(faces.size()), weight = T(1) / (valence * valence);
            Sum middles, centres;
            for (int i = 0; i < edges.size(); ++i)
                middles.add(to_ + (firstEdge_ + edges[i]) * stride_);
            for (int i = 0; i < faces.size(); ++i)
                centres.add(facePoint(faces[i]));
            sum.add(at(vertex), (valence - 3) / valence);
            sum.add(middles, 4 * weight);
            sum.add(centres, -weight);
        }
        else
        {
            const bool smooth = rule == Sdc::Crease::RULE_SMOOTH || rule == Sdc::Crease::RULE_DART;
            scheme_.ComputeVertexVertexMask(VertexAround(level_, vertex), mask, smooth ? rule : Sdc::Crease::RULE_UNKNOWN);
            sum.add(at(vertex), mask.VertexWeight(0));
            for (int i = 0; i < mask.GetNumEdgeWeights(); ++i)
                sum.add(at(otherEnd(edges[i], vertex)), mask.EdgeWeight(i));
            const Far::ConstIndexArray faces = level_.GetVertexFaces(vertex);
            for (int i = 0; i < mask.GetNumFaceWeights(); ++i)
                sum.add(facePoint(faces[i]), mask.FaceWeight(i));
        }
        sum.store(to_ + vertex * stride_);
    }

    int otherEnd(int edge, int vertex) const
    {
        const Far::ConstIndexArray ends = level_.GetEdgeVertices(edge);
        return ends[0] == vertex ? ends[1] : ends[0];
    }

    int oppositeOf(int triangle, const Far::ConstIndexArray &ends) const
    {
        const Far::ConstIndexArray corners = level_.GetFaceVertices(triangle);
        for (int i = 0; i < 2; ++i)
            if (corners[i] != ends[0] && corners[i] != ends[1])
                return corners[i];
        return corners[2];
    }

    const Far::TopologyLevel &level_;
    const Sdc::Scheme<kScheme> scheme_;
    const T *from_;
    T *to_;
    int64_t stride_;
    int64_t firstFace_;
    int64_t firstEdge_;
    bool evenEdges_;
};

template <Sdc::SchemeType kScheme, class T>
void runSteps(const Refiner &refiner, int level, const T *from, int64_t tuple, T *to, const StepPoints *only)
{
    int64_t first = 0;
    for (; first + 3 <= tuple; first += 3)
        Step<kScheme, T, 3>(refiner, level, from + first, tuple, to + first).run(only);
    for (; first < tuple; ++first)
        Step<kScheme, T, 1>(refiner, level, from + first, tuple, to + first).run(only);
}

template <class T>
void interpolate(const Refiner &refiner, int level, const T *from, int64_t tuple, T *to, const StepPoints *only)
{
    switch (refiner.far->GetSchemeType())
    {
    case Sdc::SCHEME_CATMARK:
        return runSteps<Sdc::SCHEME_CATMARK>(refiner, level, from, tuple, to, only);
    case Sdc::SCHEME_LOOP:
        return runSteps<Sdc::SCHEME_LOOP>(refiner, level, from, tuple, to, only);
    case Sdc::SCHEME_BILINEAR:
        return runSteps<Sdc::SCHEME_BILINEAR>(refiner, level, from, tuple, to, only);
    }
}
}  // namespace

void rq::interpolateLevel(const Refiner &refiner, int level, const float *from, int64_t tuple, float *to,
                          const StepPoints *only)
{
    interpolate(refiner, level, from, tuple, to, only);
}

void rq::interpolateLevel(const Refiner &refiner, int level, const double *from, int64_t tuple, double *to,
                          const StepPoints *only)
{
    interpolate(refiner, level, from, tuple, to, only);
}
