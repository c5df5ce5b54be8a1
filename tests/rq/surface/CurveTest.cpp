#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <random>

#include <host/bas/Diagnostics.h>
#include <host/bas/JSONWriter.h>
#include <host/bas/Parallel.h>
#include <rq/data/DAConstantValue.h>
#include <rq/data/DAIndexedText.h>
#include <rq/prim/RefineCollect.h>
#include <rq/prim/RefineParms.h>
#include <rq/prim/ViewportRefineOptions.h>
#include <rq/surface/CurveEval.h>
#include <rq/surface/PrimitiveBuilder.h>
#include <tests/rq/surface/Fixture.h>

using namespace tests;

namespace
{
using Numbers = std::vector<double>;

// Slow evaluations that share nothing with the library's: the vertices of one component, of one span, at t.

double deCasteljau(Numbers v, double t)
{
    for (size_t n = v.size(); n > 1; --n)
        for (size_t i = 0; i + 1 < n; ++i)
            v[i] = (1.0 - t) * v[i] + t * v[i + 1];
    return v[0];
}

/// De Boor's algorithm between knots[d] and knots[d + 1], d + 1 vertices.
double deBoor(Numbers v, const double *knots, double u)
{
    const int degree = int(v.size()) - 1;
    for (int r = 1; r <= degree; ++r)
        for (int j = degree; j >= r; --j)
        {
            const double share = (u - knots[j]) / (knots[j + 1 + degree - r] - knots[j]);
            v[size_t(j)] = (1.0 - share) * v[size_t(j - 1)] + share * v[size_t(j)];
        }
    return v[size_t(degree)];
}

double evaluateSpan(RQ_Basis basis, const Numbers &v, double t)
{
    switch (basis)
    {
    case RQ_BASIS_BEZIER:
        return deCasteljau(v, t);
    case RQ_BASIS_BSPLINE: {
        Numbers knots(2 * v.size());
        for (size_t i = 0; i < knots.size(); ++i)
            knots[i] = double(i) - double(v.size() - 1);
        return deBoor(v, knots.data(), t);
    }
    case RQ_BASIS_CATMULLROM:
        return deCasteljau({v[1], v[1] + (v[2] - v[0]) / 6.0, v[2] - (v[3] - v[1]) / 6.0, v[2]}, t);
    case RQ_BASIS_HERMITE:
        return deCasteljau({v[0], v[0] + v[1] / 3.0, v[2] - v[3] / 3.0, v[2]}, t);
    default: {
        double sum = 0.0;
        for (size_t i = v.size(); i > 0; --i)
            sum = sum * t + v[i - 1];
        return sum;
    }
    }
}

/// Counts of vertices that make `spans` whole spans.
int64_t verticesFor(RQ_Basis basis, int order, bool wrap, int64_t spans)
{
    return wrap ? std::max<int64_t>(spans * RQbasisStep(basis, order), order - 1)
                : order + (spans - 1) * RQbasisStep(basis, order);
}

struct CurveCase
{
    RQ_Basis basis;
    int order;
};
const CurveCase kCurveCases[] = {
    {RQ_BASIS_BEZIER, 2},  {RQ_BASIS_BEZIER, 3},  {RQ_BASIS_BEZIER, 4},   {RQ_BASIS_BEZIER, 31},    {RQ_BASIS_BSPLINE, 2},
    {RQ_BASIS_BSPLINE, 3}, {RQ_BASIS_BSPLINE, 4}, {RQ_BASIS_BSPLINE, 10}, {RQ_BASIS_CATMULLROM, 4}, {RQ_BASIS_HERMITE, 4},
    {RQ_BASIS_POWER, 4},   {RQ_BASIS_POWER, 2},   {RQ_BASIS_POWER, 128},  {RQ_BASIS_BSPLINE, 128},
};

/// Values from 0 to 100 that differ with the seed, as every storage holds them.
template <class T> RQ_DataArrayHandle randomArray(int64_t entries, int64_t tuple, int seed, RQ_Type type = RQ_TYPE_NONE)
{
    std::mt19937 generator(unsigned(seed) + 1u);
    std::vector<T> values(size_t(entries * tuple));
    for (T &value : values)
        value = T(float(generator() % 101));
    return makeArray(values, tuple, type);
}

RQ_AttributeListHandle with(const RQ_AttributeListHandle &list, const char *name, const RQ_DataArrayHandle &array)
{
    return list->addAttribute(name, array, true);
}

/// Curves of `spans` spans each, with the attribute "v" of type T and "P" of doubles.
template <class T>
RQ_CurveMeshHandle randomCurves(const CurveCase &c, bool wrap, std::vector<int> spans, int tuple, int seed)
{
    for (int &count : spans)
        count = int(verticesFor(c.basis, c.order, wrap, count));
    const int64_t vertices = std::accumulate(spans.begin(), spans.end(), int64_t(0));
    const RQ_AttributeListHandle list = with(oneAttribute("P", randomArray<double>(vertices, 3, seed, RQ_TYPE_POINT)), "v",
                                             randomArray<T>(vertices, tuple, seed + 1));
    const RQ_CurveMeshHandle mesh(new RQ_PrimCurveMesh(c.basis, makeArray(spans), list, {}, {}, wrap));
    EXPECT_TRUE(mesh->setOrder(c.order));
    return mesh;
}

/// All values of "v" at `segments` steps of all spans, by the slow way; `weights` are rational ones.
Numbers sampledSlowly(const RQ_PrimCurveMesh &mesh, int segments, const RQ_DataArray &array, const RQ_DataArray *weights)
{
    Numbers expected;
    for (int64_t curve = 0; curve < mesh.getCurveCount(); ++curve)
    {
        const int order = mesh.getOrder(curve), step = RQbasisStep(mesh.getBasis(), order);
        const int64_t n = mesh.getVertexCount(curve);
        const int64_t spans = mesh.getWrap() ? n / step : (n - order) / step + 1;
        const int64_t samples = spans * segments + !mesh.getWrap();
        for (int64_t sample = 0; sample < samples; ++sample)
            for (int c = 0; c < array.getTupleSize(); ++c)
            {
                const int64_t span = std::min(sample / segments, spans - 1);
                Numbers values, scales;
                for (int i = 0; i < order; ++i)
                {
                    const int64_t vertex = mesh.getVertexOffset(curve) + (span * step + i) % n;
                    scales.push_back(weights ? weights->getF64(vertex) : 1.0);
                    values.push_back(array.getF64(vertex, c) * scales.back());
                }
                const double t = double(sample - span * segments) / segments;
                const double value = evaluateSpan(mesh.getBasis(), values, t);
                expected.push_back(weights ? value / evaluateSpan(mesh.getBasis(), scales, t) : value);
            }
    }
    return expected;
}

template <class T> double toleranceOf(const Numbers &values)
{
    double largest = 1.0;
    for (const double value : values)
        largest = std::max(largest, std::abs(value));
    if (std::is_integral_v<T>)
        return 0.5 + 1e-9;
    return largest * (std::is_same_v<T, double> ? 1e-13 : std::is_same_v<T, float> ? 2e-6 : 2e-3);
}
}  // namespace

