#pragma once

#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <unordered_set>

#include <host/mod/DetailHandle.h>
#include <host/mod/Primitives.h>

struct MSH_BlobData;
struct MSH_BlobExpressionData;
struct MSH_ChannelData;
struct MSH_CurveData;
struct MSH_GridData;
struct MSH_Patch3Data;
struct MSH_SoupData;
struct MSH_SparseVolumeData;
struct MSH_SurfaceData;
struct MSH_TubeData;
struct MSH_VolumeData;
class MOD_PackedImpl;

/// An exclusive edit of a detail: changes gather in a copy-on-write clone, and `commit` publishes them at once.
///
///     MOD_Edit edit(detail);
///     if (!edit.appendPoints(count) || !edit.appendPolygons(corners, points, true))
///         return fail(edit.message());
///     std::copy(..., edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>());
///     MOD_ConstDetailHandle snapshot = edit.commit();
///
/// Failure    operations that can fail answer false or null, say why in `message`, and change nothing; an edit that is
///            destroyed without a commit leaves the detail as it was
/// Ownership  attributes and groups that it hands out are the edit's: use them until it is committed or aborted
/// Threads    waits for the edit in progress, so one thread must not open two of one detail; use an edit from one thread
/// Cost       what is not touched is shared with the snapshots: an edit costs the columns that it writes
class HOST_API MOD_Edit
{
public:
    explicit MOD_Edit(const MOD_DetailHandle &detail);
    ~MOD_Edit();
    MOD_Edit(const MOD_Edit &) = delete;
    MOD_Edit &operator=(const MOD_Edit &) = delete;

    int64_t pointCount() const { return count(ELM_OWNER_POINT); }
    int64_t vertexCount() const { return count(ELM_OWNER_VERTEX); }
    int64_t primitiveCount() const { return count(ELM_OWNER_PRIMITIVE); }
    int64_t count(ELM_Owner owner) const { return data_.count(owner); }

    /// One past the last offset, and the number of rows of every attribute: the count, and the offsets that are vacant.
    int64_t capacity(ELM_Owner owner) const { return data_.capacity[owner]; }

    // ---- Elements.  New elements take the next offsets, `capacity` on.  Their attributes hold zeros.

    /// Add points.
    [[nodiscard]] bool appendPoints(int64_t count);

    /// Add a polygon per entry of `corners`, its number of vertices (0 is allowed).  `points` holds the points of all
    /// vertices, polygon after polygon.  A closed polygon is a face, an open one a polyline.
    [[nodiscard]] bool appendPolygons(std::span<const int32_t> corners, const MOD_Indices &points, bool closed);

    /// Add `points.size() / corners` polygons of the same number of vertices.
    [[nodiscard]] bool appendPolygons(int32_t corners, const MOD_Indices &points, bool closed);

    /// Add one particle system: a primitive with a vertex for each particle.
    [[nodiscard]] bool appendParticles(const MOD_Indices &points);

    /// Connect a vertex to another point; -1 to none, which makes the topology invalid.
    [[nodiscard]] bool setVertexPoint(ELM_Offset vertex, ELM_Offset point);

    // ---- Primitives of other types.  Their points are listed primitive after primitive.  Where `transforms` are asked for,
    // there is one for each, one for all, or none, which means the identity.

    /// Add primitives of any type.  The others below are short for it.
    [[nodiscard]] bool append(const MOD_Primitives &primitives);

    [[nodiscard]] bool appendTetrahedra(const MOD_Indices &points);
    [[nodiscard]] bool appendHexahedra(const MOD_Indices &points);
    [[nodiscard]] bool appendTriangleFans(std::span<const int32_t> corners, const MOD_Indices &points);
    [[nodiscard]] bool appendTriangleStrips(std::span<const int32_t> corners, const MOD_Indices &points);
    [[nodiscard]] bool appendSoup(MSH_SoupData soup, const MOD_Indices &points);

    /// Add as many of one size as the points make.
    [[nodiscard]] bool appendGrids(MSH_GridData grid, const MOD_Indices &points);
    [[nodiscard]] bool appendTriangularPatches(MSH_Patch3Data patch, const MOD_Indices &points);

    /// Add curves of one kind, with the numbers of control vertices in `corners`.
    [[nodiscard]] bool appendNURBSCurves(MSH_CurveData curve, std::span<const int32_t> corners, const MOD_Indices &points);
    [[nodiscard]] bool appendBezierCurves(MSH_CurveData curve, std::span<const int32_t> corners, const MOD_Indices &points);
    [[nodiscard]] bool appendNURBSSurface(MSH_SurfaceData surface, const MOD_Indices &points);
    [[nodiscard]] bool appendBezierSurface(MSH_SurfaceData surface, const MOD_Indices &points);

