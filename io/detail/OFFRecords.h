#pragma once

#include <io/detail/TextRecords.h>

namespace rq::io
{
/// What every point of an OFF file has, as the word in front of it tells.
struct OFFHeader
{
    bool texture = false;
    bool colors = false;
    bool normals = false;
    bool weights = false;
    const char *end = nullptr;  ///< behind the word; the first word of the text when there is none

    /// Find the word.  False when the text does not begin with one.
    bool find(std::string_view text);
};

/// Colours of some elements in the file's order, up to the last one that has one.
struct OFFColors
{
    std::vector<uint8_t> numbers;  ///< how many every element has: none, 3, or 4 with alpha
    std::vector<float> values;     ///< four per element
    bool alpha = false;            ///< some colour has one
    float largest = 0.0f;

    /// Note the colour of an element.
    void set(int64_t element, const float *color, int count);
};

/// Points or faces of some lines.
struct OFFBlock
{
    std::vector<float> positions;  ///< 3 per point
    std::vector<float> normals;    ///< 3 per point
    std::vector<float> uvs;        ///< 2 per point
    std::vector<int32_t> counts;   ///< corners of every face
    std::vector<int32_t> corners;
    OFFColors colors;
    Tally smallFaces;
    Tally mapColors;  ///< faces with fewer numbers than a colour has

    /// Read a line with a point.  False after a failure.
    bool point(TextCursor &cursor, const OFFHeader &header);

    /// Read a line with a face.  `points` is the number of all points.
    bool face(TextCursor &cursor, int64_t points);
};
}  // namespace rq::io