TEST(Curves, OfEveryBasisAreWhatTheSlowWayGives)
{
    int seed = 0;
    for (const CurveCase &c : kCurveCases)
        for (const bool wrap : {false, true})
            for (const int tuple : {1, 2, 3, 4, 5})
                forEachType(RQ_NumericTestTypes(), [&](auto tag) {
                    using T = decltype(tag);
                    SCOPED_TRACE(testing::Message()
                                 << RQbasis(c.basis) << " order " << c.order << " wrap " << wrap << " tuple " << tuple
                                 << " storage " << RQstorage(RQstorageOf<T>) << " seed " << ++seed);
                    if (c.order > 4 && tuple != 3)
                        return;
                    const RQ_CurveMeshHandle mesh = randomCurves<T>(c, wrap, {1, 3, 2}, tuple, seed);
                    const RQ_CurveMeshHandle linear = mesh->refineToLinear(nullptr, 5.0);
                    ASSERT_TRUE(linear && linear->validate());
                    EXPECT_EQ(linear->getBasis(), RQ_BASIS_LINEAR);
                    EXPECT_EQ(linear->getWrap(), wrap);
                    const RQ_DataArrayHandle found = linear->getVertex()->get("v", 0);
                    EXPECT_EQ(found->getStorage(), RQstorageOf<T>);
                    const Numbers expected = sampledSlowly(*mesh, 5, *mesh->getVertex()->get("v", 0), nullptr);
                    ASSERT_EQ(found->entries() * tuple, int64_t(expected.size()));
                    const double tolerance = toleranceOf<T>(expected);
                    const double least = std::is_integral_v<T> ? double(std::numeric_limits<T>::min()) : -1e300;
                    const double greatest = std::is_integral_v<T> ? double(std::numeric_limits<T>::max()) : 1e300;
                    for (size_t i = 0; i < expected.size(); ++i)
                        ASSERT_NEAR(found->getF64(int64_t(i) / tuple, int(i) % tuple),
                                    std::clamp(expected[i], least, greatest), tolerance)
                            << i;
                });
}

TEST(Curves, OfVaryingOrdersAndKnotsFollowDeBoor)
{
    for (const bool wrap : {false, true})
    {
        SCOPED_TRACE(wrap);
        const std::vector<int> orders = {4, 2, 3, 7}, counts = {6, 5, 4, 9};
        const RQ_AttributeListHandle list = oneAttribute("P", randomArray<double>(24, 3, wrap, RQ_TYPE_POINT));
        const RQ_CurveMeshHandle mesh(new RQ_PrimCurveMesh(RQ_BASIS_BSPLINE, makeArray(counts), list, {}, {}, wrap));
        ASSERT_TRUE(mesh->setOrder(makeArray(orders)));
        std::vector<double> knots;
        std::vector<size_t> firstKnots;
        for (size_t curve = 0; curve < orders.size(); ++curve)
        {
            EXPECT_EQ(mesh->knotOffset(int64_t(curve)), int64_t(knots.size()));
            firstKnots.push_back(knots.size());
            const int count = counts[curve] + (wrap ? 2 * orders[curve] - 1 : orders[curve]);
            for (int i = 0; i < count; ++i)
                knots.push_back(i % 5 == 3 && i > 0 ? knots.back() : 0.25 * i * i);  // some of them double
        }
        ASSERT_TRUE(mesh->setKnots(makeArray(knots)));
        const RQ_DataArrayHandle found = mesh->refineToLinear(nullptr, 3.0)->getVertex()->get("P", 0);
        int64_t row = 0;
        for (size_t curve = 0; curve < orders.size(); ++curve)
        {
            const double *own = knots.data() + firstKnots[curve];
            const int degree = orders[curve] - 1, first = int(mesh->getVertexOffset(int64_t(curve)));
            const int spans = wrap ? counts[curve] : counts[curve] - degree;
            int last = spans - 1;
            while (!(own[last + degree] < own[last + degree + 1]))
                --last;
            for (int span = 0; span <= last; ++span)
                for (int i = 0; own[span + degree] < own[span + degree + 1] && i < 3 + (span == last && !wrap); ++i, ++row)
                {
                    const double u = own[span + degree] + (own[span + degree + 1] - own[span + degree]) * i / 3.0;
                    for (int axis = 0; axis < 3; ++axis)
                    {
                        Numbers values;
                        for (int k = 0; k <= degree; ++k)
                            values.push_back(list->get(0)->getF64(first + (span + k) % counts[curve], axis));
                        ASSERT_NEAR(found->getF64(row, axis), deBoor(values, own + span, u), 1e-11) << curve << " " << row;
                    }
                }
        }
        EXPECT_EQ(row, found->entries());
    }
}

