#pragma once

#include <string>
#include <vector>

#include <host/bas/JSONWriter.h>

namespace rq::io
{
/// What the components of an accessor are, by the numbers of glTF.
enum class GLTFType : int
{
    Int8 = 5120,
    UInt8 = 5121,
    Int16 = 5122,
    UInt16 = 5123,
    UInt32 = 5125,
    Real32 = 5126
};

/// The one buffer of a glTF file as it grows, with the views and accessors that divide it.
class GLTFBuffer
{
public:
    enum class Use : int
    {
        Attribute = 34962,
        Index = 34963
    };

    std::string bytes;

    /// Begin a view where the bytes end, filled up to a multiple of four.  A stride of 0 tells that rows are packed.
    void beginView(Use use, int stride = 0);

    /// Let an accessor tell what was appended since `begin` in the view that was begun last; its number.
    struct Rows
    {
        size_t begin = 0;
        int64_t count = 0;
        GLTFType type = GLTFType::Real32;
        int components = 1;
        std::vector<double> least{}, most{};  ///< of each component, or nothing
    };
    int add(Rows rows);

    /// Write the members "buffers", "bufferViews" and "accessors"; nothing without accessors.  With `inText` the bytes are
    /// part of the text.
    void write(BAS_JSONWriter &json, bool inText) const;

private:
    struct View
    {
        size_t begin;
        Use use;
        int stride;
    };
    struct Accessor
    {
        Rows rows;
        size_t view;
    };

    std::vector<View> views_;
    std::vector<Accessor> accessors_;
};
}  // namespace rq::io
