#include <apps/offline/Scene.h>

#include <host/bas/hashBytes.h>
#include <apps/offline/InstanceDrawable.h>
#include <apps/offline/Search.h>

namespace rq::offline
{
struct Scene::Device
{
    RTCDevice device = rtcNewDevice(nullptr);

    Device() = default;
    ~Device() { rtcReleaseDevice(device); }
    Device(const Device &) = delete;
    Device &operator=(const Device &) = delete;
};

Scene::Scene(const RQ_RefineParms *parms, const Look &look)
    : look_(look), palette_(look), device_(new Device), stage_{device_->device, parms, &palette_},
      whole_(std::make_unique<Group>(stage_))
{}

Scene::~Scene() = default;

void Scene::commit(UpAxis up)
{
    whole_->commit(up);
    fromFile_ = Affine(whole_->toUnit());
    out_ = Affine(whole_->placement()).inverse().then(fromFile_);
    in_ = out_.inverse();
    outline_ = Outline(out_);
    whole_->addTo(outline_);
    if (!palette_.hasValues())
        stage_.complaints.push_back("nothing has an attribute \"" + look_.attribute + "\" of finite numbers");
}

bool Scene::intersect(const Ray &ray, Hit &hit) const
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    Ray inner = in_.ray(ray);
    RTCRayHit found = {};
    found.ray = makeRay(inner, 0.0f, kInfinity);
    found.hit.geomID = found.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    Search search;
    whole_->intersect(found, search);
    if (found.hit.geomID == RTC_INVALID_GEOMETRY_ID)
        return false;

    // Down the way that the search found, to the space of what was hit.
    const Group *group = whole_.get();
    const int depth = found.hit.instID[0] == RTC_INVALID_GEOMETRY_ID ? 0 : search.found.depth;
    Affine out = out_;
    uint64_t number = 0;
    for (int i = 0; i < depth; ++i)
    {
        const auto &[drawable, instance] = search.found.steps[i];
        inner = drawable->in(instance, ray.time).ray(inner);
        out = drawable->out(instance, ray.time).then(out);
        number = host::hashWord(number, uint64_t(instance) + 1);
        group = &drawable->group();
    }

    hit = Hit();
    hit.distance = found.ray.tfar;
    hit.time = ray.time;
    hit.position = inner.origin + inner.direction * hit.distance;
    hit.facetNormal = BAS_Vec3f(found.hit.Ng_x, found.hit.Ng_y, found.hit.Ng_z).normalized();
    if ((hit.facetNormal ^ inner.direction) > 0.0f)
        hit.facetNormal = -hit.facetNormal;
    group->drawable(found.hit.geomID).shade(found.hit.primID, found.hit.u, found.hit.v, hit);

    for (int i = depth; i-- > 0;)
        search.found.steps[i].drawable->colour(search.found.steps[i].instance, hit);
    if (look_.shade == Look::Primitives)
        hit.material = {Palette::distinct(host::hashWord(number, found.hit.geomID))};
    const BAS_Vec3f lift = hit.shadowOrigin - hit.position;
    hit.position = ray.origin + ray.direction * hit.distance;
    hit.shadowOrigin = hit.position + out.vector(lift);
    hit.facetNormal = out.normal(hit.facetNormal);
    hit.normal = out.normal(hit.normal);
    hit.edge *= float(out.scale());
    return true;
}

bool Scene::occluded(const Ray &ray) const
{
    RTCRay found = makeRay(in_.ray(ray), 0.0f, std::numeric_limits<float>::infinity());
    Search search;
    whole_->occluded(found, search);
    return found.tfar < 0.0f;
}

int64_t Scene::sharedBytes() const
{
    int64_t bytes = whole_->sharedBytes();
    for (const auto &[geometry, group] : stage_.shared)
        bytes += group->sharedBytes();
    return bytes;
}
}  // namespace rq::offline
