#include <io/GLTFWriter.h>

#include <limits>

#include <io/detail/GLTFNodes.h>
#include <io/detail/GLTFScene.h>
#include <io/detail/bytes.h>
#include <io/detail/sayOnce.h>
#include <io/detail/writeWhole.h>

namespace rq::io
{
namespace
{
/// Turns a detail and what is packed in it into a glTF file.
class GLTFText
{
public:
    GLTFText(const PackedParts &parts, NumberForm form, const std::string &name)
        : parts_(parts), inText_(form == NumberForm::Text), name_(name)
    {}

    /// Empty when it would be too large.
    std::string write(Messages &messages)
    {
        writeMeshes(messages);
        const GLTFNodes nodes(parts_, meshes_);
        std::string text;
        BAS_JSONWriter json(text);
        json.beginMap();
        json.key("asset");
        json.beginMap();
        json.writeKeyString("version", "2.0");
        json.writeKeyString("generator", "librq");
        json.endMap();
        nodes.write(json);
        buffer_.write(json, inText_);
        json.endMap();
        json.flush();
        return inText_ ? text + '\n' : inChunks(std::move(text));
    }

private:
    void writeMeshes(Messages &messages)
    {
        for (const PackedParts::Part &part : parts_.all())
            meshes_.emplace_back(part.own, !part.placements.empty(), name_, buffer_, said_);
        sayOnce(said_, messages);
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

    const PackedParts &parts_;
    bool inText_;
    const std::string &name_;
    GLTFBuffer buffer_;
    Messages said_;
    std::deque<GLTFMeshes> meshes_;
};
}  // namespace

bool writeGLTF(const MOD_ConstDetailHandle &detail, NumberForm form, const std::string &name, std::string &bytes,
               Messages &messages)
{
    return writeWhole(detail, name, messages, [&](const MOD_ConstDetailHandle &whole) {
        PackedParts parts(name, messages);
        if (!parts.collect(whole))
            return false;
        if (parts.copies() > double(kMostGLTFNodes))
            return messages.fail(name, {},
                                 fmt::format("expected packed geometry of at most {} copies, found more", kMostGLTFNodes));
        bytes = GLTFText(parts, form, name).write(messages);
        return !bytes.empty() || messages.fail(name, {}, "expected less than 4 GiB of data, found more");
    });
}
}  // namespace rq::io
