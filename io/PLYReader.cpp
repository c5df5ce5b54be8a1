#include <io/PLYReader.h>

#include <new>

#include <io/detail/PLYAssembly.h>

namespace rq::io
{
bool isPLY(std::string_view text)
{
    return text.starts_with("ply\n") || text.starts_with("ply\r") || text.starts_with("ply ");
}

bool readPLY(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages,
             const std::shared_ptr<const void> &owner)
{
    try
    {
        const Source headerSource{text, name, messages};
        PLYHeader header;
        if (!header.read(headerSource))
            return false;
        const Source source{text, name, messages, header.form != PLYForm::Text};
        const std::unique_ptr<PLYBody> body = source.binary ? makePLYBinary(source, header) : makePLYText(source, header);
        return PLYAssembly(headerSource, source, header, *body, owner).build(detail);
    }
    catch (const std::bad_alloc &)
    {
        return messages.fail(name, {}, "needs more memory than there is");
    }
}
}  // namespace rq::io
