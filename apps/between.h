#pragma once

#include <cmath>
#include <cstdlib>

#include <CLI/CLI.hpp>

namespace rq::app
{
/// Check that an option is a number from `low` to `high`.  `CLI::Range` lets not-a-number through.
inline CLI::Validator between(double low, double high)
{
    const CLI::Validator range = CLI::Range(low, high);
    const auto check = [range](std::string &text) {
        return std::isnan(std::strtod(text.c_str(), nullptr)) ? "Value " + text + " is not a number" : range(text);
    };
    return {check, range.get_description()};
}
}  // namespace rq::app
