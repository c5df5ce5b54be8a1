#include <io/detail/RQGDetail.h>

#include <io/detail/RQGAttribute.h>
#include <io/detail/RQGGroup.h>
#include <io/detail/RQGNames.h>
#include <io/detail/RQGPrimitives.h>

namespace rq::io
{
namespace
{
/// Builds a detail from the members of a map.
class DetailReader
{
public:
    DetailReader(RQGInput &input, const RQGMap &members, MOD_Edit &edit) : input_(input), members_(members), edit_(edit) {}

    bool read();

private:
    bool readPoints();
    bool countPoints(JSONText attribute, int64_t &points);

    // Call `visit(JSONText)` with the entries of the list that a map has for an owner.
    template <class Visit> bool forEachOf(const RQGMap &owners, ELM_Owner owner, Visit &&visit)
    {
        const JSONText list = owners.find(kRQGOwners[owner]);
        return !list || (list.isArray() ? list.forEach(visit) : input_.failAt(list, "a list"));
    }

    RQGInput &input_;
    const RQGMap &members_;
    MOD_Edit &edit_;
    RQGMap attributes_, groups_;  // by owner
};

bool DetailReader::read()
{
    const JSONText attributes = members_.find("attributes"), groups = members_.find("groups");
    const JSONText primitives = members_.find("primitives");
    if ((attributes && !attributes_.open(input_, attributes)) || (groups && !groups_.open(input_, groups)) ||
        !readPoints() || (primitives && !readPrimitives(input_, primitives, edit_)))
        return false;
    bool good = true;
    for (int i = 0; good && i < ELM_OWNERS; ++i)
    {
        const ELM_Owner owner = ELM_Owner(i);
        good = forEachOf(attributes_, owner, [&](JSONText map) { return readAttribute(input_, map, owner, edit_); }) &&
               (owner == ELM_OWNER_DETAIL ||
                forEachOf(groups_, owner, [&](JSONText map) { return readGroup(input_, map, owner, edit_); }));
    }
    attributes_.close();
    groups_.close();
    members_.close();
    return good;
}

// There are as many points as the file has positions.
bool DetailReader::readPoints()
{
    int64_t points = 0, told = 0;
    if (!forEachOf(attributes_, ELM_OWNER_POINT, [&](JSONText map) { return countPoints(map, points); }) ||
        !members_.read("points", told))
        return false;
    if (members_.has("points") && told != points)
        return input_.fail(members_.find("points"), fmt::format("expected positions of {} points, found {}", told, points));
    return edit_.appendPoints(points) || input_.fail(members_.at(), edit_.message());
}

bool DetailReader::countPoints(JSONText attribute, int64_t &points)
{
    RQGMap map;
    RQGRow row;
    std::string name;
    if (!map.open(input_, attribute) || !map.read("name", name))
        return false;
    const JSONText scope = map.find("scope"), values = map.find("values");
    if (name != ELM_POSITION_NAME || (scope && scope.raw() != kRQGScopes[ELM_SCOPE_PUBLIC]))
        return true;
    if (!values)
        return input_.fail(attribute, "expected values of \"P\", found none");
    const bool good = row.open(input_, values);
    points = row.size() / 3;
    return good;
}
}  // namespace

void writeDetail(RQGOutput &output, const MSH_Detail &detail)
{
    const auto writeOwners = [&](const char *name, auto isEmpty, auto writeAll) {
        output.key(name);
        output.json().beginMap();
        for (int owner = 0; owner < ELM_OWNERS; ++owner)
        {
            if (isEmpty(ELM_Owner(owner)))
                continue;
            output.key(kRQGOwners[owner]);
            output.json().beginArray();
            writeAll(ELM_Owner(owner));
            output.json().endArray();
        }
        output.json().endMap();
    };
    output.json().writeKeyInt("points", detail.pointCount());
    writePrimitives(output, detail);
    writeOwners(
        "attributes", [&](ELM_Owner owner) { return detail.attributes(owner).size() == 0; },
        [&](ELM_Owner owner) {
            for (const ELM_Attribute &attribute : detail.attributes(owner))
                writeAttribute(output, attribute);
        });
    writeOwners(
        "groups", [&](ELM_Owner owner) { return detail.groups(owner).size() == 0; },
        [&](ELM_Owner owner) {
            for (int64_t i = 0; i < detail.groups(owner).size(); ++i)
                writeGroup(output, detail.groups(owner)[i]);
        });
}

bool readDetail(RQGInput &input, const RQGMap &members, MOD_DetailHandle &detail)
{
    MOD_Edit edit(detail);
    input.depth = 1;
    if (!DetailReader(input, members, edit).read())
        return false;
    if (input.depth > kRQGDeepest)
        return input.fail(members.at(), fmt::format("expected details at most {} levels deep, found more", kRQGDeepest));
    return edit.commit() ? true : input.fail(members.at(), edit.message());
}
}  // namespace rq::io
