#include <io/detail/RQGPrimitives.h>

#include <algorithm>

#include <io/detail/RQGPayload.h>

namespace rq::io
{
namespace
{
/// Reads one map.
class RunReader
{
public:
    RunReader(RQGInput &input, MOD_Edit &edit, bool hasPoints) : input_(input), edit_(edit), hasPoints_(hasPoints) {}

    bool read(JSONText map);

private:
    bool readType();
    bool readCorners();
    bool readPayloads();
    bool readPayload(JSONText map);
    template <class Index> bool append(std::span<const Index> points);
    template <class Index> bool adopt(std::span<const Index> points);

    RQGInput &input_;
    MOD_Edit &edit_;
    bool hasPoints_;  // the file, not the edit
    RQGMap map_;
    RQGRow points_;
    MOD_Primitives primitives_;
    const ELM_PrimitiveDefinition *definition_ = nullptr;  // null for the reserved type
    std::vector<int32_t> corners_;
    std::vector<MSH_PayloadHandle> payloads_;
};

bool RunReader::read(JSONText map)
{
    if (!map_.open(input_, map) || !readType() || !map_.read("closed", primitives_.isClosed))
        return false;
    // A list of points may be left out: there are primitives without vertices.
    const JSONText points = map_.find("points");
    if ((points && !points_.open(input_, points)) || !readCorners() || !readPayloads())
        return false;
    map_.close();
    const size_t count = size_t(points_.size());
    if (const int32_t *narrow = points_.inPlace<int32_t>())
        return append(std::span(narrow, count));
    if (const int64_t *wide = points_.inPlace<int64_t>())
        return append(std::span(wide, count));
    std::vector<int64_t> numbers;
    return (count == 0 || input_.read(points, numbers)) && append(std::span<const int64_t>(numbers));
}

bool RunReader::readType()
{
    std::string name;
    if (!map_.read("type", name))
        return false;
    definition_ = ELM_PrimitiveFactory::find(name);
    primitives_.type = definition_ ? definition_->id : ELM_PRIMITIVE_RESERVED;
    primitives_.isClosed = isRQGClosed(primitives_.type);
    return definition_ || name == kRQGReserved ||
           input_.fail(map_.at(), fmt::format("expected a known type of primitives, found \"{}\"", name));
}

bool RunReader::readCorners()
{
    const JSONText corners = map_.find("corners");
    const int32_t most = definition_ ? definition_->mostVertices : INT32_MAX;
    if (corners)
    {
        const bool isList = corners.isArray() || corners.isMap();
        if (!(isList ? input_.read(corners, corners_) : input_.read(corners, primitives_.sameCorners)))
            return false;
    }
    // As many primitives as they have room for, or one of all points.
    else if (most > 0 && most < INT32_MAX)
        primitives_.sameCorners = most;
    else
        corners_ = {int32_t(std::min<int64_t>(points_.size(), INT32_MAX))};
    const int32_t same = primitives_.sameCorners;
    primitives_.corners = corners_;
    primitives_.count = corners_.empty() && same > 0 ? points_.size() / same : std::ssize(corners_);
    return true;
}

bool RunReader::readPayload(JSONText map)
{
    if (!definition_ || !definition_->makePayload)
        return input_.fail(map, "primitives of this type have no payload");
    const BAS_IntrusivePtr<MSH_Payload> payload(definition_->makePayload());
    payloads_.push_back(payload);
    return !map || io::readPayload(input_, map, *payload);
}

bool RunReader::readPayloads()
{
    const JSONText one = map_.find("payload"), list = map_.find("payloads"), numbers = map_.find("payload_of");
    if (list && !list.isArray())
        return input_.failAt(list, "a list of payloads");
    // Built-in types are not without.
    const bool isMade =
        !one && !list && definition_ && definition_->makePayload && definition_->id < ELM_PRIMITIVE_FIRST_FREE;
    if (((one || isMade) && !readPayload(one)) || (list && !list.forEach([this](JSONText map) { return readPayload(map); })))
        return false;
    std::vector<int32_t> numberOf;
    std::vector<MSH_PayloadHandle> distinct;
    if (numbers)
    {
        if (!input_.read(numbers, numberOf))
            return false;
        distinct.swap(payloads_);
    }
    for (const int32_t number : numberOf)
    {
        if (number < 0 || number >= std::ssize(distinct))
            return input_.fail(numbers,
                               fmt::format("expected the numbers of {} payloads, found {}", distinct.size(), number));
        payloads_.push_back(distinct[size_t(number)]);
    }
    primitives_.payloads = payloads_;
    return true;
}

// Let the host read the points of polygons where they lie, when nothing is before them.
template <class Index> bool RunReader::adopt(std::span<const Index> points)
{
    if (!input_.owner || !points_.inPlace<Index>() || primitives_.type != ELM_PRIMITIVE_POLYGON || edit_.vertexCount() > 0 ||
        points.empty() || !payloads_.empty())
        return false;
    const auto adoptWith = [&](auto corners) {
        return edit_.adoptPolygons(corners, primitives_.isClosed, ELM_Storage(RQstorageOf<Index>), points.data(),
                                   sizeof(Index), std::ssize(points), [keep = input_.owner] {});
    };
    return corners_.empty() ? adoptWith(primitives_.sameCorners) : adoptWith(std::span<const int32_t>(corners_));
}

template <class Index> bool RunReader::append(std::span<const Index> points)
{
    constexpr Index kNone = -1;
    primitives_.points = points;
    if (hasPoints_ && (adopt(points) || edit_.append(primitives_)))
        return true;
    // Vertices may have lost their points: they get one first, which then is taken away.
    if (!hasPoints_ && std::ranges::any_of(points, [](Index point) { return point != kNone; }))
        return input_.fail(points_.at(), "a vertex refers to a point, of which there are none");
    std::vector<Index> found(points.begin(), points.end());
    std::replace(found.begin(), found.end(), kNone, Index(0));
    primitives_.points = found;
    const ELM_Offset first = edit_.capacity(ELM_OWNER_VERTEX);
    bool good = edit_.append(primitives_);
    for (size_t i = 0; good && i < points.size(); ++i)
        good = points[i] != kNone || edit_.setVertexPoint(first + ELM_Offset(i), kNone);
    return good || input_.fail(map_.at(), edit_.message());
}
}  // namespace

bool readPrimitives(RQGInput &input, JSONText list, MOD_Edit &edit)
{
    if (!list.isArray())
        return input.failAt(list, "a list of primitives");
    const bool hasPoints = edit.pointCount() > 0;
    if (!hasPoints && !edit.appendPoints(1))
        return input.fail(list, edit.message());
    if (!list.forEach([&](JSONText map) { return RunReader(input, edit, hasPoints).read(map); }))
        return false;
    return hasPoints || (edit.remove(ELM_Range(ELM_OWNER_POINT, 0, 1)) && edit.compact()) ||
           input.fail(list, edit.message());
}
}  // namespace rq::io
