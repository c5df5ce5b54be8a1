#pragma once

#include <string>

#include <apps/ExitCode.h>

namespace rq::app
{
struct ConvertOptions
{
    std::string input;
    std::string output;
};

/// Read a file and write what it holds to another.  What reader and writer have to say goes to standard error.
ExitCode runConvert(const ConvertOptions &options);
}  // namespace rq::app
