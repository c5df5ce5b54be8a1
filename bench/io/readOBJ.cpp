#include <bench/io/OBJFile.h>
#include <host/mod/DetailHandle.h>
#include <host/msh/Detail.h>
#include <io/Reader.h>

namespace
{
std::shared_ptr<MOD_DetailHandle> read(const std::string &path)
{
    auto detail = std::make_shared<MOD_DetailHandle>();
    rq::io::Messages messages;
    rq::io::load(path, *detail, messages);
    return detail;
}

double errorOf(const MOD_DetailHandle &handle)
{
    const MOD_ConstDetailHandle snapshot = handle.read();
    const MSH_Detail &detail = *snapshot.readLock();
    return bench::OBJFile::error(double(detail.pointCount()), double(detail.primitiveCount()), double(detail.vertexCount()));
}

const bool registered = [] {
    for (const int threads : {1, 2})
        bench::addOBJReading("ours", threads, [] {
            const auto file = std::make_shared<bench::OBJFile>();
            return bench::Work{[file] { return read(file->path()); }, [file] { return errorOf(*read(file->path())); }};
        });
    return true;
}();
}  // namespace
