#include <apps/viewport/Scene.h>

#include <apps/viewport/SceneMaker.h>
#include <host/bas/Progress.h>

namespace rq::viewport
{
Scene::Scene() = default;
Scene::~Scene() = default;

SceneHandle Scene::make(const std::vector<Shown> &shown, const Preparation &preparation, const RQ_RefineParms *parms,
                        const Scene *previous, RQ_RefineCache *cache)
{
    const std::shared_ptr<Scene> scene(new Scene);
    scene->preparation_ = preparation;
    SceneMaker maker(*scene, parms, previous, cache);
    BAS_Progress progress("preparing");
    for (size_t i = 0; i < shown.size(); ++i)
    {
        if (progress.interrupted(double(i) / double(shown.size())))
            return nullptr;
        maker.add(i, shown[i]);
    }
    maker.finish();
    return progress.interrupted(1.0) ? nullptr : scene;
}

BAS_Vec3d Scene::middle() const
{
    const BAS_Vec3d middle = (BAS_Vec3d(bounds_.minimum()) + BAS_Vec3d(bounds_.maximum())) * 0.5;
    return bounds_.isEmpty() ? BAS_Vec3d(0.0) : middle;
}

int64_t Scene::triangles() const
{
    int64_t triangles = 0;
    for (const Item &item : items_)
        triangles += item.form->kind == FormKind::Triangles ? item.form->elements * item.copies() : 0;
    return triangles;
}

BAS_BoundingBox Scene::bounds(size_t shown) const
{
    BAS_BoundingBox box;
    for (const Item &item : items_)
        if (item.shown == shown)
            box.enlarge(item.bounds);
    return box;
}
}  // namespace rq::viewport