TEST(Curves, OfRationalWeightsAreCircles)
{
    const double h = std::sqrt(0.5);
    const std::vector<double> corners = {1, 0, 0, 1, 1, 0, 0, 1, 0, -1, 1, 0, -1, 0, 0, -1, -1, 0, 0, -1, 0, 1, -1, 0};
    const std::vector<double> weights = {1, h, 1, h, 1, h, 1, h};
    RQ_AttributeListHandle list = oneAttribute("P", makeArray(corners, 3, RQ_TYPE_POINT));
    list = with(with(list, "Pw", makeArray(weights)), "v", randomArray<double>(8, 2, 3));
    const RQ_CurveMeshHandle bezier(new RQ_PrimCurveMesh(RQ_BASIS_BEZIER, integers({8}), list, {}, {}, true));
    const RQ_CurveMeshHandle spline(
        new RQ_PrimCurveMesh(RQ_BASIS_BSPLINE, integers({9}), list->createIndirect(integers({0, 1, 2, 3, 4, 5, 6, 7, 0}))));
    ASSERT_TRUE(bezier->setOrder(3) && spline->setOrder(3));
    ASSERT_TRUE(spline->setKnots(makeArray<double>({0, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 4})));
    for (const RQ_CurveMeshHandle &mesh : {bezier, spline})
    {
        const RQ_CurveMeshHandle linear = mesh->refineToLinear(nullptr, 64.0);
        EXPECT_EQ(linear->getVertexCount(), mesh == bezier ? 256 : 257);
        const RQ_DataArrayHandle &found = linear->getVertex()->get("P", 0);
        for (int64_t i = 0; i < found->entries(); ++i)
            ASSERT_NEAR(vectorOf(*found, i).length(), 1.0, 1e-15) << i;
    }
    const RQ_CurveMeshHandle linear = bezier->refineToLinear(nullptr, 7.0);
    const Numbers expected = sampledSlowly(*bezier, 7, *list->get("v"), list->get("Pw").get());
    for (size_t i = 0; i < expected.size(); ++i)
        ASSERT_NEAR(valuesOf(linear->getVertex()->get("v", 0))[i], expected[i], 1e-12);
    EXPECT_NEAR(linear->getCurve(0)->curveLength(), 56.0 * std::sin(M_PI / 28.0), 0.1);
}

TEST(Curves, ThroughTheirPointsGoThroughThem)
{
    for (const RQ_Parameterization spread :
         {RQ_PARAMETERIZATION_UNIFORM, RQ_PARAMETERIZATION_CHORD_LENGTH, RQ_PARAMETERIZATION_CENTRIPETAL})
        for (const bool wrap : {false, true})
        {
            // Two vertices meet.
            std::vector<float> place = valuesOf<float>(randomArray<float>(7, 3, 5));
            std::copy_n(place.begin() + 6, 3, place.begin() + 9);
            for (float &value : place)
                value += 0.1f;
            const RQ_CurveMeshHandle mesh(new RQ_PrimCurveMesh(RQ_BASIS_CATMULLROM, integers({7}),
                                                               oneAttribute("P", positions(place)), {}, {}, wrap,
                                                               RQ_INDEXING_AUTO, true, false, spread));
            const RQ_DataArrayHandle found = mesh->refineToLinear(nullptr, 4.0)->getVertex()->get("P", 0);
            ASSERT_EQ(found->entries(), wrap ? 28 : 17);
            const RQ_CurveMeshHandle alone(new RQ_PrimCurveMesh(*mesh->getCurve(0)));
            EXPECT_TRUE(alone->refineToLinear(nullptr, 4.0)->getVertex()->get("P")->isEqual(*found));
            for (int i = 0; i < (wrap ? 7 : 5); ++i)
                for (int axis = 0; axis < 3; ++axis)
                    EXPECT_EQ(found->getF32(4 * i, axis), place[size_t((i + 1) % 7 * 3 + axis)]) << spread << " " << i;
        }
}

