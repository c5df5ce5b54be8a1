#include <host/elm/PrimitiveFactory.h>

#include <atomic>
#include <memory>
#include <mutex>

#include <host/elm/detail/builtInTypes.h>

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

Factory::Factory() { add(host::builtInTypes()); }

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
    ELM_PrimitiveDefinition definition;
    definition.name = BAS_StringHolder(name);
    definition.label = BAS_StringHolder(label);
    definition.isPacked = definition.isPlaced = isPacked;
    return add(std::move(definition));
}

ELM_PrimitiveTypeId ELM_PrimitiveFactory::add(ELM_PrimitiveDefinition definition)
{
    Factory &types = factory();
    const std::lock_guard lock(types.adding);
    if (definition.name.isEmpty() || find(definition.name.view()))
        return ELM_PRIMITIVE_NONE;
    // One past the largest id so far; the built-in types end right before the first free one.
    const ELM_PrimitiveTypeId id = ELM_PrimitiveTypeId(registry().byId.size());
    if (id > INT16_MAX)
        return ELM_PRIMITIVE_NONE;
    definition.id = id;
    types.add({std::move(definition)});
    return id;
}
