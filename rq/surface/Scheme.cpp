#include <rq/surface/Scheme.h>

#include <algorithm>
#include <iterator>
#include <string_view>

namespace
{
struct Name
{
    const char *name;
    RQ_Scheme scheme;
};

// The first name of a scheme is its canonical one.
constexpr Name kNames[] = {{"catmullClark", RQ_SCHEME_CATMULL_CLARK},
                           {"catclark", RQ_SCHEME_CATMULL_CLARK},
                           {"catmullclark", RQ_SCHEME_CATMULL_CLARK},
                           {"catmull-clark", RQ_SCHEME_CATMULL_CLARK},
                           {"loop", RQ_SCHEME_LOOP},
                           {"bilinear", RQ_SCHEME_BILINEAR}};
}  // namespace

RQ_Scheme RQscheme(const char *name)
{
    const std::string_view wanted(name ? name : "");
    const auto *at =
        std::find_if(std::begin(kNames), std::end(kNames), [&](const Name &entry) { return entry.name == wanted; });
    return at == std::end(kNames) ? RQ_SCHEME_INVALID : at->scheme;
}

const char *RQscheme(RQ_Scheme scheme)
{
    const auto *at =
        std::find_if(std::begin(kNames), std::end(kNames), [&](const Name &entry) { return entry.scheme == scheme; });
    return at == std::end(kNames) ? nullptr : at->name;
}