    /// Add one at each point.
    [[nodiscard]] bool appendCircles(const MOD_Indices &points, const MOD_Matrices &transforms = {});
    [[nodiscard]] bool appendSpheres(const MOD_Indices &points, const MOD_Matrices &transforms = {});
    [[nodiscard]] bool appendTubes(MSH_TubeData tube, const MOD_Indices &points, const MOD_Matrices &transforms = {});
    [[nodiscard]] bool appendVolumes(MSH_VolumeData volume, const MOD_Indices &points, const MOD_Matrices &transforms = {});
    [[nodiscard]] bool appendSparseVolumes(MSH_SparseVolumeData volume, const MOD_Indices &points,
                                           const MOD_Matrices &transforms = {});

    /// Add a blob at each point; `type` says which of the four shapes.
    [[nodiscard]] bool appendBlobs(ELM_PrimitiveTypeId type, MSH_BlobData blob, const MOD_Indices &points,
                                   const MOD_Matrices &transforms = {});
    [[nodiscard]] bool appendBlobExpression(MSH_BlobExpressionData expression);

    /// Add one channel, with a vertex for each key or none.
    [[nodiscard]] bool appendChannel(MSH_ChannelData channel, const MOD_Indices &points = {});

    /// Add one at each point, all of one implementation; `pivot` is the point of its geometry that comes to lie there.
    [[nodiscard]] bool appendPacked(BAS_IntrusivePtr<const MOD_PackedImpl> implementation, const MOD_Indices &points,
                                    const MOD_Matrices &transforms = {}, const BAS_Vec3d &pivot = BAS_Vec3d(0.0),
                                    int32_t viewportLOD = 4);

    // ---- Taking elements away.  When memory is exhausted on the way, the edit ends and its changes are dropped.

    /// Remove points or primitives; a range may contain vacant offsets.  Offsets of others do not change: the removed ones
    /// become vacant, hold defaults, and leave their groups.  Primitives take their vertices along; vertices of removed
    /// points stay without one, which makes the topology invalid.
    [[nodiscard]] bool remove(const ELM_Range &elements);
    [[nodiscard]] bool remove(ELM_Owner owner, const ELM_OffsetList &offsets);

    /// Give every element a new offset, in the same order, so that none is vacant.  Attributes and groups that the edit
    /// handed out before are not its own any more.
    [[nodiscard]] bool compact();

    /// Turn the order of the vertices of polygons about, with all that belongs to them: faces look the other way.
    /// Refused when a primitive is of another type.
    [[nodiscard]] bool reverse(const ELM_Range &polygons);

    // ---- Memory that stays the application's.  Rows that lie packed and aligned are read in place, for as long as any
    // snapshot does; an edit that writes to them copies the page first.  Rows `stride` bytes apart that are not, are copied,
    // and `message` says why.  The memory must not change until `release` (may be empty) is called: once, from any thread,
    // when nothing reads it any more; at once when it was copied or the call fails.

    using Release = std::function<void()>;

    /// A public numeric attribute of `rows` rows, one for each element, in the place of one of the same name.
    ELM_Attribute *adopt(ELM_Owner owner, std::string_view name, ELM_Storage storage, int tupleSize, ELM_TypeInfo typeInfo,
                         const void *pointer, int64_t stride, int64_t rows, Release release);

    /// Add polygons as `appendPolygons` does, with the points of their vertices read in place (int32 or int64).  They are
    /// copied when the detail has vertices already.
    [[nodiscard]] bool adoptPolygons(std::span<const int32_t> corners, bool closed, ELM_Storage storage, const void *pointer,
                                     int64_t stride, int64_t rows, Release release);
    [[nodiscard]] bool adoptPolygons(int32_t corners, bool closed, ELM_Storage storage, const void *pointer, int64_t stride,
                                     int64_t rows, Release release);

    /// Connect all vertices anew (int32 or int64; -1 is no point).
    [[nodiscard]] bool adoptVertexPoints(ELM_Storage storage, const void *pointer, int64_t stride, int64_t rows,
                                         Release release);

    // ---- Attributes and groups

