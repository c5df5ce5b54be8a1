#include <algorithm>
#include <bit>

#include <rq/attrib/AttributeList.h>
#include <rq/attrib/detail/viewId.h>
#include <rq/prim/Transform.h>

namespace
{
uint64_t keyOf(const BAS_Mat4d &matrix)
{
    uint64_t key = 0;
    for (int i = 0; i < 16; ++i)
        key = RQmixId(key) + std::bit_cast<uint64_t>(matrix[i / 4][i % 4]);
    return key;
}
}  // namespace

RQ_AttributeListHandle RQ_AttributeList::transform(const RQ_TransformHandle &transform) const
{
    const RQ_AttributeListHandle self(const_cast<RQ_AttributeList *>(this));
    if (!transform || transform->isIdentity())
        return self;

    const RQ_AttributeListHandle list(new RQ_AttributeList(map_, std::max(segments_, transform->getSegments())));
    bool changed = list->segments_ != segments_;
    uint64_t before = 0;
    for (int segment = 0; segment < list->segments_; ++segment)
    {
        BAS_Mat4d matrix;
        transform->getMatrix(matrix, segment);
        const uint64_t key = keyOf(matrix);
        for (int i = 0; i < entries_; ++i)
        {
            const RQ_DataArrayHandle &array = get(i, segment);
            RQ_DataArrayHandle result = list->get(i, segment - 1);
            if (segment == 0 || key != before || array != get(i, segment - 1))
            {
                result = transform->transform(array, segment);
                if (result != array)
                    rq::setViewId(result, array, rq::viewKey(rq::View::TRANSFORMED, {key, uint64_t(array->getTypeInfo())}));
            }
            changed = changed || result != array;
            list->set(i, result, segment);
        }
        before = key;
    }
    return changed ? list : self;
}
