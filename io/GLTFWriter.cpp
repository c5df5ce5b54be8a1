#include <io/GLTFWriter.h>

#include <algorithm>
#include <limits>

#include <io/detail/GLTFAttributes.h>
#include <io/detail/GLTFParts.h>
#include <io/detail/JSONText.h>
#include <io/detail/Tally.h>
#include <io/detail/bytes.h>
#include <io/detail/writeWhole.h>

namespace rq::io
{
namespace
{
/// Turns a detail without vacant offsets into a glTF file.
class GLTFText
{
public:
    GLTFText(const MOD_ConstDetailHandle &handle, NumberForm form, Leftovers &leftovers)
        : handle_(handle), detail_(*handle.readLock()), inText_(form == NumberForm::Text), leftovers_(leftovers),
          materials_(detail_, leftovers)
    {
        const ELM_Attribute *objects = detail_.find(ELM_OWNER_PRIMITIVE, "object");
        if (!objects || !objects->strings() || objects->tupleSize() != 1)
            return;
        objects_ = objects->strings();
        leftovers.hold(objects);
    }

    std::string write()
    {
        parts_ = partsOf(handle_, objects_, materials_, leftovers_);
        GLTFAttributes attributes(detail_, !parts_.empty(), materials_.otherColors(), leftovers_);
        writeBuffer(attributes);
        leftovers_.warnOfAttributes();
        leftovers_.warnOfGroups({ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE});
        leftovers_.warnOfElements();

        std::string text;
        BAS_JSONWriter json(text);
        json.beginMap();
        json.key("asset");
        json.beginMap();
        json.writeKeyString("version", "2.0");
        json.writeKeyString("generator", "librq");
        json.endMap();
        if (detail_.pointCount() > 0)
            writeScene(json, attributes);
        buffer_.write(json, inText_);
        json.endMap();
        json.flush();
        return inText_ ? text + '\n' : inChunks(std::move(text));
    }

private:
    void writeBuffer(GLTFAttributes &attributes)
    {
        if (detail_.pointCount() == 0)
            return;
        std::vector<int32_t> used;
        for (const GLTFPart &part : parts_)
            used.insert(used.end(), part.vertices.begin(), part.vertices.end());
        const std::vector<const ELM_Attribute *> ofCorners = attributes.ofCorners();
        const GLTFVertices vertices(detail_, ofCorners, used);
        std::vector<bool> isUsed(size_t(detail_.pointCount()), ofCorners.empty());
        for (const int32_t vertex : used)
            isUsed[size_t(detail_.vertexPoint(vertex))] = true;
        if (const int64_t unused = std::count(isUsed.begin(), isUsed.end(), false); unused > 0)
            leftovers_.warn(counted(unused, "point that nothing uses is", "points that nothing uses are") + " left out");
        attributes.write(vertices, buffer_);
        if (used.empty())
            return;
        buffer_.beginView(GLTFBuffer::Use::Index);
        for (const GLTFPart &part : parts_)
        {
            indices_.push_back(
                buffer_.add({.begin = buffer_.bytes.size(), .count = std::ssize(part.vertices), .type = GLTFType::UInt32}));
            for (const int32_t vertex : part.vertices)
                appendBytes(buffer_.bytes, vertices.number(vertex));
        }
    }

    void writeScene(BAS_JSONWriter &json, const GLTFAttributes &attributes) const
    {
        materials_.write(json);
        json.key("meshes");
        json.beginArray();
        std::vector<int> objects;
        for (size_t first = 0; first == 0 || first < parts_.size();)
        {
            size_t end = first;
            objects.push_back(parts_.empty() ? -1 : parts_[first].object);
            json.beginMap();
            json.key("primitives");
            json.beginArray();
            if (parts_.empty())
                writePrimitive(json, attributes, {}, -1);
            for (; end < parts_.size() && parts_[end].object == objects.back(); ++end)
                writePrimitive(json, attributes, parts_[end], indices_[end]);
            json.endArray();
            json.endMap();
            first = std::max<size_t>(end, 1);
        }
        json.endArray();
        writeNodes(json, objects);
    }

    static void writePrimitive(BAS_JSONWriter &json, const GLTFAttributes &attributes, const GLTFPart &part, int indices)
    {
        json.beginMap();
        attributes.writeMap(json);
        json.writeKeyInt("mode", part.mode);
        if (indices >= 0)
            json.writeKeyInt("indices", indices);
        if (part.material >= 0)
            json.writeKeyInt("material", part.material);
        json.endMap();
    }

    void writeNodes(BAS_JSONWriter &json, const std::vector<int> &objects) const
    {
        json.key("nodes");
        json.beginArray();
        for (size_t i = 0; i < objects.size(); ++i)
        {
            json.beginMap();
            json.writeKeyInt("mesh", int64_t(i));
            if (objects[i] >= 0)
                json.writeKeyString("name", toJSONText(objects_->table()[size_t(objects[i])].view()));
            json.endMap();
        }
        json.endArray();
        json.key("scenes");
        json.beginArray();
        json.beginMap();
        json.key("nodes");
        json.beginArray();
        for (size_t i = 0; i < objects.size(); ++i)
            json.writeInt(int64_t(i));
        json.endArray();
        json.endMap();
        json.endArray();
        json.writeKeyInt("scene", 0);
    }

    std::string inChunks(std::string text)
    {
        constexpr uint32_t kMagic = 0x46546C67, kVersion = 2, kJSON = 0x4E4F534A, kBinary = 0x004E4942;
        const auto fill = [](std::string &chunk, char with) { chunk.resize((chunk.size() + 3) / 4 * 4, with); };
        fill(text, ' ');
        fill(buffer_.bytes, '\0');
        const bool hasBinary = !buffer_.bytes.empty();
        const size_t size = 12 + 8 + text.size() + (hasBinary ? 8 + buffer_.bytes.size() : 0);
        if (size > std::numeric_limits<uint32_t>::max())
            return {};
        std::string file;
        file.reserve(size);
        for (const uint32_t number : {kMagic, kVersion, uint32_t(size), uint32_t(text.size()), kJSON})
            appendBytes(file, number);
        file += text;
        if (!hasBinary)
            return file;
        appendBytes(file, uint32_t(buffer_.bytes.size()));
        appendBytes(file, kBinary);
        return file += buffer_.bytes;
    }

    const MOD_ConstDetailHandle &handle_;
    const MSH_Detail &detail_;
    bool inText_;
    Leftovers &leftovers_;
    GLTFMaterials materials_;
    const ELM_StringTuple *objects_ = nullptr;
    std::vector<GLTFPart> parts_;
    std::vector<int> indices_;  // the accessor of each part
    GLTFBuffer buffer_;
};
}  // namespace

bool writeGLTF(const MOD_ConstDetailHandle &detail, NumberForm form, const std::string &name, std::string &bytes,
               Messages &messages)
{
    return writeWhole(detail, name, messages, [&](const MOD_ConstDetailHandle &whole) {
        Leftovers leftovers(*whole.readLock(), name, messages);
        bytes = GLTFText(whole, form, leftovers).write();
        return !bytes.empty() || messages.fail(name, {}, "expected less than 4 GiB of data, found more");
    });
}
}  // namespace rq::io
