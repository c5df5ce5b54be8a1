#pragma once

#include <cstdio>

#include <apps/facts.h>

namespace rq::app
{
struct InfoOptions
{
    std::vector<std::string> files;
    bool json = false;
    bool parms = false;  ///< print the refinement options instead, no files are needed
};

/// Print what is in the files and what they refine to.  A file that cannot be read does not keep the others from being
/// printed.
ExitCode runInfo(const CommonOptions &common, const InfoOptions &options);

/// Write all refinement options with key, type, default and meaning, one a line or as a JSON array.
void printParms(FILE *stream);
bool printParmsJSON(FILE *stream);

/// Write facts as text for people.
void printText(const FileFacts &facts, FILE *stream);

/// Write one JSON object, or an array of them when several files were asked for.  False when the stream does not take it.
bool printJSON(const std::vector<FileFacts> &facts, bool asArray, FILE *stream);
}  // namespace rq::app
