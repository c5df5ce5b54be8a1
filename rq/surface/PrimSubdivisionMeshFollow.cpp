#include <algorithm>

#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/surface/detail/subdivisionTags.h>

namespace
{
/// All values of some arrays end to end.
template <class T> std::vector<T> joined(const BAS_Array<RQ_DataArrayHandle> &arrays)
{
    std::vector<T> all;
    for (const RQ_DataArrayHandle &array : arrays)
    {
        const rq::Values<T> values(array);
        all.insert(all.end(), values.begin(), values.end());
    }
    return all;
}

/// Old rows to new ones, from the old row of each new one.
std::vector<int64_t> inverse(const RQ_DataArrayHandle &sources)
{
    const rq::Values<int64_t> from(sources);
    std::vector<int64_t> rows(from.size() > 0 ? size_t(*std::max_element(from.begin(), from.end()) + 1) : 0, -1);
    for (int64_t row = 0; row < from.entries(); ++row)
        rows[size_t(from[row])] = row;
    return rows;
}

}  // namespace

rq::ElementTag rq::ElementTag::read(const RQ_PrimSubdivisionMesh::Tag *tag, int width)
{
    ElementTag result;
    if (!tag)
        return result;
    result.indices = joined<int64_t>(tag->getAllInt());
    result.sharpnesses = joined<double>(tag->getAllReal());
    size_t elements = result.indices.size() / size_t(width);
    if (result.sharpnesses.size() == 1)
        result.sharpnesses.resize(elements, result.sharpnesses[0]);
    if (!result.sharpnesses.empty())
        elements = std::min(elements, result.sharpnesses.size());
    result.indices.resize(elements * size_t(width));
    if (!result.sharpnesses.empty())
        result.sharpnesses.resize(elements);
    return result;
}

void rq::ElementTag::write(RQ_PrimSubdivisionMesh::Tag &tag) const
{
    tag.clear();
    const bool narrow = indices.empty() || *std::max_element(indices.begin(), indices.end()) < (int64_t(1) << 31);
    RQ_DataArrayHandle array(new RQ_DANumeric<int64_t>(indices.data(), int64_t(indices.size())));
    if (narrow)
    {
        RQ_DataArrayHandle converted;
        array->getArray<int32_t>(converted);
        array = converted;
    }
    tag.appendInt(array);
    if (sharpnesses.empty())
        return;
    const std::vector<float> singles(sharpnesses.begin(), sharpnesses.end());
    tag.appendReal(new RQ_DANumeric<float>(singles.data(), int64_t(singles.size())));
}

void RQ_PrimSubdivisionMesh::followElements(const RQ_DataArrayHandle &faces, const RQ_DataArrayHandle &points)
{
    const auto follow = [this](const char *name, int width, auto &&rename) {
        if (!findTag(name))
            return;
        rq::ElementTag tag = rq::ElementTag::read(findTag(name), width);
        rename(tag);
        tag.indices.empty() ? void(delTag(name)) : tag.write(findOrCreateTag(name));
    };
    if (points && (findTag(rq::kCreaseTag) || findTag(rq::kCornerTag)))
    {
        const auto rowOf = [rows = inverse(points)](int64_t point) {
            return point >= 0 && point < int64_t(rows.size()) ? rows[size_t(point)] : -1;
        };
        follow(rq::kCreaseTag, 2, [&](rq::ElementTag &tag) { tag.rename(2, rowOf); });
        follow(rq::kCornerTag, 1, [&](rq::ElementTag &tag) { tag.rename(1, rowOf); });
    }
    if (faces)
        follow(rq::kHoleTag, 1, [&](rq::ElementTag &tag) {
            // A face that became several is a hole in all of them.
            std::sort(tag.indices.begin(), tag.indices.end());
            const rq::Values<int64_t> from(faces);
            std::vector<int64_t> holes;
            for (int64_t face = 0; face < from.entries(); ++face)
                if (std::binary_search(tag.indices.begin(), tag.indices.end(), from[face]))
                    holes.push_back(face);
            tag.indices = holes;
        });
}
