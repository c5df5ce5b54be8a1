#pragma once

#include <string>
#include <vector>

namespace rq::viewport
{
/// Whether a path stands for the files of an animation: its file name holds one run of '#', as "frame.####.obj".
bool isSequence(const std::string &path);

/// The files that a pattern stands for, in the order of their numbers.
///
/// Shape    a run of n '#' stands for a number of at least n digits, filled up with zeros
/// Failure  none when the folder cannot be read or holds no such file
std::vector<std::string> sequenceFiles(const std::string &pattern);
}  // namespace rq::viewport