TEST(Curves, AreTheSameBitsForAnyNumberOfThreads)
{
    const RQ_CurveMeshHandle mesh = randomCurves<float>({RQ_BASIS_BSPLINE, 4}, false, std::vector<int>(3000, 13), 3, 9);
    const auto bits = [&] { return valuesOf<float>(mesh->refineToLinear(nullptr, 20.0)->getVertex()->get("v", 0)); };
    const std::vector<float> parallel = bits();
    const BAS_Threads::Limit limit(1);
    EXPECT_EQ(bits(), parallel);
}

TEST(Curves, CarryEveryAttributeAndFaceSet)
{
    // Text comes from the vertex of the greatest weight, wide integers too; a second motion segment moves "P" alone.
    const std::vector<BAS_StringHolder> names = {"a", "b", "c", "d", "e", "f", "g"};
    const int64_t wide = (int64_t(1) << 60) + 1;
    RQ_AttributeListHandle vertex = oneAttribute("name", RQ_DAIndexedString::createIndexed(names.data(), 7));
    vertex = with(vertex, "wide", makeArray<int64_t>({wide, wide + 1, wide + 2, wide + 3, wide + 4, wide + 5, wide + 6}));
    vertex = with(vertex, "width", makeArray<float>({1, 1, 1, 1, 1, 1, 1}));
    const RQ_DataArrayHandle moving[] = {randomArray<float>(7, 3, 1), randomArray<float>(7, 3, 2)};
    vertex = vertex->addAttribute("P", moving, 2, false);
    const RQ_CurveMeshHandle mesh(new RQ_PrimCurveMesh(RQ_BASIS_BEZIER, integers({7}), vertex,
                                                       oneAttribute("id", integers({5})), oneAttribute("d", integers({9}))));
    const RQ_FaceSetHandle set(new RQ_FaceSet);
    set->addFace(0);
    mesh->addFaceSet("set", set);
    const RQ_CurveMeshHandle linear = mesh->refineToLinear(nullptr, 2.0);
    ASSERT_TRUE(linear->validate());
    const RQ_AttributeList &list = *linear->getVertex();
    std::string joined;
    for (int64_t i = 0; i < 5; ++i)
    {
        joined += list.get("name")->getS(i).view();
        EXPECT_EQ(list.get("wide")->getI64(i), wide + (joined[size_t(i)] - 'a'));
        EXPECT_EQ(list.get("width")->getF32(i), 1.0f);
    }
    EXPECT_EQ(joined, "abdeg");
    EXPECT_EQ(linear->getMotionSegments(), 2);
    EXPECT_EQ(list.get("width", 1), list.get("width", 0));
    EXPECT_NE(list.get("P", 1), list.get("P", 0));
    EXPECT_EQ(linear->getUniform(), mesh->getUniform());
    EXPECT_EQ(linear->faceSetMap(), mesh->faceSetMap());

    const RQ_CurveHandle curve = mesh->getCurve(0);
    EXPECT_EQ(curve->getUniform()->get("id")->getI32(0) + curve->getUniform()->get("d")->getI32(0), 14);
    EXPECT_EQ(curve->getVertex()->get("uv")->getF32(6, 0), 1.0f);
    const RQ_CurveMeshHandle expanded = mesh->expandUniformVarying();
    EXPECT_EQ(valuesOf(expanded->getVertex()->get("id")), Numbers(7, 5.0));
    EXPECT_FALSE(expanded->getUniform());
}

TEST(Curves, RefineAsTheirBasisWants)
{
    RQ_RefineCollect sink;
    EXPECT_FALSE(RQ_CurveMeshHandle(new RQ_PrimCurveMesh(RQ_BASIS_LINEAR, integers({}), {}))->refine(sink, nullptr));
    EXPECT_FALSE(RQ_CurveMeshHandle(new RQ_PrimCurveMesh(RQ_BASIS_BEZIER, integers({}), {}))->refine(sink, nullptr));
    EXPECT_EQ(sink.entries(), 0);

    const RQ_CurveMeshHandle mesh = randomCurves<float>({RQ_BASIS_BEZIER, 4}, false, {2, 1, 3}, 1, 4);
    BAS_Mat4d matrix;
    matrix[3][1] = 5.0;
    mesh->setPrimitiveTransform(new RQ_Transform(&matrix, 1));
    RQ_RefineParms parms;
    parms.setLOD(0.21);
    EXPECT_TRUE(mesh->refine(sink, &parms));
    ASSERT_EQ(sink.entries(), 1);
    const RQ_PrimitiveHandle linear = sink.getPrim(0);
    EXPECT_EQ(linear->getPrimitiveTransform(), mesh->getPrimitiveTransform());
    EXPECT_EQ(linear->getVertexAttributes()->get("P")->entries(), 5 * 6 + 3);
    EXPECT_TRUE(mesh->viewportRefineOptions().changesWithLOD());
    EXPECT_FALSE(linear->viewportRefineOptions().changesWithLOD());
    RQ_RefineCollect curves;
    EXPECT_TRUE(linear->refine(curves, nullptr));
    EXPECT_EQ(curves.entries(), 3);
    double length = 0.0;
    for (int64_t i = 0; i < 3; ++i)
    {
        EXPECT_EQ(curves.getPrim(i)->getPrimitiveTransform(), mesh->getPrimitiveTransform());
        length += curves.getPrim(i)->computePerimeter(0);
    }
    EXPECT_NEAR(linear->computePerimeter(0), length, 1e-9);
    EXPECT_NEAR(mesh->computePerimeter(0), length, 0.1 * length);
}

