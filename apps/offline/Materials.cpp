#include <apps/offline/Materials.h>

#include <apps/offline/Palette.h>
#include <host/bas/hashBytes.h>

namespace rq::offline
{
Material clay() { return {toLight({0.66f, 0.63f, 0.585f})}; }

Materials::Materials(const RQ_Primitive &primitive) : surface_(primitive)
{
    for (const app::SurfaceMaterials::Named &named : surface_.all())
        if (named.isTold)
            materials_.push_back({toLight(named.colour), named.roughness, named.metalness});
        else
            materials_.push_back({Palette::distinct(host::hashBytes(named.name.view()))});
}

const Material &Materials::at(const Element &element) const
{
    return materials_[surface_.entries() == 0 ? 0 : size_t(surface_.of(element.entry(surface_.owner())) + 1)];
}
}  // namespace rq::offline
