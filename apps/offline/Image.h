#pragma once

#include <string>
#include <vector>

#include <host/bas/Vector.h>

namespace rq::offline
{
struct Film;

/// A picture as screens show it: 8-bit sRGB values, red, green and blue of each pixel, row by row from the top.
struct ScreenPicture
{
    int width = 0;
    int height = 0;
    std::vector<uint8_t> values;
};

/// The beauty of a film.  Bright light approaches white without ever clipping.
ScreenPicture screenPicture(const Film &film);

/// A picture as the bytes of a PNG file; none with the reason in `error` when that fails.
std::string encodePNG(const ScreenPicture &picture, std::string &error);

/// Read a PNG file.  False with the reason in `error`.
bool readPNG(const std::string &path, ScreenPicture &picture, std::string &error);

/// The root of the mean square of all differences, of 1 for black to white.  Infinite when the sizes differ.
double difference(const ScreenPicture &a, const ScreenPicture &b);

/// A film as the bytes of an OpenEXR file, in linear light: R, G, B, A (how much of the pixel the object covers) and the
/// layers albedo (R, G, B) and normal (X, Y, Z) as 16-bit floats, and Z, the distance from the eye, as 32-bit ones.  None
/// with the reason in `error` when that fails.
std::string encodeEXR(const Film &film, std::string &error);

/// Put bytes into a file, which takes the place of one of its name when it is complete.  What is no regular file, as a pipe,
/// is written to as it is.  False with the reason in `error`.
bool writeWhole(const std::string &path, const std::string &bytes, std::string &error);

/// The sRGB transfer curve (IEC 61966-2-1) from linear light to a value for the screen, and back.
float encodeSRGB(float light);
float decodeSRGB(float value);
}  // namespace rq::offline
