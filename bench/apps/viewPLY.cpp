#include <cmath>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

#include <apps/viewport/GLContext.h>
#include <apps/viewport/Target.h>
#include <bench/io/gridFile.h>
#include <host/mod/DetailHandle.h>
#include <io/Reader.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/prim/RefineCollect.h>

// From a file of five million triangles in the system's cache to its picture.
//
// "readCopyBuild" is what the bar of a viewport is made of: the file's bytes read, copied twice, and turned into vertex
// buffers (positions and corners, no normals).  "ours" waits for the last pixel; "redraw" is a picture of the same scene
// from another side.  The driver is a program on the same processors where there is no graphics card.
namespace
{
using namespace rq::viewport;

constexpr int kCells = 1582;
constexpr double kFaces = 2.0 * kCells * kCells, kPoints = (kCells + 1.0) * (kCells + 1.0);
constexpr int kWidth = 960, kHeight = 540;

std::string gridPLY()
{
    const bench::QuadMesh quads(kCells);
    std::string text = "ply\nformat binary_little_endian 1.0\nelement vertex " + std::to_string(quads.points()) +
                       "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
                       std::to_string(2 * quads.faces()) + "\nproperty list uchar int vertex_indices\nend_header\n";
    bench::appendBytes(text, quads.positions.data(), quads.positions.size() * sizeof(float));
    bench::forEachTriangle(quads, [&](const int32_t *points) {
        text += '\3';
        bench::appendBytes(text, points, 12);
    });
    return text;
}

/// The file, and something to draw it with.
struct Stage
{
    bench::TemporaryFile file{".ply", gridPLY()};
    std::string error;
    std::unique_ptr<GLContext> context = GLContext::create(error);
    std::unique_ptr<Display> display = context ? Display::create(error) : nullptr;
    std::unique_ptr<Target> target = display ? Target::create(kWidth, kHeight, 1, error) : nullptr;
    double turned = 0.0;  // degrees

    Stage()
    {
        if (!target)
            throw std::runtime_error(error);
        target->bind();
    }

    SceneHandle load() const
    {
        MOD_DetailHandle detail;
        rq::io::Messages messages;
        rq::io::load(file.path(), detail, messages);
        RQ_RefineCollect collect;
        RQ_MSHDetail::makeDetail(detail.read())->refine(collect, nullptr);
        std::vector<Shown> shown;
        for (int64_t i = 0; i < collect.entries(); ++i)
            shown.push_back({collect.getPrim(i), BAS_Mat4d()});
        return Scene::make(shown, Preparation());
    }

    double draw()
    {
        OrbitCamera camera;
        camera.orbit(turned, 0.0);
        camera.frame(display->scene()->bounds(), double(kWidth) / kHeight);
        display->draw(camera, DrawStyle(), kWidth, kHeight);
        glFinish();
        return std::abs(double(display->statistics().triangles) - kFaces);
    }

    double loadAndDraw()
    {
        display->setScene(load());
        return draw();
    }

    double drawAgain()
    {
        constexpr double kStep = 1.0;
        turned += kStep;
        return display->scene() ? draw() : loadAndDraw();
    }
};

/// Read, copied twice, and turned into buffers.
struct Plain
{
    std::vector<char> bytes, first, second;
    std::vector<float> points;
    std::vector<int32_t> corners;
    GLuint buffers[2] = {};

    explicit Plain(const std::string &path) : bytes(std::filesystem::file_size(path))
    {
        const int file = open(path.c_str(), O_RDONLY);
        size_t done = 0;
        for (ssize_t got = 1; got > 0 && done < bytes.size(); done += size_t(got))
            got = read(file, bytes.data() + done, bytes.size() - done);
        close(file);
        first = bytes;
        second = first;
        build();
    }
    ~Plain() { glDeleteBuffers(2, buffers); }
    Plain(const Plain &) = delete;
    Plain &operator=(const Plain &) = delete;

    void build()
    {
        const char *at = second.data() + std::string_view(second.data(), 1000).find("end_header\n") + 11;
        points.resize(3 * size_t(kPoints));
        std::memcpy(points.data(), at, 4 * points.size());
        at += 4 * points.size();
        corners.resize(3 * size_t(kFaces));
        for (size_t i = 0; i < corners.size(); i += 3, at += 13)
            std::memcpy(&corners[i], at + 1, 12);
        glCreateBuffers(2, buffers);
        glNamedBufferStorage(buffers[0], GLsizeiptr(4 * points.size()), points.data(), 0);
        glNamedBufferStorage(buffers[1], GLsizeiptr(4 * corners.size()), corners.data(), 0);
        glFinish();
    }
};

void addJob(const char *who, std::function<double(Stage &)> once)
{
    // The bytes of the file, read once, and those of the buffers, written once.
    const double bytes = kFaces * (13.0 + 12.0) + kPoints * (12.0 + 12.0);
    bench::add({"viewPLY", "grid5M", who, 2, kFaces, bytes, false, [once] {
                    const auto stage = std::make_shared<Stage>();
                    return bench::Work{[stage, once] { return once(*stage), std::shared_ptr<void>(); },
                                       [stage, once] { return once(*stage); }};
                }});
}

const bool registered = [] {
    addJob("ours", [](Stage &stage) { return stage.loadAndDraw(); });
    addJob("scene", [](Stage &stage) { return stage.load()->bounds().isEmpty() ? 1.0 : 0.0; });
    addJob("redraw", [](Stage &stage) { return stage.drawAgain(); });
    addJob("readCopyBuild", [](Stage &stage) {
        const Plain plain(stage.file.path());
        return double(plain.corners.size()) - 3.0 * kFaces;
    });
    return true;
}();
}  // namespace