TEST(Curves, AreCutNoFinerThanMemoryLasts)
{
    RQ_RefineParms endless;
    endless.setLOD(1e9);
    const struct
    {
        int64_t curves, segments;
    } cases[] = {{1, 16384}, {10000, 6710}, {4000000, 20}};
    for (const auto &c : cases)
    {
        const RQ_DataArrayHandle counts(new RQ_DAConstantValue<int64_t>(c.curves, 4));
        const RQ_CurveMeshHandle mesh(new RQ_PrimCurveMesh(RQ_BASIS_BEZIER, counts, nullptr));
        EXPECT_EQ(mesh->refineToLinear(&endless, 20.0)->getVertexCount(), c.curves * (c.segments + 1));
        EXPECT_EQ(mesh->refineToLinear(nullptr, 20.0)->getVertexCount(), c.curves * 21);
    }
}

TEST(Curves, BoundsHoldTheCurve)
{
    int seed = 0;
    for (const CurveCase &c : kCurveCases)
        for (const bool wrap : {false, true})
        {
            SCOPED_TRACE(testing::Message() << RQbasis(c.basis) << c.order << wrap);
            const RQ_CurveMeshHandle doubles = randomCurves<float>(c, wrap, {4, 9, 5}, 3, ++seed);
            const RQ_AttributeListHandle list = oneAttribute("P", doubles->getVertex()->get("v"));
            const RQ_CurveMeshHandle floats(new RQ_PrimCurveMesh(*doubles, list, {}, {}));
            BAS_BoundingBox hull, own, packed, floatsOwn;
            doubles->enlargeBounds(&hull, 1);
            doubles->refineToLinear(nullptr, 9.0)->enlargeBounds(&own, 1);
            floats->enlargeBounds(&packed, 1);
            floats->refineToLinear(nullptr, 9.0)->enlargeBounds(&floatsOwn, 1);
            // The vertices of the hull are rounded, and so are the points.
            hull.expand(1e-5f * hull.size().length());
            packed.expand(1e-5f * packed.size().length());
            own.enlarge(hull);
            floatsOwn.enlarge(packed);
            EXPECT_EQ(own, hull);
            EXPECT_EQ(floatsOwn, packed);
        }

    // Of packed positions, as of others, for every rest of a run.
    for (int i = 0; i < 40; ++i)
    {
        SCOPED_TRACE(i);
        const RQ_CurveMeshHandle given =
            randomCurves<float>({RQ_BASIS_CATMULLROM, 4}, i % 2, std::vector<int>(3, 3 + i / 2), 3, i);
        const RQ_DataArrayHandle values = given->getVertex()->get("v");
        const BAS_IntrusivePtr<RQ_DANumeric<double>> wide(new RQ_DANumeric<double>(values->entries(), 3));
        values->fillArray(wide->data(), 0, values->entries());
        BAS_BoundingBox packed, others;
        RQ_CurveMeshHandle(new RQ_PrimCurveMesh(*given, oneAttribute("P", values), {}, {}))->enlargeBounds(&packed, 1);
        RQ_CurveMeshHandle(new RQ_PrimCurveMesh(*given, oneAttribute("P", wide), {}, {}))->enlargeBounds(&others, 1);
        for (int axis = 0; axis < 3; ++axis)
        {
            EXPECT_NEAR(packed.minimum()[axis], others.minimum()[axis], 1e-5);
            EXPECT_NEAR(packed.maximum()[axis], others.maximum()[axis], 1e-5);
        }
    }
}

namespace
{
double distanceToPieces(const BAS_Vec3d &point, const RQ_DataArray &pieces)
{
    double least = 1e300;
    for (int64_t i = 0; i + 1 < pieces.entries(); ++i)
    {
        const BAS_Vec3d from = vectorOf(pieces, i), along = vectorOf(pieces, i + 1) - from;
        const double t = along.length2() > 0.0 ? std::clamp((point - from).dot(along) / along.length2(), 0.0, 1.0) : 0.0;
        least = std::min(least, (point - from - along * t).length());
    }
    return least;
}

/// The greatest distance of 487 points a span from the pieces.
double farthestFrom(const RQ_PrimCurveMesh &mesh, const RQ_PrimCurveMesh &linear)
{
    double farthest = 0.0;
    const RQ_CurveMeshHandle fine = mesh.refineToLinear(nullptr, 487.0);
    for (int64_t curve = 0; curve < mesh.getCurveCount(); ++curve)
    {
        const RQ_DataArrayHandle pieces = linear.getCurve(curve)->getVertex()->get("P");
        const RQ_DataArrayHandle points = fine->getCurve(curve)->getVertex()->get("P");
        for (int64_t i = 0; i < points->entries(); ++i)
            farthest = std::max(farthest, distanceToPieces(vectorOf(*points, i), *pieces));
    }
    return farthest;
}
}  // namespace

