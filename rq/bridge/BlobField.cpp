#include <rq/bridge/detail/BlobField.h>

#include <cmath>
#include <limits>

#include <boost/container/small_vector.hpp>

namespace
{
using rq::BlockValues;
using rq::Extent;
using rq::Index3;

/// The samples of a block along x.
using Row = std::array<double, rq::kBlockSamples>;

// Cells along a side that no option goes beyond: blocks have numbers of 17 bits.
constexpr int64_t kMostDivisions = int64_t(1) << 20;
constexpr double kLeastDensity = 2.0, kGreatestDensity = 1e6;

void addTo(double &sum, double other) { sum += other; }
void raiseTo(double &most, double other) { most = std::max(most, other); }
void lowerTo(double &least, double other) { least = std::min(least, other); }

template <void (*change)(double &, double), class Values> void changeAll(Values &values, const Values &others)
{
    for (size_t i = 0; i < values.size(); ++i)
        change(values[i], others[i]);
}
template <size_t n> using Numbers = std::array<double, n>;
template <size_t n> void addTo(Numbers<n> &sum, const Numbers<n> &other) { changeAll<addTo>(sum, other); }
template <size_t n> void raiseTo(Numbers<n> &most, const Numbers<n> &other) { changeAll<raiseTo>(most, other); }
template <size_t n> void lowerTo(Numbers<n> &least, const Numbers<n> &other) { changeAll<lowerTo>(least, other); }

/// What an expression has gathered so far.
template <class Value> struct Gathered
{
    Value value{};
    int32_t children = 0;

    void take(const Value &child, int32_t operation)
    {
        if (children++ == 0)
            value = child;
        else if (operation == MSH_BLOB_MAXIMUM)
            raiseTo(value, child);
        else if (operation == MSH_BLOB_MINIMUM)
            lowerTo(value, child);
        else
            addTo(value, child);
    }
};

/// Where a number is among increasing ones, -1 when it is not.
int64_t find(rq::LevelField::Parts parts, int32_t number)
{
    const auto found = std::lower_bound(parts.begin(), parts.end(), number);
    return found != parts.end() && *found == number ? found - parts.begin() : -1;
}

bool overlap(const rq::SampleBox &a, const rq::SampleBox &b)
{
    bool both = true;
    for (size_t axis = 0; axis < 3; ++axis)
        both = both && a.first[axis] <= b.last[axis] && b.first[axis] <= a.last[axis];
    return both;
}

bool contains(const rq::SampleBox &outer, const rq::SampleBox &inner)
{
    bool all = true;
    for (size_t axis = 0; axis < 3; ++axis)
        all = all && outer.first[axis] <= inner.first[axis] && inner.last[axis] <= outer.last[axis];
    return all;
}
}  // namespace

rq::BlobField::BlobField(const BlobTree &tree, const RQ_TransformArray &placements) : nodes_(tree.nodes.size())
{
    low_ = BAS_Vec3d(std::numeric_limits<double>::infinity());
    high_ = -low_;
    for (size_t i = 0; i < nodes_.size(); ++i)
    {
        const BlobNode &node = tree.nodes[i];
        if (node.isExpression())
        {
            isSum_ = isSum_ && i + 1 == nodes_.size();
            nodes_[i].operation = node.operation;
            nodes_[i].children = int32_t(node.children.size());
            for (const int32_t child : node.children)
                nodes_[size_t(child)].parents.push_back(int32_t(i));
            continue;
        }
        BAS_Mat4d placement;
        placements.getMatrix(placement, node.placement, 0);
        const BlobShape blob(node.type, node.blob, placement);
        nodes_[i].shape = int32_t(shapes_.size());
        shapes_.push_back({blob});
        if (!blob.isThere() || blob.weight() <= 0.0)
            continue;
        for (int axis = 0; axis < 3; ++axis)
        {
            low_[axis] = std::min(low_[axis], blob.middle()[axis] - blob.halfSize()[axis]);
            high_[axis] = std::max(high_[axis], blob.middle()[axis] + blob.halfSize()[axis]);
        }
    }
}

