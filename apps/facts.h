#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <apps/RefinedFile.h>
#include <host/bas/BoundingBox.h>
#include <host/bas/CopyCounter.h>
#include <host/bas/MemoryTracker.h>

namespace rq::app
{
/// What is known about an attribute of the host or of a primitive.
struct AttributeFacts
{
    std::string owner;
    std::string name;
    std::string storage;
    std::string type;       ///< empty when the values mean nothing special
    std::string className;  ///< empty for attributes of the host
    int64_t size = 0;
    int64_t entries = 0;
};

struct GroupFacts
{
    std::string owner;
    std::string name;
    int64_t entries = 0;
};

struct HostFacts
{
    int64_t points = 0;
    int64_t vertices = 0;
    int64_t primitives = 0;
    std::map<int, int64_t> types;  ///< primitives by type id
    std::vector<AttributeFacts> attributes;
    std::vector<GroupFacts> groups;
};

/// What is known about a primitive, for the first segment; what does not apply to its class stays empty.
struct PrimitiveFacts
{
    std::string className;
    std::string type;
    int typeId = -1;
    int depth = 0;
    std::optional<int64_t> faces;
    std::optional<int64_t> cells;
    std::optional<int64_t> curves;
    std::optional<int64_t> quadrics;
    std::optional<int64_t> instances;
    std::optional<int64_t> vertices;
    std::optional<int64_t> points;
    std::optional<int64_t> minCount;
    std::optional<int64_t> maxCount;
    std::optional<double> area;
    std::optional<double> volume;  ///< against the origin
    std::optional<double> perimeter;
    BAS_BoundingBox bounds;
    int segments = 1;
    int64_t memory = 0;
    std::vector<AttributeFacts> attributes;
};

struct FileFacts
{
    std::string file;
    HostFacts host;
    std::vector<PrimitiveFacts> primitives;
    BAS_CopyCounter::Totals copied{};  ///< bytes by cause, from before the refinement to after the measures
    double loadSeconds = 0;
    double refineSeconds = 0;
    std::array<int64_t, BAS_MEMORY_CATEGORIES> held{};  ///< bytes in use after that, by category
};

/// Find out about a file.  `before` is what was copied before the file was loaded.
FileFacts gatherFacts(const RefinedFile &refined, const BAS_CopyCounter::Totals &before);
}  // namespace rq::app
