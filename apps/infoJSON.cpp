#include <apps/info.h>

#include <cmath>

#include <host/bas/JSONWriter.h>

namespace rq::app
{
namespace
{
// The keys are an interface: scripts read them.  New ones may come, none is renamed.

void writeAttribute(BAS_JSONWriter &json, const AttributeFacts &attribute, bool withOwner)
{
    json.beginMap();
    if (withOwner)
        json.writeKeyString("owner", attribute.owner);
    json.writeKeyString("name", attribute.name);
    json.writeKeyString("storage", attribute.storage);
    if (!attribute.type.empty())
        json.writeKeyString("type", attribute.type);
    json.writeKeyInt("size", attribute.size);
    json.writeKeyInt("entries", attribute.entries);
    if (!attribute.className.empty())
        json.writeKeyString("class", attribute.className);
    json.endMap();
}

void writeHost(BAS_JSONWriter &json, const HostFacts &host)
{
    json.beginMap();
    json.writeKeyInt("points", host.points);
    json.writeKeyInt("vertices", host.vertices);
    json.writeKeyInt("primitives", host.primitives);
    json.key("types");
    json.beginMap();
    for (const auto &[id, count] : host.types)
        json.writeKeyInt(std::to_string(id), count);
    json.endMap();
    json.key("attributes");
    json.beginArray();
    for (const AttributeFacts &attribute : host.attributes)
        writeAttribute(json, attribute, true);
    json.endArray();
    json.key("groups");
    json.beginArray();
    for (const GroupFacts &group : host.groups)
    {
        json.beginMap();
        json.writeKeyString("owner", group.owner);
        json.writeKeyString("name", group.name);
        json.writeKeyInt("entries", group.entries);
        json.endMap();
    }
    json.endArray();
    json.endMap();
}

void writeBounds(BAS_JSONWriter &json, const BAS_BoundingBox &bounds)
{
    if (bounds.isEmpty())
    {
        json.writeNull();
        return;
    }
    json.beginArray();
    json.uniformArray(&bounds.minimum().x, 3);
    json.uniformArray(&bounds.maximum().x, 3);
    json.endArray();
}

void writeAttributes(BAS_JSONWriter &json, const std::vector<AttributeFacts> &attributes)
{
    json.beginMap();
    for (const char *owner : {"vertex", "point", "uniform", "detail"})
    {
        json.key(owner);
        json.beginArray();
        for (const AttributeFacts &attribute : attributes)
        {
            if (attribute.owner == owner)
                writeAttribute(json, attribute, false);
        }
        json.endArray();
    }
    json.endMap();
}

void writePrimitive(BAS_JSONWriter &json, const PrimitiveFacts &primitive)
{
    const auto writeCount = [&](const char *key, const std::optional<int64_t> &count) {
        return count && json.writeKeyInt(key, *count);
    };
    const auto writeMeasure = [&](const char *key, const std::optional<double> &measure) {
        return measure && json.writeKeyReal(key, *measure);
    };

    json.beginMap();
    json.writeKeyString("class", primitive.className);
    json.writeKeyString("type", primitive.type);
    json.writeKeyInt("type_id", primitive.typeId);
    json.writeKeyInt("depth", primitive.depth);
    writeCount("faces", primitive.faces);
    writeCount("cells", primitive.cells);
    writeCount("curves", primitive.curves);
    writeCount("quadrics", primitive.quadrics);
    writeCount("instances", primitive.instances);
    writeCount("vertices", primitive.vertices);
    writeCount("points", primitive.points);
    writeCount("min_count", primitive.minCount);
    writeCount("max_count", primitive.maxCount);
    json.key("bounds");
    writeBounds(json, primitive.bounds);
    writeMeasure("area", primitive.area);
    writeMeasure("volume", primitive.volume);
    writeMeasure("perimeter", primitive.perimeter);
    json.writeKeyInt("segments", primitive.segments);
    json.writeKeyInt("memory", primitive.memory);
    json.key("attributes");
    writeAttributes(json, primitive.attributes);
    json.endMap();
}

void writeFile(BAS_JSONWriter &json, const FileFacts &facts)
{
    json.beginMap();
    json.writeKeyString("file", facts.file);
    json.key("host");
    writeHost(json, facts.host);
    json.key("primitives");
    json.beginArray();
    for (const PrimitiveFacts &primitive : facts.primitives)
        writePrimitive(json, primitive);
    json.endArray();
    json.key("copied");
    json.beginMap();
    for (size_t cause = 0; cause < facts.copied.size(); ++cause)
        json.writeKeyInt(BAS_CopyCounter::name(BAS_CopyCause(cause)), facts.copied[cause]);
    json.endMap();
    json.key("seconds");
    json.beginMap();
    json.writeKeyReal("load", facts.loadSeconds);
    json.writeKeyReal("refine", facts.refineSeconds);
    json.endMap();
    json.key("held");
    json.beginMap();
    for (size_t category = 0; category < facts.held.size(); ++category)
        json.writeKeyInt(BAS_MemoryTracker::name(BAS_MemoryCategory(category)), facts.held[category]);
    json.endMap();
    json.endMap();
}
}  // namespace

bool printJSON(const std::vector<FileFacts> &facts, bool asArray, FILE *stream)
{
    BAS_Options layout;
    layout.set("int json:indentstep", int64_t(2));
    BAS_JSONWriter json(stream, layout);
    if (asArray)
        json.beginArray();
    for (const FileFacts &file : facts)
        writeFile(json, file);
    if (asArray)
        json.endArray();
    return json.flush() && std::fputc('\n', stream) != EOF;
}
}  // namespace rq::app