TEST(Curves, WithinADistanceTakeNoMorePiecesThanEvenOnes)
{
    int seed = 0;
    for (const CurveCase &c : kCurveCases)
        for (const double distance : {5.0, 0.3})
        {
            SCOPED_TRACE(testing::Message() << RQbasis(c.basis) << c.order << " within " << distance);
            const RQ_CurveMeshHandle mesh = randomCurves<float>(c, false, {c.basis == RQ_BASIS_POWER ? 1 : 3, 1}, 1, ++seed);
            const RQ_CurveMeshHandle linear = mesh->refineToDistance(distance);
            ASSERT_TRUE(linear && linear->validate());
            EXPECT_LT(farthestFrom(*mesh, *linear), distance);
            // The most even pieces that would be fewer do not do.
            const int64_t spans = mesh->refineToLinear(nullptr, 1.0)->getVertexCount() - 2;
            const int64_t even = (linear->getVertexCount() - 3) / spans;
            EXPECT_TRUE(even < 1 || farthestFrom(*mesh, *mesh->refineToLinear(nullptr, double(even))) >= distance) << even;
        }
    const RQ_CurveMeshHandle mesh = randomCurves<float>({RQ_BASIS_BEZIER, 4}, false, {1}, 1, 1);
    for (const double distance : {0.0, -1.0, std::nan("")})
        EXPECT_FALSE(mesh->refineToDistance(distance));
    EXPECT_GT(mesh->refineToDistance(1e-300)->getVertexCount(), 1000);
}

TEST(Curves, TakeOnlyOrdersAndKnotsThatFit)
{
    struct Case
    {
        RQ_Basis basis;
        int smallest, greatest, step;
    };
    const Case cases[] = {{RQ_BASIS_LINEAR, 2, 2, 1},     {RQ_BASIS_BEZIER, 2, 31, 30}, {RQ_BASIS_BSPLINE, 2, 128, 1},
                          {RQ_BASIS_CATMULLROM, 4, 4, 1}, {RQ_BASIS_HERMITE, 4, 4, 2},  {RQ_BASIS_POWER, 2, 128, 128},
                          {RQ_BASIS_INVALID, 0, 0, 1},    {RQ_Basis(6), 0, 0, 1}};
    for (const Case &c : cases)
    {
        SCOPED_TRACE(int(c.basis));
        int smallest, greatest;
        RQ_CurveEval::orderRange(c.basis, smallest, greatest);
        EXPECT_EQ(smallest, c.smallest);
        EXPECT_EQ(greatest, c.greatest);
        EXPECT_EQ(RQbasisStep(c.basis, greatest), c.step);
        EXPECT_EQ(RQbasis(RQbasis(c.basis)), greatest > 0 ? c.basis : RQ_BASIS_INVALID);
        const RQ_CurveMeshHandle mesh(
            new RQ_PrimCurveMesh(RQ_BASIS_BEZIER, integers({4}), oneAttribute("n", integers({1, 2, 3, 4}))));
        EXPECT_FALSE(mesh->setBasis(c.basis, smallest - 1));
        EXPECT_FALSE(mesh->setBasis(c.basis, greatest + 1));
        EXPECT_FALSE(mesh->setBasis(c.basis, integers({greatest + 1})));
        EXPECT_FALSE(mesh->setBasis(c.basis, integers({greatest, greatest})));
        EXPECT_EQ(mesh->getOrder(0), 4);
        EXPECT_EQ(mesh->setBasis(c.basis, greatest), greatest > 0);
        EXPECT_EQ(mesh->setBasis(c.basis, integers({greatest})), greatest > 0);
        EXPECT_EQ(mesh->getOrder(0), std::max(greatest, greatest > 0 ? 0 : 4));
    }
    const RQ_CurveMeshHandle mesh(
        new RQ_PrimCurveMesh(RQ_BASIS_BSPLINE, integers({4}), oneAttribute("n", integers({1, 2, 3, 4}))));
    EXPECT_FALSE(mesh->setKnots(nullptr));
    EXPECT_FALSE(mesh->setKnots(makeArray<double>({0, 1, 2, 3, 4, 5, 6})));
    EXPECT_FALSE(mesh->setKnots(makeArray<double>({0, 1, 2, 3, 2, 5, 6, 7})));
    EXPECT_FALSE(mesh->setKnots(makeArray<double>({0, 1, 2, 3, std::nan(""), 5, 6, 7})));
    EXPECT_TRUE(mesh->setKnots(makeArray<double>({0, 1, 2, 3, 4, 5, 6, 7})));
    // Without a span of any length there is nothing to see.
    EXPECT_TRUE(mesh->setKnots(makeArray<double>({1, 1, 1, 1, 1, 1, 1, 1})));
    EXPECT_EQ(mesh->refineToLinear(nullptr, 4.0)->getVertexCount(), 0);
    EXPECT_TRUE(mesh->setOrder(3));
    EXPECT_FALSE(mesh->knots());
    // As many knots in all, of which the curves would have others than before.
    const RQ_CurveMeshHandle two(
        new RQ_PrimCurveMesh(RQ_BASIS_BSPLINE, integers({3, 5}), oneAttribute("n", integers(std::vector<int>(8)))));
    ASSERT_TRUE(two->setOrder(integers({2, 4})) && two->setKnots(integers({5, 6, 7, 8, 9, 0, 1, 2, 3, 4, 5, 6, 7, 8})));
    EXPECT_TRUE(two->setOrder(3));
    EXPECT_FALSE(two->knots());
}

