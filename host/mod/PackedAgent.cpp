#include <host/mod/PackedAgent.h>

#include <fmt/format.h>

#include <host/bas/Parallel.h>
#include <host/mod/Edit.h>
#include <host/mod/PackedGeometry.h>
#include <host/mod/PrimPacked.h>

namespace
{
constexpr const char *kName = "name";
constexpr const char *kParent = "parent";
constexpr const char *kRest = "rest";
constexpr const char *kJoint = "joint";
constexpr const char *kWeight = "weight";

// Bending a point by four joints costs some 50 ns.
constexpr int64_t kPointsPerTask = 1024;

BAS_Mat4d matrixAt(const double *values)
{
    BAS_Mat4d matrix;
    std::copy_n(values, 16, &matrix[0][0]);
    return matrix;
}

BAS_Mat3d turnOf(const BAS_Mat4d &matrix)
{
    BAS_Mat3d turn;
    for (int i = 0; i < 9; ++i)
        turn[i / 3][i % 3] = matrix[i / 3][i % 3];
    return turn;
}

/// Place geometry by a matrix: a point, and packed geometry at it.
bool place(MOD_Edit &edit, const MSH_Detail &detail, const BAS_Mat4d &matrix)
{
    const std::vector<int64_t> point = {edit.capacity(ELM_OWNER_POINT)};
    const std::vector<BAS_Mat3d> turn = {turnOf(matrix)};
    if (!edit.appendPoints(1))
        return false;
    ELM_Attribute *positions = edit.attribute(ELM_OWNER_POINT, ELM_POSITION_NAME, ELM_STORAGE_REAL64, 3, ELM_TYPE_POINT);
    return positions && positions->write<double>(point[0], 1, matrix[3]) &&
           edit.appendPacked(new MOD_PackedGeometry({{&detail}}), point, turn);
}

/// From the rest pose to the pose, for every joint.
std::vector<BAS_Mat4d> motionsOf(const MSH_Detail &definition, const std::vector<double> &pose)
{
    std::vector<BAS_Mat4d> motions(size_t(definition.capacity(ELM_OWNER_POINT)));
    const ELM_Attribute *rest = definition.find(ELM_OWNER_POINT, kRest);
    for (size_t joint = 0; joint < motions.size() && !pose.empty(); ++joint)
        motions[joint] = matrixAt(rest->pages<double>()->tuple(int64_t(joint))).inverse() * matrixAt(&pose[16 * joint]);
    return motions;
}

/// A shape with its points moved by the weighted sum of its joints' motions.
MOD_ConstDetailHandle bent(const MOD_ConstDetailHandle &shape, const std::vector<BAS_Mat4d> &motions)
{
    const ELM_Attribute *joint = shape.readLock()->find(ELM_OWNER_POINT, kJoint);
    const ELM_Attribute *weight = shape.readLock()->find(ELM_OWNER_POINT, kWeight);
    if (!joint || !weight || !joint->pages<int32_t>() || !weight->pages<float>() ||
        joint->tupleSize() != weight->tupleSize())
        return shape;
    const ELM_Attribute &positions = shape.readLock()->positions();
    MOD_DetailHandle moved(shape);
    MOD_Edit edit(moved);
    ELM_Attribute *to = edit.attribute(ELM_OWNER_POINT, ELM_POSITION_NAME, positions.storage(), 3, positions.typeInfo());
    if (!to || to->size() == 0)
        return shape;
    to->numericTuple()->visit([&](auto &pages) {
        auto *row = pages.modifyAll();
        using Value = std::remove_pointer_t<decltype(row)>;
        host::parallelFor(to->size(), kPointsPerTask, [&](int64_t point) {
            const BAS_Vec3d was(double(row[3 * point]), double(row[3 * point + 1]), double(row[3 * point + 2]));
            BAS_Vec3d sum(0.0);
            double total = 0.0;
            for (int k = 0; k < joint->tupleSize(); ++k)
            {
                const int32_t j = joint->pages<int32_t>()->value(point, k);
                const double w = double(weight->pages<float>()->value(point, k));
                if (j < 0 || size_t(j) >= motions.size() || w == 0.0)
                    continue;
                sum += host::transformPoint(was, motions[size_t(j)]) * w;
                total += w;
            }
            // Weights that do not add up to 1 leave the rest of the point where it was.
            sum += was * (1.0 - total);
            for (int axis = 0; axis < 3; ++axis)
                row[3 * point + axis] = Value(sum[axis]);
        });
    });
    return edit.commit();
}
}  // namespace

