#pragma once

#include <host/mod/Edit.h>
#include <io/Message.h>
#include <io/detail/OBJBlock.h>

namespace rq::io
{
/// Build a detail from the parsed blocks of an OBJ file.
class OBJAssembly
{
public:
    OBJAssembly(const OBJSource &source, const std::vector<OBJBlock> &blocks, Messages &messages);

    /// Replace `detail` by a new one.  False, with an error, when a corner refers to nothing.
    bool build(MOD_DetailHandle &detail);

private:
    using Floats = std::vector<float> OBJBlock::*;
    using Indices = std::vector<int32_t> OBJBlock::*;

    /// How many elements of each sort lie before a block.
    struct Before
    {
        int64_t points = 0;
        int64_t uvs = 0;
        int64_t normals = 0;
        int64_t corners = 0;
        int64_t primitives = 0;
    };

    /// One of the three sorts of elements that a corner refers to.
    struct Slot
    {
        int number;        ///< its place in a corner
        const char *name;  ///< of one element, in messages
        Indices indices;
        int64_t Before::*before;
    };
    static const Slot kPoint, kUV, kNormal;

    bool resolve(const Slot &slot, std::vector<int32_t> &elements);
    void warnOfReferences(const Slot &slot);
    std::string expectation(const Slot &slot, const char *place) const;
    bool appendPrimitives(MOD_Edit &edit, const std::vector<int32_t> &points);
    bool appendRun(MOD_Edit &edit, OBJKind kind, std::span<const int32_t> counts, std::span<const int32_t> points);
    void writePoints(MOD_Edit &edit);
    void writeCorners(MOD_Edit &edit, const char *name, ELM_TypeInfo type, int size, Floats values,
                      const std::vector<int32_t> &elements);
    std::vector<float> flatten(Floats values, int64_t count) const;

    const OBJSource &source_;
    const std::vector<OBJBlock> &blocks_;
    Messages &messages_;
    std::vector<Before> before_;  ///< one per block, and the totals
};
}  // namespace rq::io