bool rq::BlobField::layGrid(double density, int64_t mostDivisions)
{
    double logarithms = 0.0, count = 0.0;
    for (const Shape &shape : shapes_)
        if (shape.blob.isThere() && shape.blob.weight() > 0.0)
        {
            logarithms += std::log(shape.blob.thickness());
            count += 1.0;
        }
    if (count == 0.0)
        return false;
    const BAS_Vec3d size = high_ - low_;
    const double wanted =
        std::exp(logarithms / count) / (density > kLeastDensity ? std::min(density, kGreatestDensity) : kLeastDensity);
    const double most = double(std::clamp<int64_t>(mostDivisions, int64_t(kLeastDensity), kMostDivisions));
    setGrid(std::max(wanted, std::max({size.x, size.y, size.z}) / most));
    return true;
}

bool rq::BlobField::coarsen()
{
    if (*std::max_element(grid_.cells.begin(), grid_.cells.end()) <= kBlockCells)
        return false;
    setGrid(2.0 * grid_.cell);
    return true;
}

// One layer of samples around all blobs makes the surface closed.
void rq::BlobField::setGrid(double cell)
{
    grid_.cell = cell;
    grid_.origin = low_ - BAS_Vec3d(cell);
    for (int axis = 0; axis < 3; ++axis)
        grid_.cells[size_t(axis)] = int32_t(std::ceil((high_[axis] - low_[axis]) / cell)) + 2;
    for (Shape &shape : shapes_)
    {
        shape.middle = shape.blob.middle() - grid_.origin;
        if (!shape.blob.isThere())
            continue;
        for (size_t axis = 0; axis < 3; ++axis)
        {
            const double last = double(grid_.cells[axis]) - 1.0, middle = shape.middle[int(axis)],
                         around = shape.blob.halfSize()[int(axis)];
            shape.reach.first[axis] = int32_t(std::clamp(std::ceil((middle - around) / cell), 1.0, last + 1.0));
            shape.reach.last[axis] = int32_t(std::clamp(std::floor((middle + around) / cell), 0.0, last));
        }
    }
}

std::vector<int32_t> rq::BlobField::allParts() const
{
    std::vector<int32_t> parts;
    for (size_t i = 0; i < nodes_.size(); ++i)
        if (nodes_[i].shape < 0 || shapes_[size_t(nodes_[i].shape)].blob.isThere())
            parts.push_back(int32_t(i));
    return parts;
}

// Values go from children to parents, which come behind them; the last node is the whole, and the only expression mostly.
template <class Value, class ValueOf> Value rq::BlobField::evaluate(Parts parts, ValueOf &&valueOf) const
{
    if (isSum_)
    {
        Gathered<Value> sum;
        for (const int32_t part : parts.first(parts.size() - 1))
        {
            Value value;
            valueOf(shapes_[size_t(nodes_[size_t(part)].shape)], value);
            sum.take(value, MSH_BLOB_SUM);
        }
        return sum.value;
    }
    boost::container::small_vector<int32_t, 8> list;
    for (const int32_t part : parts)
        if (nodes_[size_t(part)].shape < 0)
            list.push_back(part);
    const Parts expressions(list.data(), list.size());
    boost::container::small_vector<Gathered<Value>, 1> gathered(expressions.size());
    Value value{};
    for (const int32_t part : parts)
    {
        const Node &node = nodes_[size_t(part)];
        if (node.shape >= 0)
            valueOf(shapes_[size_t(node.shape)], value);
        else
        {
            Gathered<Value> &own = gathered[size_t(find(expressions, part))];
            if (own.children < node.children)
                own.take(Value{}, node.operation);
            value = own.value;
        }
        for (const int32_t parent : node.parents)
            gathered[size_t(find(expressions, parent))].take(value, nodes_[size_t(parent)].operation);
    }
    return value;
}

