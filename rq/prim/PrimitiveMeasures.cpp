#include <rq/prim/Primitive.h>

namespace
{
// Sum a measure of all primitives that arrive.  Refuses threads, so that the sum needs no lock and its order is fixed.
template <class Measure> class MeasureRefine final : public RQ_Refine
{
public:
    explicit MeasureRefine(const Measure &measure) : measure_(measure) {}

    bool allowThreading() const override { return false; }
    void addPrimitive(const RQ_PrimitiveHandle &primitive) override
    {
        if (primitive)
            sum_ += measure_(*primitive);
    }

    double sum() const { return sum_; }

private:
    const Measure &measure_;
    double sum_ = 0.0;
};

template <class Measure> double sumOver(const RQ_Primitive &primitive, const Measure &measure)
{
    MeasureRefine sink(measure);
    primitive.refine(sink, nullptr);
    return sink.sum();
}
}  // namespace

double RQ_Primitive::computePerimeter(int segment) const
{
    return sumOver(*this, [=](const RQ_Primitive &part) { return part.computePerimeter(segment); });
}

double RQ_Primitive::computeSurfaceArea(int segment) const
{
    return sumOver(*this, [=](const RQ_Primitive &part) { return part.computeSurfaceArea(segment); });
}

double RQ_Primitive::computeVolume(const BAS_Vec3f &reference, int segment) const
{
    return sumOver(*this, [=](const RQ_Primitive &part) { return part.computeVolume(reference, segment); });
}
