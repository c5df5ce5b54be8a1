#pragma once

namespace rq::app
{
/// What the program tells the shell.
enum ExitCode
{
    ExitDone = 0,
    ExitUsage = 1,     ///< the command line is wrong
    ExitBadInput = 2,  ///< a file cannot be read
    ExitFailure = 3    ///< the work itself failed
};
}  // namespace rq::app
