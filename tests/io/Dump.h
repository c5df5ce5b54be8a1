#pragma once

#include <string>

#include <fmt/format.h>

#include <host/bas/JSONWriter.h>
#include <host/msh/Detail.h>

namespace tests
{
/// A detail as text: the points of all polygons, then a line for each attribute; "f 0 1 2,\npoint P real32: 0 0 0;1 0 0;\n",
/// arrays as "face uv real32: [ 0 1 ] [ ]", and dictionaries of the detail as JSON.
inline std::string dump(const MSH_Detail &detail)
{
    std::string text;
    for (int64_t i = 0; i < detail.primitiveCount(); ++i)
    {
        text += 'f';
        const auto run = detail.vertexRun(i);
        for (int64_t v = 0; v < run.count; ++v)
            text += fmt::format(" {}", detail.vertexPoint(run.start + v));
        text += ',';
    }
    constexpr const char *kStorages[] = {"uint8", "int8", "int16", "int32", "int64", "real16", "real32", "real64"};
    for (const ELM_Owner owner : {ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE})
    {
        for (const ELM_Attribute &attribute : detail.attributes(owner))
        {
            text += fmt::format("\n{} {}", owner == ELM_OWNER_POINT ? "point" : "face", attribute.name().c_str());
            if (attribute.numericTuple() || attribute.numericArrays())
                text += fmt::format(" {}:", kStorages[attribute.storage()]);
            if (const ELM_NumericTuple *numbers = attribute.numericTuple())
                numbers->visit([&](const auto &pages) {
                    for (int64_t i = 0; i < pages.size(); ++i)
                    {
                        for (int c = 0; c < pages.tupleSize(); ++c)
                            text += fmt::format(" {:g}", double(pages.value(i, c)));
                        text += ';';
                    }
                });
            if (const ELM_NumericArrays *numbers = attribute.numericArrays())
                numbers->visit([&](const auto &arrays) {
                    for (int64_t i = 0; i < arrays.size(); ++i)
                    {
                        text += " [";
                        for (const auto value : arrays.get(i))
                            text += fmt::format(" {:g}", double(value));
                        text += " ]";
                    }
                });
        }
    }
    for (const ELM_Attribute &attribute : detail.attributes(ELM_OWNER_DETAIL))
        if (attribute.dicts())
        {
            std::string json;
            BAS_JSONWriter writer(json);
            attribute.dicts()->get(0).options().save(writer);
            writer.flush();
            text += fmt::format("\ndetail {} {}", attribute.name().c_str(), json);
        }
    return text;
}
}  // namespace tests
