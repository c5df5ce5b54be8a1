#include <meshoptimizer.h>

#include <bench/arrays.h>

namespace
{
const bool registered = [] {
    bench::add({"convert/F32_to_F16", "values16M", "meshoptimizer", 1, double(bench::kValues), double(bench::kValues) * 6.0,
                false, [] {
                    const auto from = bench::makeNumbers<float>(bench::kValues);
                    const auto to = bench::makeNumbers<int16_t>(bench::kValues);
                    const auto run = [from, to] {
                        for (int64_t i = 0; i < bench::kValues; ++i)
                            to->data()[i] = int16_t(meshopt_quantizeHalf(from->data()[i]));
                        return std::shared_ptr<void>();
                    };
                    // It rounds halves away from zero, so a few values differ.
                    return bench::Work{run, [from, to, run] {
                                           run();
                                           int64_t wrong = 0;
                                           for (int64_t i = 0; i < bench::kValues; ++i)
                                               wrong += uint16_t(to->data()[i]) != PLT_Half(from->data()[i]).bits();
                                           return double(wrong) / double(bench::kValues);
                                       }};
                }});
    return true;
}();
}  // namespace
