#include <host/elm/PrimitiveFactory.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace
{
// One state of the registry: never changed once it is published, and kept, as readers hold no lock.
struct Registry
{
    std::vector<const ELM_PrimitiveDefinition *> inOrder;
    std::vector<const ELM_PrimitiveDefinition *> byId;
};

struct Factory
{
    std::atomic<const Registry *> current{nullptr};
    std::mutex adding;
    std::vector<std::unique_ptr<const Registry>> states;
    std::vector<std::unique_ptr<const ELM_PrimitiveDefinition>> definitions;

    Factory();
    void add(std::vector<ELM_PrimitiveDefinition> added);
};

Factory::Factory()
{
    const auto fixed = [](ELM_PrimitiveType id, const char *name, const char *label) {
        return ELM_PrimitiveDefinition{id, BAS_StringHolder::literal(name), BAS_StringHolder::literal(label), false};
    };
    add({fixed(ELM_PRIMITIVE_POLYGON, "polygon", "Polygon"),
         fixed(ELM_PRIMITIVE_NURBS_CURVE, "nurbs_curve", "NURBS Curve"),
         fixed(ELM_PRIMITIVE_BEZIER_CURVE, "bezier_curve", "Bezier Curve"),
         fixed(ELM_PRIMITIVE_GRID, "grid", "Grid"),
         fixed(ELM_PRIMITIVE_NURBS_SURFACE, "nurbs_surface", "NURBS Surface"),
         fixed(ELM_PRIMITIVE_BEZIER_SURFACE, "bezier_surface", "Bezier Surface"),
         fixed(ELM_PRIMITIVE_CIRCLE, "circle", "Circle"),
         fixed(ELM_PRIMITIVE_SPHERE, "sphere", "Sphere"),
         fixed(ELM_PRIMITIVE_TUBE, "tube", "Tube"),
         fixed(ELM_PRIMITIVE_PARTICLES, "particles", "Particle System"),
         fixed(ELM_PRIMITIVE_BLOB_ELLIPSOID, "blob_ellipsoid", "Ellipsoid Blob"),
         fixed(ELM_PRIMITIVE_BLOB_QUADRIC, "blob_quadric", "Super-quadric Blob"),
         fixed(ELM_PRIMITIVE_BLOB_CAPSULE, "blob_capsule", "Capsule Blob"),
         fixed(ELM_PRIMITIVE_BLOB_BOX, "blob_box", "Rounded Box Blob"),
         fixed(ELM_PRIMITIVE_BLOB_EXPRESSION, "blob_expression", "Blob Expression"),
         fixed(ELM_PRIMITIVE_TRIANGLE_FAN, "triangle_fan", "Triangle Fan"),
         fixed(ELM_PRIMITIVE_TRIANGLE_STRIP, "triangle_strip", "Triangle Strip"),
         fixed(ELM_PRIMITIVE_TRIANGULAR_PATCH, "triangular_patch", "Triangular Bezier Patch"),
         fixed(ELM_PRIMITIVE_VOLUME, "volume", "Volume"),
         fixed(ELM_PRIMITIVE_TETRAHEDRON, "tetrahedron", "Tetrahedron"),
         fixed(ELM_PRIMITIVE_SOUP, "polygon_soup", "Polygon Soup"),
         fixed(ELM_PRIMITIVE_SPARSE_VOLUME, "sparse_volume", "Sparse Volume"),
         fixed(ELM_PRIMITIVE_HEXAHEDRON, "hexahedron", "Hexahedron"),
         fixed(ELM_PRIMITIVE_CHANNEL, "channel", "Channel")});
}

void Factory::add(std::vector<ELM_PrimitiveDefinition> added)
{
    const Registry *last = current.load(std::memory_order_relaxed);
    auto next = last ? std::make_unique<Registry>(*last) : std::make_unique<Registry>();
    for (ELM_PrimitiveDefinition &definition : added)
    {
        definitions.push_back(std::make_unique<const ELM_PrimitiveDefinition>(std::move(definition)));
        const ELM_PrimitiveDefinition *kept = definitions.back().get();
        next->inOrder.push_back(kept);
        next->byId.resize(std::max(next->byId.size(), size_t(kept->id) + 1));
        next->byId[size_t(kept->id)] = kept;
    }
    states.push_back(std::move(next));
    current.store(states.back().get(), std::memory_order_release);
}

Factory &factory()
{
    static Factory theFactory;
    return theFactory;
}

const Registry &registry() { return *factory().current.load(std::memory_order_acquire); }
}  // namespace

int64_t ELM_PrimitiveFactory::count() { return int64_t(registry().inOrder.size()); }

const ELM_PrimitiveDefinition *ELM_PrimitiveFactory::find(ELM_PrimitiveTypeId id)
{
    const Registry &types = registry();
    return id < 0 || size_t(id) >= types.byId.size() ? nullptr : types.byId[size_t(id)];
}

const ELM_PrimitiveDefinition *ELM_PrimitiveFactory::find(std::string_view name)
{
    for (const ELM_PrimitiveDefinition *definition : registry().inOrder)
        if (definition->name.view() == name)
            return definition;
    return nullptr;
}

const ELM_PrimitiveDefinition *ELM_PrimitiveFactory::at(int64_t i)
{
    const Registry &types = registry();
    return i < 0 || size_t(i) >= types.inOrder.size() ? nullptr : types.inOrder[size_t(i)];
}

ELM_PrimitiveTypeId ELM_PrimitiveFactory::add(std::string_view name, std::string_view label, bool isPacked)
{
    Factory &types = factory();
    const std::lock_guard lock(types.adding);
    if (name.empty() || find(name))
        return ELM_PRIMITIVE_NONE;
    // One past the largest id so far; the fixed types end right before the first free one.
    const ELM_PrimitiveTypeId id = ELM_PrimitiveTypeId(registry().byId.size());
    if (id > INT16_MAX)
        return ELM_PRIMITIVE_NONE;
    types.add({{id, BAS_StringHolder(name), BAS_StringHolder(label), isPacked}});
    return id;
}
