#include <bench/io/gridFile.h>
#include <host/mod/DetailHandle.h>
#include <io/Reader.h>

namespace
{
const bool registered = [] {
    for (const int threads : {1, 2})
        bench::addSTLRead("ours", threads, [](const std::string &path) {
            MOD_DetailHandle detail;
            rq::io::Messages messages;
            rq::io::load(path, detail, messages);
            return std::pair(detail.read().readLock()->pointCount(), bench::keep(detail));
        });
    return true;
}();
}  // namespace
