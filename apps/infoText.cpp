#include <apps/info.h>

#include <algorithm>
#include <numeric>

#include <fmt/format.h>

#include <host/elm/PrimitiveFactory.h>

namespace rq::app
{
namespace
{
constexpr size_t kMostPrimitives = 16;

std::string describe(const AttributeFacts &attribute)
{
    return fmt::format("    {:<10} {:<14} {:>8} x {:<3} {:<10} {:>10}  {}\n", attribute.owner, attribute.name,
                       attribute.storage, attribute.size, attribute.type, attribute.entries, attribute.className);
}

std::string describe(const HostFacts &host)
{
    std::string types;
    for (const auto &[id, count] : host.types)
        types += fmt::format("{}{} {}", types.empty() ? " (" : ", ", count, ELM_PrimitiveFactory::find(id)->label.c_str());
    std::string text = fmt::format("  host: {} points, {} vertices, {} primitives{}\n", host.points, host.vertices,
                                   host.primitives, types.empty() ? types : types + ")");
    for (const AttributeFacts &attribute : host.attributes)
        text += describe(attribute);
    for (const GroupFacts &group : host.groups)
        text += fmt::format("    {:<10} {:<14} {:>25} {:>10}\n", group.owner, group.name, "group", group.entries);
    return text;
}

std::string describe(const PrimitiveFacts &primitive)
{
    const std::string indent(size_t(2 * primitive.depth), ' ');
    std::string text = fmt::format("  {}{} ({})", indent, primitive.className, primitive.type);
    if (primitive.faces)
        text += fmt::format(": {} faces", *primitive.faces);
    if (primitive.minCount && primitive.maxCount)
        text += fmt::format(" of {} to {} vertices", *primitive.minCount, *primitive.maxCount);
    if (primitive.cells)
        text += fmt::format(": {} cells, {} vertices", *primitive.cells, primitive.vertices.value_or(0));
    if (primitive.curves)
        text += fmt::format(": {} curves, {} vertices", *primitive.curves, primitive.vertices.value_or(0));
    if (primitive.quadrics)
        text += fmt::format(": {} quadrics", *primitive.quadrics);
    if (primitive.instances)
        text += fmt::format(": {} instances", *primitive.instances);
    if (primitive.points)
        text += fmt::format("{} {} points", primitive.faces || primitive.cells ? "," : ":", *primitive.points);
    text += '\n';

    const BAS_Vec3f &low = primitive.bounds.minimum(), &high = primitive.bounds.maximum();
    text += indent + "    bounds     ";
    if (primitive.bounds.isEmpty())
        text += "none\n";
    else
        text += fmt::format("({}, {}, {}) to ({}, {}, {})\n", low.x, low.y, low.z, high.x, high.y, high.z);
    if (primitive.area && primitive.volume && primitive.perimeter)
        text += fmt::format("{}    measures   area {:.9g}, volume {:.9g}, perimeter {:.9g}\n", indent, *primitive.area,
                            *primitive.volume, *primitive.perimeter);
    text += fmt::format("{}    memory     {} bytes, {} segment{}\n", indent, primitive.memory, primitive.segments,
                        primitive.segments == 1 ? "" : "s");
    for (const AttributeFacts &attribute : primitive.attributes)
        text += indent + describe(attribute);
    return text;
}

// The sum of bytes, and of what they are.
template <size_t count>
std::string describe(const char *what, const std::array<int64_t, count> &bytes, const char *(*nameOf)(size_t))
{
    std::string text = fmt::format(fmt::runtime(what), std::accumulate(bytes.begin(), bytes.end(), int64_t(0)));
    for (size_t i = 0; i < count; ++i)
        text += fmt::format("{}{} {}", i == 0 ? " (" : ", ", nameOf(i), bytes[i]);
    return text + ")\n";
}
}  // namespace

void printText(const FileFacts &facts, FILE *stream)
{
    std::string text = facts.file + '\n' + describe(facts.host);
    const size_t shown = std::min(facts.primitives.size(), kMostPrimitives);
    for (size_t i = 0; i < shown; ++i)
        text += describe(facts.primitives[i]);
    if (shown < facts.primitives.size())
        text += fmt::format("  and {} primitives more\n", facts.primitives.size() - shown);
    text += describe("  copied: {} bytes of attribute values", facts.copied,
                     [](size_t cause) { return BAS_CopyCounter::name(BAS_CopyCause(cause)); });
    text += fmt::format("  seconds: load {:.3f}, refine {:.3f}\n", facts.loadSeconds, facts.refineSeconds);
    text += describe("  held: {} bytes", facts.held,
                     [](size_t category) { return BAS_MemoryTracker::name(BAS_MemoryCategory(category)); });
    std::fputs(text.c_str(), stream);
}
}  // namespace rq::app