TEST(Curves, ArePinnedAndUnpinnedToTheSameArrays)
{
    for (const bool views : {false, true})
        for (const CurveCase &c : {CurveCase{RQ_BASIS_BSPLINE, 4}, {RQ_BASIS_BSPLINE, 3}, {RQ_BASIS_CATMULLROM, 4}})
        {
            SCOPED_TRACE(testing::Message() << RQbasis(c.basis) << c.order << views);
            RQ_CurveMeshHandle mesh = randomCurves<float>(c, false, {2, 1, 4}, 3, 8);
            if (views)
                mesh = new RQ_PrimCurveMesh(*mesh, mesh->getVertex()->createSubArray(0, mesh->getVertexCount()), {}, {});
            std::vector<double> knots(size_t(mesh->getVertexCount() + 3 * c.order));
            for (int64_t i = 0, curve = 0; i < int64_t(knots.size()); curve += ++i == mesh->knotOffset(curve + 1))
                knots[size_t(i)] = double((i - mesh->knotOffset(curve)) * (i + 3));
            const bool hasKnots = c.order == 3 && mesh->setKnots(makeArray(knots));
            EXPECT_EQ(hasKnots, c.order == 3);

            const RQ_CurveMeshHandle pinned = mesh->pinCurves();
            ASSERT_TRUE(pinned->validate());
            EXPECT_EQ(pinned->pinCurves(), pinned);
            EXPECT_EQ(mesh->unpinCurves(), mesh);
            const RQ_CurveMeshHandle linear = pinned->refineToLinear(nullptr, 2.0);
            for (int64_t curve = 0; curve < 3; ++curve)
                for (const bool end : {false, true})
                {
                    const auto endOf = [&](const RQ_PrimCurveMesh &of) {
                        return vectorOf(*of.getVertex()->get("P"), of.getVertexOffset(curve + end) - end);
                    };
                    EXPECT_LT((endOf(*linear) - endOf(*mesh)).length(), 1e-12) << curve;
                }
            const RQ_CurveMeshHandle again = pinned->unpinCurves();
            ASSERT_TRUE(again->validate());
            EXPECT_EQ(again->getVertex()->get("P"), mesh->getVertex()->get("P"));
            EXPECT_EQ(again->getVertex()->get("v"), mesh->getVertex()->get("v"));
            EXPECT_EQ(again->knots(), mesh->knots());
            EXPECT_EQ(valuesOf(again->getCurveCounts()), valuesOf(mesh->getCurveCounts()));
        }
    // Real vertices are not taken for repeated ones.
    const RQ_CurveMeshHandle claimed(new RQ_PrimCurveMesh(RQ_BASIS_CATMULLROM, integers({6}),
                                                          oneAttribute("P", randomArray<float>(6, 3, 2)), {}, {}, false,
                                                          RQ_INDEXING_AUTO, false, true));
    EXPECT_EQ(claimed->unpinCurves(), claimed);
}

TEST(Curves, DegenerateOnesAreDroppedWithAWarning)
{
    static std::string warning;
    BAS_Diagnostics::setSink([](std::string_view message) { warning = message; });
    BAS_Diagnostics::setVerboseLevel(1);
    struct Case
    {
        RQ_Basis basis;
        bool wrap;
        std::vector<int> counts, kept;  // the latter by number
    };
    const Case cases[] = {
        {RQ_BASIS_LINEAR, false, {1, 2, 0, 3}, {1, 3}}, {RQ_BASIS_LINEAR, true, {2, 3}, {1}},
        {RQ_BASIS_BEZIER, false, {7, 6, 4, 3}, {0, 2}}, {RQ_BASIS_BEZIER, true, {6, 7, 3}, {0, 2}},
        {RQ_BASIS_BSPLINE, false, {3, 4, 9}, {1, 2}},   {RQ_BASIS_HERMITE, true, {4}, {0}},
    };
    for (const Case &c : cases)
    {
        SCOPED_TRACE(testing::Message() << RQbasis(c.basis) << c.wrap);
        const int vertices = std::accumulate(c.counts.begin(), c.counts.end(), 0);
        std::vector<int> numbers(c.counts.size());
        std::iota(numbers.begin(), numbers.end(), 0);
        const RQ_CurveMeshHandle mesh(new RQ_PrimCurveMesh(c.basis, integers(c.counts),
                                                           oneAttribute("n", countingArray<int>(vertices, 1)),
                                                           oneAttribute("curve", integers(numbers)), {}, c.wrap));
        const RQ_FaceSetHandle set(new RQ_FaceSet);
        set->addFace(c.kept.back());
        mesh->addFaceSet("last", set);
        const RQ_CurveMeshHandle kept = mesh->removeDegenerate();
        ASSERT_TRUE(kept->validate());
        EXPECT_EQ(kept == mesh, c.kept.size() == c.counts.size());
        EXPECT_EQ(valuesOf(kept->getUniform()->get("curve")), Numbers(c.kept.begin(), c.kept.end()));
        EXPECT_EQ(*kept->faceSetMap()->find("last")->begin(), int64_t(c.kept.size()) - 1);
        for (size_t i = 0; i < c.kept.size(); ++i)
            EXPECT_EQ(kept->getVertex()->get("n")->getI32(kept->getVertexOffset(int64_t(i))),
                      mesh->getVertexOffset(c.kept[i]) % 100);
    }
    EXPECT_EQ(warning, "1 degenerate curves detected (3 total)");
    BAS_Diagnostics::setSink(nullptr);
    BAS_Diagnostics::setVerboseLevel(0);
}

