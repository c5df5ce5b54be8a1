#pragma once

#include <string>

#include <apps/Picture.h>

namespace rq::offline
{
struct Film;

using app::Picture;

/// The beauty of a film.  Bright light approaches white without ever clipping.
Picture screenPicture(const Film &film);

/// The root of the mean square of all differences, of 1 for black to white.  Infinite when the sizes differ.
double difference(const Picture &a, const Picture &b);

/// A film as the bytes of an OpenEXR file, in linear light: R, G, B, A (how much of the pixel the object covers) and the
/// layers albedo (R, G, B) and normal (X, Y, Z) as 16-bit floats, and Z, the distance from the eye, as 32-bit ones.  None
/// with the reason in `error` when that fails.
std::string encodeEXR(const Film &film, std::string &error);

/// The sRGB transfer curve (IEC 61966-2-1) from linear light to a value for the screen, and back.
float encodeSRGB(float light);
float decodeSRGB(float value);
}  // namespace rq::offline
