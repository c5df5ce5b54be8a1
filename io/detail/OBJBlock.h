#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <io/detail/Tally.h>

namespace rq::io
{
/// A whole text and what messages call it.
struct OBJSource
{
    std::string_view text;
    const std::string &name;
};

/// What a record of corners becomes.
enum class OBJKind : uint8_t
{
    Face,
    Line,
    Points
};

/// A line that changes the state of the primitives after it, or the kind of them.
struct OBJChange
{
    enum What : uint8_t
    {
        Kind,
        Groups,
        Object,
        Material,
        Smoothing
    };

    What what;
    OBJKind kind = OBJKind::Face;  ///< of Kind
    int32_t smoothing = 0;         ///< of Smoothing
    int64_t primitive = 0;         ///< the first primitive that it applies to, counted from the block's first
    std::string_view text = {};    ///< the names of Groups, the name of Object and Material
};

/// The records of some lines of an OBJ file, in flat arrays and in the file's order.
///
/// A block is parsed without knowing what lies before it: relative numbers stay relative to the block's first element until
/// `objIndex::resolve` is told how many elements came before.
struct OBJBlock
{
    explicit OBJBlock(std::string_view lines) : text(lines) {}

    /// Read the lines.  False when a record is malformed: then `failedAt` and `expected` say where and what.
    bool parse();

    std::string_view text;

    std::vector<float> positions;  ///< 3 per point
    std::vector<float> colors;     ///< 3 per point, up to the last point that has one
    std::vector<float> uvs;        ///< 3 per uv
    std::vector<float> normals;    ///< 3 per normal
    int uvSize = 2;                ///< how many numbers the longest uv has, at least 2

    std::vector<int32_t> counts;         ///< corners of every primitive
    std::vector<int32_t> pointIndices;   ///< one per corner
    std::vector<int32_t> uvIndices;      ///< one per corner, up to the last corner that has one
    std::vector<int32_t> normalIndices;  ///< likewise
    std::vector<OBJChange> changes;
    std::vector<std::string_view> materialFiles;
    std::vector<std::string_view> tags;  ///< of subdivision surfaces, without the "t"

    Tally smallFaces;      ///< faces of fewer than three corners
    Tally unknownWords;    ///< records that begin with a word that is not known
    Tally surplusNumbers;  ///< records with more numbers than they can have

    const char *failedAt = nullptr;
    std::string expected;
};

/// How a corner refers to a point, uv or normal before it is known how many came before the block.
namespace objIndex
{
constexpr int32_t kNone = INT32_MIN;

/// The most elements of one sort that a file can have.
constexpr int64_t kMost = (int64_t(1) << 30) - 2;

/// Encode a number of the file, which is not 0.  `seen` elements were read in the block so far.  What is out of any range
/// stays so.
int32_t encode(int64_t number, int64_t seen);

/// The element counted from 0.  `before` elements lie before the block, `total` in the file.  False when there is no such
/// element; kNone stays what it is.
bool resolve(int32_t encoded, int64_t before, int64_t total, int32_t &element);
}  // namespace objIndex

/// The place where a corner, counted from the first of a block that was parsed, names its point (0), uv (1) or normal (2).
const char *findCorner(std::string_view text, int64_t corner, int slot);
}  // namespace rq::io
