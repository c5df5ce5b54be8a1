#pragma once

#include <string>

namespace rq::app
{
/// Read the "WIDTHxHEIGHT" of a picture, in pixels.  False with the reason in `error`, also for what memory would not hold.
bool readSize(const std::string &text, int &width, int &height, std::string &error);
}  // namespace rq::app
