#include <io/GLTFReader.h>

#include <new>

#include <io/detail/GLTFAssembly.h>

namespace rq::io
{
namespace
{
bool isGLB(std::string_view text) { return text.starts_with("glTF"); }
}  // namespace

bool isGLTF(std::string_view text)
{
    const size_t first = text.find_first_not_of(" \t\r\n");
    return isGLB(text) || (first != text.npos && text[first] == '{' && text.find("\"asset\"") != text.npos);
}

bool readGLTF(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages)
{
    try
    {
        const Source source{text, name, messages, isGLB(text)};
        tinygltf::Model model;
        std::vector<GLTFPlacedMesh> placed;
        return parseGLTF(source, model) && placedMeshes(source, model, placed) &&
               GLTFAssembly(source, model).build(placed, detail);
    }
    catch (const std::bad_alloc &)
    {
        return messages.fail(name, {}, "needs more memory than there is");
    }
}
}  // namespace rq::io
