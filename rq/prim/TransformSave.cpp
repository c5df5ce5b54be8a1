#include <vector>

#include <host/bas/JSONValue.h>
#include <rq/prim/Transform.h>
#include <rq/prim/detail/dumpSaved.h>

namespace
{
bool readMatrix(BAS_Mat4d &matrix, const BAS_JSONValue &value)
{
    const BAS_JSONValue::Array *numbers = value.array();
    if (!numbers || numbers->size() != 16)
        return false;
    for (size_t i = 0; i < 16; ++i)
        if (!(*numbers)[i].number(matrix[int(i / 4)][int(i % 4)]))
            return false;
    return true;
}
}  // namespace

bool RQ_Transform::save(BAS_JSONWriter &writer) const
{
    bool good = writer.beginArray();
    for (int i = 0; good && i < segments_; ++i)
        good = writer.uniformArray(data()[i].getValue(), 16);
    return good && writer.endArray();
}

bool RQ_Transform::load(RQ_TransformHandle &transform, const BAS_JSONValue &value)
{
    const BAS_JSONValue::Array *segments = value.array();
    if (!segments)
        return false;

    std::vector<BAS_Mat4d> matrices(segments->size());
    for (size_t i = 0; i < matrices.size(); ++i)
        if (!readMatrix(matrices[i], (*segments)[i]))
            return false;
    transform = new RQ_Transform(matrices.data(), int(matrices.size()));
    return true;
}

void RQ_Transform::dump(const char *label) const { rq::dumpSaved(*this, label); }