TEST(Curves, AreBuiltOnlyOfWhatFits)
{
    RQ_BuilderStatus status;
    RQ_PrimitiveBuilder builder(status);
    const RQ_AttributeListHandle four = oneAttribute("n", integers({1, 2, 3, 4}));
    const RQ_AttributeListHandle ragged = with(four, "m", integers({1, 2}));
    EXPECT_TRUE(builder.curveMesh(RQ_BASIS_BEZIER, integers({4}), four));
    EXPECT_TRUE(builder.curve(RQ_BASIS_BEZIER, four));
    EXPECT_FALSE(status.hasErrors() || status.hasWarnings());
    EXPECT_FALSE(builder.curveMesh(RQ_BASIS_BEZIER, integers({}), four));
    EXPECT_FALSE(builder.curve(RQ_BASIS_BEZIER, oneAttribute("n", integers({1, 2}))));
    EXPECT_EQ(status.warnings(), (BAS_Array<std::string>{"Curve mesh with 0 curves", "Polygon with 2 points"}));
    EXPECT_FALSE(builder.curveMesh(RQ_BASIS_BEZIER, integers({5}), four));
    EXPECT_FALSE(builder.curveMesh(RQ_BASIS_BEZIER, integers({-1, 5}), four));
    EXPECT_FALSE(builder.curveMesh(RQ_BASIS_INVALID, integers({4}), four));
    EXPECT_FALSE(builder.curve(RQ_BASIS_BEZIER, ragged));
    EXPECT_FALSE(builder.curveMesh(RQ_BASIS_LINEAR, makeArray(std::vector<int64_t>{int64_t(1) << 62}),
                                   oneAttribute("n", integers({}))));
    EXPECT_EQ(status.errors(), (BAS_Array<std::string>{"Curve mesh: vertex attribute n has 4 entries, expected 5",
                                                       "Curve mesh: curve 0 has -1 vertices", "Curve mesh: basis -1 is none",
                                                       "Curve: its attributes differ in length",
                                                       "Curve mesh: more vertices than can be numbered"}));
    EXPECT_FALSE(RQ_CurveHandle(new RQ_PrimCurve)->init(RQ_BASIS_LINEAR, four, four));
}

TEST(Curves, AreSavedWithTheirTopology)
{
    const RQ_CurveMeshHandle mesh(
        new RQ_PrimCurveMesh(RQ_BASIS_BSPLINE, integers({2, 3}), oneAttribute("n", integers({1, 2, 3, 4, 5}))));
    mesh->setOrder(integers({2, 3}));
    mesh->setKnots(makeArray<int>({0, 1, 2, 3, 0, 1, 2, 3, 4, 5}));
    std::string text;
    BAS_JSONWriter writer(text);
    EXPECT_TRUE(mesh->save(writer));
    writer.flush();
    EXPECT_EQ(text.find(R"(["CurveMesh",[2,3],"bspline",0,false,{"vertex":{"n":[)"), 0u) << text;
    EXPECT_NE(text.find(R"(}]}},{"order":[2,3],"knots":[0,1,2,3,0,1,2,3,4,5]}])"), std::string::npos) << text;
}

TEST(CurveEval, GivesWhatMeshesGive)
{
    const RQ_CurveMeshHandle mesh = randomCurves<int16_t>({RQ_BASIS_HERMITE, 4}, true, {3, 2}, 2, 6);
    const std::vector<BAS_StringHolder> names = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"};
    const RQ_AttributeListHandle list = with(mesh->getVertex(), "name", RQ_DAIndexedString::createIndexed(names.data(), 10));
    const RQ_CurveMeshHandle linear =
        RQ_CurveMeshHandle(new RQ_PrimCurveMesh(*mesh, list, {}, {}))->refineToLinear(nullptr, 5.0);
    RQ_CurveEval eval(RQ_BASIS_HERMITE, true);
    EXPECT_EQ(eval.pointCount(6), 0);
    ASSERT_TRUE(eval.preCompute(5));
    EXPECT_TRUE(eval.validCount(4, 4) && !eval.validCount(5, 4) && !eval.validCount(2, 4) &&
                eval.validCount(127, 128) == false);
    ASSERT_EQ(eval.pointCount(4), 10);
    const BAS_Array<RQ_DataArrayHandle> arrays = RQ_CurveEval::allocateNumericArrays(*list, 10);
    ASSERT_TRUE(eval.refineToNumeric(*list, 6, 4, arrays, 0));
    EXPECT_FALSE(eval.refineToNumeric(*list, 6, 5, arrays, 0));
    EXPECT_FALSE(eval.refineToNumeric(*list, 6, 4, arrays, 1));
    const RQ_AttributeListHandle curve = eval.copyToAttributes(*list, 6, 4, arrays);
    for (const char *name : {"P", "v", "name"})
        EXPECT_TRUE(curve->get(name)->isEqual(*linear->getVertex()->createSubArray(15, 10)->get(name))) << name;
}