bool rq::BlobField::narrow(const SampleBox &box, Parts parts, std::vector<int32_t> &kept) const
{
    std::vector<bool> reaches(parts.size(), false);
    const size_t before = kept.size();
    for (size_t i = 0; i < parts.size(); ++i)
    {
        const Node &node = nodes_[size_t(parts[i])];
        if (node.shape >= 0 ? !overlap(box, shapes_[size_t(node.shape)].reach) : !reaches[i])
            continue;
        kept.push_back(parts[i]);
        for (const int32_t parent : node.parents)
            reaches[size_t(find(parts, parent))] = true;
    }
    if (kept.size() == before)
        return false;
    Index3 sides;
    BAS_Vec3d middle;
    for (size_t axis = 0; axis < 3; ++axis)
    {
        sides[axis] = box.last[axis] - box.first[axis];
        middle[int(axis)] = 0.5 * (double(box.first[axis]) + double(box.last[axis])) * grid_.cell;
    }
    const double radius = 0.5 * grid_.cell * std::hypot(double(sides[0]), double(sides[1]), double(sides[2]));
    const Parts seen(kept.data() + before, kept.size() - before);
    const Extent extent = evaluate<Extent>(seen, [&](const Shape &shape, Extent &value) {
        value = shape.blob.within(middle - shape.middle, radius);
        if (!contains(shape.reach, box))
            value = {std::min(value.low, 0.0), std::max(value.high, 0.0)};
    });
    // The comparisons are false for what is not a number.
    const bool isOneSided = extent.high < kLevel || extent.low > kLevel;
    if (isOneSided)
        kept.resize(before);
    return !isOneSided;
}

void rq::BlobField::addSamples(const Shape &shape, const Index3 &first, const Index3 &sides, double *values) const
{
    Index3 begin, end;
    for (size_t axis = 0; axis < 3; ++axis)
    {
        begin[axis] = std::max(shape.reach.first[axis] - first[axis], 0);
        end[axis] = std::min(shape.reach.last[axis] - first[axis] + 1, sides[axis]);
        if (begin[axis] >= end[axis])
            return;
    }
    const auto along = [&](int axis, int i) { return double(first[size_t(axis)] + i) * grid_.cell - shape.middle[axis]; };
    double x[kBlockSamples] = {};
    for (int i = begin[0]; i < end[0]; ++i)
        x[i] = along(0, i);
    for (int k = begin[2]; k < end[2]; ++k)
        for (int j = begin[1]; j < end[1]; ++j)
            shape.blob.addRow(values + (k * sides[1] + j) * sides[0] + begin[0], x + begin[0], end[0] - begin[0],
                              along(1, j), along(2, k));
}

// Row by row where there are expressions: of these there may be a million that each keep what they gather.
void rq::BlobField::sample(const Index3 &first, Parts parts, BlockValues &values) const
{
    if (isSum_)
    {
        values.fill(0.0);
        for (const int32_t part : parts.first(parts.size() - 1))
            addSamples(shapes_[size_t(nodes_[size_t(part)].shape)], first, {kBlockSamples, kBlockSamples, kBlockSamples},
                       values.data());
        for (double &value : values)
            value -= kLevel;
        return;
    }
    auto out = values.begin();
    for (int32_t k = 0; k < kBlockSamples; ++k)
        for (int32_t j = 0; j < kBlockSamples; ++j)
        {
            const Index3 start = {first[0], first[1] + j, first[2] + k};
            const Row row = evaluate<Row>(parts, [&](const Shape &shape, Row &own) {
                own.fill(0.0);
                addSamples(shape, start, {kBlockSamples, 1, 1}, own.data());
            });
            out = std::transform(row.begin(), row.end(), out, [](double value) { return value - kLevel; });
        }
}

std::array<double, 4> rq::BlobField::at(const Places &places, Parts parts) const
{
    std::array<double, 4> values =
        evaluate<std::array<double, 4>>(parts, [&](const Shape &shape, std::array<double, 4> &own) {
            Places offsets = places;
            for (BAS_Vec3d &offset : offsets)
                offset -= shape.middle;
            own = shape.blob.at(offsets);
        });
    for (double &value : values)
        value -= kLevel;
    return values;
}
