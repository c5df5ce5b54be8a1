#include <apps/viewport/Display.h>

#include <algorithm>

#include <fmt/format.h>

#include <apps/viewport/ItemPainter.h>
#include <apps/viewport/siftTriangles.h>
#include <apps/viewport/MaterialColours.h>

namespace rq::viewport
{
namespace
{
void addIds(const RQ_AttributeListHandle &list, std::unordered_set<int64_t> &ids)
{
    for (int i = 0; list && i < list->entries(); ++i)
        if (const RQ_DataArrayHandle &array = list->get(i))
            ids.insert(array->getDataId());
}

std::unordered_set<int64_t> idsOf(const Scene &scene)
{
    std::unordered_set<int64_t> ids;
    for (const Item &item : scene.items())
    {
        const Form &form = *item.form;
        for (const RQ_DataArrayHandle &array : {form.positions, form.corners, form.cornerSources, form.faceSources,
                                                form.edges, form.normals, form.faceSets, item.matrices})
            if (array)
                ids.insert(array->getDataId());
        for (int owner = RQ_OWNER_VERTEX; owner <= RQ_OWNER_DETAIL; ++owner)
            addIds(item.primitive->getAttributeList(owner), ids);
        addIds(item.placements.attributes, ids);
        if (item.materials)
            ids.insert(item.materials->found.array->getDataId());
    }
    return ids;
}
}  // namespace

bool hasGraphicsCard()
{
    const std::string_view name = reinterpret_cast<const char *>(glGetString(GL_RENDERER));
    constexpr std::string_view kPrograms[] = {"llvmpipe", "softpipe", "SwiftShader", "Software"};
    return std::ranges::none_of(kPrograms, [&](std::string_view program) { return name.find(program) != name.npos; });
}

int samplesOf(const Scene &scene)
{
    constexpr int64_t kDense = 2000000;
    return scene.triangles() > kDense && !hasGraphicsCard() ? 1 : 4;
}

struct Display::State
{
    SceneHandle scene;
    DisplayStatistics statistics;
    Legend legend;
    ColourRanges ranges;
    Buffers buffers;
    ItemPainter painter{buffers, statistics};

    void begin(const DrawStyle &style, int width, int height);
    void chooseLegend(const ColourSource &source);
};

Display::Display(std::unique_ptr<State> state) : state_(std::move(state)) {}
Display::~Display() = default;

std::unique_ptr<Display> Display::create(std::string &error)
{
    const int version = epoxy_gl_version();
    if (!epoxy_is_desktop_gl() || version < 10 * kGLMajor + kGLMinor)
    {
        error = fmt::format("the graphics driver has OpenGL {}.{}, and {}.{} is needed", version / 10, version % 10,
                            kGLMajor, kGLMinor);
        return nullptr;
    }
    std::unique_ptr<Display> display(new Display(std::make_unique<State>()));
    return display->state_->painter.prepare(error) ? std::move(display) : nullptr;
}

void Display::setScene(const SceneHandle &scene)
{
    if (scene == state_->scene)
        return;
    DisplayStatistics &statistics = state_->statistics;
    statistics.uploadedBytes = statistics.copiedBytes = 0;
    statistics.buffersKept = statistics.buffersRefreshed = 0;
    state_->scene = scene;
    state_->buffers.retain(scene ? idsOf(*scene) : std::unordered_set<int64_t>(), statistics);
}

const SceneHandle &Display::scene() const { return state_->scene; }

// Whoever drew before may have left anything behind.
void Display::State::begin(const DrawStyle &style, int width, int height)
{
    statistics.triangles = statistics.trianglesDrawn = statistics.segments = statistics.points = statistics.draws = 0;
    glViewport(0, 0, width, height);
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_BLEND);
    glDisable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_PROGRAM_POINT_SIZE);
    (scene && samplesOf(*scene) == 1 ? glDisable : glEnable)(GL_MULTISAMPLE);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_TRUE);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glClearColor(style.background.x, style.background.y, style.background.z, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

void Display::State::chooseLegend(const ColourSource &source)
{
    legend = {false, titleOf(source), source.map, source.minimum, source.maximum};
    if (scene && source.by == ColourBy::Attribute)
        legend.shown = ranges.find(*scene, source, legend.minimum, legend.maximum);
}

bool Display::draw(const OrbitCamera &camera, const DrawStyle &style, int width, int height, std::string *error)
{
    State &state = *state_;
    state.begin(style, width, height);
    state.chooseLegend(style.colour);
    if (!state.scene || width < 1 || height < 1)
        return true;

    BAS_Mat4d fromMiddle;
    fromMiddle.setTranslation(state.scene->middle());
    const BAS_BoundingBox &bounds = state.scene->bounds();
    const float normalLength = bounds.isEmpty() ? 0.0f : 0.02f * bounds.size().length();
    GLint samples = 0;
    glGetIntegerv(GL_SAMPLES, &samples);
    const bool hasOneSample = samples < 2 || samplesOf(*state.scene) == 1;
    const Frame frame{camera.view(),
                      fromMiddle * camera.view(),
                      camera.projection(double(width) / height),
                      BAS_Vec3f(float(width), float(height), normalLength),
                      style,
                      state.legend,
                      hasOneSample && !hasGraphicsCard() && std::max(width, height) <= kLongestSifted};
    bool complete = true;
    std::string why;
    for (const Item &item : state.scene->items())
        complete = state.painter.draw(item, frame, why) && complete;
    state.buffers.release(state.statistics);
    glBindVertexArray(0);
    glUseProgram(0);
    if (!complete && error)
        *error = why;
    return complete;
}

const DisplayStatistics &Display::statistics() const { return state_->statistics; }
const Legend &Display::legend() const { return state_->legend; }
}  // namespace rq::viewport