MOD_ConstDetailHandle MOD_AgentDefinition::make(std::string &why) const
{
    const int64_t count = int64_t(joints.size());
    for (int64_t i = 0; i < count; ++i)
        if (joints[size_t(i)].parent < -1 || joints[size_t(i)].parent >= i)
            return why = fmt::format("the parent {} of joint {} does not come before it", joints[size_t(i)].parent, i),
                   MOD_ConstDetailHandle();
    MOD_DetailHandle result;
    MOD_Edit edit(result);
    bool good = edit.appendPoints(count);
    for (int64_t i = 0; good && i < count; ++i)
    {
        const Joint &joint = joints[size_t(i)];
        edit.stringAttribute(ELM_OWNER_POINT, kName)->strings()->set(i, joint.name.view());
        edit.attribute(ELM_OWNER_POINT, kParent, ELM_STORAGE_INT32)->write(i, 1, &joint.parent);
        edit.attribute(ELM_OWNER_POINT, kRest, ELM_STORAGE_REAL64, 16, ELM_TYPE_MATRIX)->write(i, 1, &joint.rest[0][0]);
    }
    for (size_t i = 0; good && i < shapes.size(); ++i)
    {
        const Shape &shape = shapes[i];
        if (!shape.detail || shape.joint < -1 || shape.joint >= count)
            return why = fmt::format("shape {} needs a detail, and a joint in [-1, {})", i, count), MOD_ConstDetailHandle();
        const MSH_PayloadHandle payload(
            new MOD_PackedPayload(new MOD_PackedGeometry({{shape.detail.readLock()}}), BAS_Vec3d(0.0), 4));
        good = edit.append({ELM_PRIMITIVE_PACKED_GEOMETRY, 1, {}, 0, {}, false, {&payload, 1}, {}});
        if (!good)
            break;
        edit.stringAttribute(ELM_OWNER_PRIMITIVE, kName)->strings()->set(int64_t(i), shape.name.view());
        edit.attribute(ELM_OWNER_PRIMITIVE, kJoint, ELM_STORAGE_INT32)->write(int64_t(i), 1, &shape.joint);
    }
    if (!good)
        return why = edit.message(), MOD_ConstDetailHandle();
    return edit.commit();
}

bool MOD_PackedAgentData::check(std::string &why) const
{
    const MSH_Detail *parts = definition.size() == 1 ? definition[0].get() : nullptr;
    const ELM_Attribute *rest = parts ? parts->find(ELM_OWNER_POINT, kRest) : nullptr;
    const ELM_Attribute *joint = parts ? parts->find(ELM_OWNER_PRIMITIVE, kJoint) : nullptr;
    if (!parts || (parts->pointCount() > 0 && (!rest || !rest->pages<double>() || rest->tupleSize() != 16)) ||
        (parts->primitiveCount() > 0 && (!joint || !joint->pages<int32_t>())))
        why = "an agent needs one definition";
    else if (!pose.empty() && int64_t(pose.size()) != 16 * parts->capacity(ELM_OWNER_POINT))
        why = fmt::format("a pose of {} numbers does not fit {} joints", pose.size(), parts->capacity(ELM_OWNER_POINT));
    else
        return true;
    return false;
}

MOD_PackedContent MOD_PackedAgentData::load(std::string &why) const
{
    const MSH_Detail &parts = *definition[0];
    const std::vector<BAS_Mat4d> motions = motionsOf(parts, pose);
    const ELM_Attribute *joints = parts.find(ELM_OWNER_PRIMITIVE, kJoint);
    MOD_DetailHandle result;
    MOD_Edit edit(result);
    for (int64_t i = 0; i < parts.capacity(ELM_OWNER_PRIMITIVE); ++i)
    {
        const MOD_PrimPacked shape(parts, i);
        const MOD_ConstDetailHandle detail = shape.isValid() ? shape.unpack(why) : MOD_ConstDetailHandle();
        if (!detail)
            continue;
        const int32_t joint = joints->pages<int32_t>()->value(i);
        const bool follows = joint >= 0 && size_t(joint) < motions.size();
        const bool good = follows ? place(edit, *detail.readLock(), motions[size_t(joint)])
                                  : place(edit, *bent(detail, motions).readLock(), BAS_Mat4d());
        if (!good)
            return why = edit.message(), MOD_PackedContent();
    }
    return {edit.commit()};
}
