#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_set>

#include <epoxy/gl.h>

#include <apps/viewport/Display.h>
#include <rq/data/DataArray.h>

namespace rq::viewport
{
/// Memory of the graphics card, seen as a row of numbers by shaders.
struct Buffer
{
    GLuint buffer = 0;
    GLuint texture = 0;
    GLenum format = 0;
    int64_t bytes = 0;
    float scale = 1.0f;  ///< what a shader's number is multiplied by to be the array's

    Buffer() = default;
    ~Buffer();
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;
};

/// How an array is seen.
enum class Seen
{
    Numbers,  ///< floats: 16 and 32 bits and bytes as they are, everything else converted
    Floats,   ///< the same, but bytes converted: for shaders that know of no scale
    Rows,     ///< 32-bit floats, four at a time: matrices
    Indices,  ///< 32-bit integers
    Bits,     ///< 8-bit integers
    Texts     ///< for each text its number
};

/// The arrays that the graphics card holds, by data id.
///
/// Threads  belongs to the thread of the context
class Buffers
{
public:
    Buffers();

    /// Keep what is of these data ids; all else is let go by `release`, and until then lends its memory.
    void retain(const std::unordered_set<int64_t> &ids, DisplayStatistics &statistics);
    void release(DisplayStatistics &statistics);

    /// The array in the graphics card, uploaded if it is not there yet.  Null, with the reason in `error`, when it is too
    /// large; null for a null array.
    const Buffer *find(const RQ_DataArrayHandle &array, Seen seen, DisplayStatistics &statistics, std::string &error);

private:
    struct Source;
    using Key = std::pair<int64_t, Seen>;

    Source readSource(const RQ_DataArray &array, Seen seen, RQ_DataArrayHandle &keep) const;
    std::shared_ptr<Buffer> spare(const Source &source);

    std::map<Key, std::shared_ptr<Buffer>> known_;
    std::vector<std::shared_ptr<Buffer>> retired_;
    int64_t mostNumbers_ = 0;
};
}  // namespace rq::viewport
