#include <apps/viewport/Scene.h>

#include <apps/viewport/Item.h>

namespace rq::viewport
{
Scene::Scene() = default;
Scene::~Scene() = default;

SceneHandle Scene::make(const std::vector<Shown> &, const Preparation &, const RQ_RefineParms *, const Scene *)
{
    return SceneHandle(new Scene);
}

BAS_BoundingBox Scene::bounds(size_t) const { return bounds_; }
}  // namespace rq::viewport
