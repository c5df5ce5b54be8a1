#pragma once

#include <string>

#include <apps/CommonOptions.h>
#include <apps/ExitCode.h>

namespace rq::app
{
struct ConvertOptions
{
    std::string input;
    std::string output;  ///< "-" for standard output
    std::string format;  ///< one of `io::saveFormats`, empty for what the output's name says
    bool ascii = false;  ///< numbers as text, where a format has both
};

/// Read a file and write what it holds to another, its faces subdivided and cut as the options ask.  What reader and writer
/// have to say goes to standard error.
ExitCode runConvert(const CommonOptions &common, const ConvertOptions &options);
}  // namespace rq::app
