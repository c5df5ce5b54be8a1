#include <cstdio>
#include <string>

#include <rq/prim/PrimitiveJSON.h>

RQ_Primitive::jsonWriter::jsonWriter(BAS_JSONWriter &writer, const char *name) : writer_(writer)
{
    writer_.beginArray();
    writer_.writeString(name);
}

RQ_Primitive::jsonWriter::~jsonWriter() { writer_.endArray(); }

bool RQ_Primitive::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, className());
    record->writeString("::save() not implemented");
    return false;
}

bool RQ_Primitive::saveAttributeLists(BAS_JSONWriter &writer) const
{
    const auto saveList = [&](const char *key, const RQ_AttributeListHandle &list) {
        return !list || (writer.key(key) && list->save(writer));
    };
    const auto saveTransform = [&] {
        return !transform_ || transform_->isIdentity() || (writer.key("transform") && transform_->save(writer));
    };
    return writer.beginMap() && saveList("vertex", getVertexAttributes()) && saveList("point", getPointAttributes()) &&
           saveList("uniform", getUniformAttributes()) && saveList("constant", getDetailAttributes()) && saveTransform() &&
           writer.endMap();
}

void RQ_Primitive::dumpPrimitive() const
{
    BAS_Options options;
    options.set("int json:indentstep", int64_t(2));
    BAS_JSONWriter writer(stdout, options);
    const bool saved = save(writer);
    writer.flush();
    if (saved)
        return;

    // A class without a saved form still shows its attributes, as a text of its own.
    BAS_JSONWriter listWriter(stdout, options);
    {
        const jsonWriter record(listWriter, className());
        saveAttributeLists(*record);
    }
    listWriter.flush();
}

void RQ_Primitive::dumpAttributeLists(const char *label, bool verbose) const
{
    struct Texts
    {
        RQ_Owner owner;
        const char *title;
        const char *suffix;
        const char *missing;
    };
    constexpr Texts kTexts[] = {{RQ_OWNER_DETAIL, "Detail", ":Detail", "%s: no detail attributes\n"},
                                {RQ_OWNER_UNIFORM, "Uniform", ":Uniform", "%s: no uniform attributes\n"},
                                {RQ_OWNER_POINT, "Point", ":Point", "%s: no point attributes\n"},
                                {RQ_OWNER_VERTEX, "Vertex", ":Vertex", "%s: no vertex attributes\n"}};
    for (const Texts &texts : kTexts)
    {
        if (const RQ_AttributeListHandle &list = getAttributeList(texts.owner))
            list->dumpList(label ? (std::string(label) + texts.suffix).c_str() : texts.title, verbose);
        else
            std::printf(texts.missing, label ? label : "(null)");
    }
}