    /// An attribute to write, made when there is none.  One of another storage, tuple size or type info is replaced, in its
    /// place in the order, by zeros.  It has a row for every offset, and follows when elements are added.
    ELM_Attribute *attribute(ELM_Owner owner, std::string_view name, ELM_Storage storage, int tupleSize = 1,
                             ELM_TypeInfo typeInfo = ELM_TYPE_NONE, ELM_Scope scope = ELM_SCOPE_PUBLIC);

    /// The same for strings and dictionaries: write through `ELM_Attribute::strings` and `dicts`.
    ELM_Attribute *stringAttribute(ELM_Owner owner, std::string_view name, int tupleSize = 1,
                                   ELM_Scope scope = ELM_SCOPE_PUBLIC);
    ELM_Attribute *dictAttribute(ELM_Owner owner, std::string_view name, int tupleSize = 1,
                                 ELM_Scope scope = ELM_SCOPE_PUBLIC);

    /// The same for arrays of numbers, strings or dictionaries, as the storage says: write through
    /// `ELM_Attribute::numericArrays`, `stringArrays` and `dictArrays`.
    ELM_Attribute *arrayAttribute(ELM_Owner owner, std::string_view name, ELM_Storage storage, int tupleSize = 1,
                                  ELM_TypeInfo typeInfo = ELM_TYPE_NONE, ELM_Scope scope = ELM_SCOPE_PUBLIC);

    /// A group to write, made when there is none.
    ELM_Group *group(ELM_Owner owner, std::string_view name);

    /// Drop an attribute or a group.  "P" cannot be dropped.
    [[nodiscard]] bool removeAttribute(ELM_Owner owner, std::string_view name, ELM_Scope scope = ELM_SCOPE_PUBLIC);
    [[nodiscard]] bool removeGroup(ELM_Owner owner, std::string_view name);

    // ---- The end

    /// Publish the changes, as one step for every reader, and end the edit.  Returns the detail's current snapshot: a new
    /// one when something was touched.
    MOD_ConstDetailHandle commit();

    /// Drop the changes and end the edit.
    void abort();

    /// Why the last operation failed, or what it had to copy.
    const std::string &message() const { return message_; }

private:
    struct Primitives;

    bool appendPrimitives(Primitives &added, const MOD_Indices &points);
    bool appendEach(ELM_PrimitiveTypeId type, int32_t corners, MSH_PayloadHandle payload, const MOD_Indices &points,
                    const MOD_Matrices &transforms = {});
    bool appendRuns(ELM_PrimitiveTypeId type, std::span<const int32_t> corners, MSH_PayloadHandle payload,
                    const MOD_Indices &points);
    bool appendOne(ELM_PrimitiveTypeId type, MSH_PayloadHandle payload, const MOD_Indices &points);
    bool checkPayloads(const Primitives &added);
    void writePayloads(const Primitives &added);
    void writeTransforms(const Primitives &added);
    bool prepare(Primitives &added, int64_t points);
    void appendRows(const Primitives &added);

    struct Lent;
    bool adoptPrimitives(Primitives &added, const Lent &list);
    bool adoptList(const Lent &list, int64_t low, bool adds);
    template <class Index> bool adoptColumn(const Lent &list, int64_t low, bool adds);

    bool isRange(const ELM_Range &range);
    bool refersToLive(std::span<const int32_t> points);
    bool refersToLive(std::span<const int64_t> points);
    BAS_BitArray &liveBits(ELM_Owner owner, int64_t capacity);
    void setCapacity(ELM_Owner owner, int64_t capacity);
    void vacate(ELM_Owner owner, const ELM_Range &gone);
    void removePoints(const ELM_Range &gone);
    void removePrimitives(const ELM_Range &gone);
    void disconnect(const ELM_Range &gonePoints);
    void compact(ELM_Owner owner, MSH_DetailData &data);

    // Every change runs through here: when it fails, or memory does, the rows that it added are taken back.
    bool attempt(const std::function<bool()> &change);
    void dropRows();
    bool isOpen();
    bool fail(std::string message);

    bool isAttribute(ELM_Owner owner, std::string_view name, ELM_Storage storage, int tupleSize);
    struct Shape;
    ELM_Attribute *writable(ELM_Owner owner, ELM_Scope scope, std::string_view name, const Shape &shape);
    ELM_Attribute *touch(ELM_Attribute *attribute);
    void resizeAttributes(ELM_Owner owner, int64_t size);
    void finishColumns();

    MOD_DetailHandle detail_;
    std::unique_lock<std::mutex> editing_;
    MSH_DetailData data_;
    std::unordered_set<const ELM_Attribute *> touched_;
    bool topologyChanged_ = false;
    bool changed_ = false;
    std::string message_;
};
