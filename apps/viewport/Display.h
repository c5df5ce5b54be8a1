#pragma once

#include <memory>
#include <string>

#include <apps/viewport/OrbitCamera.h>
#include <apps/viewport/Scene.h>

namespace rq::viewport
{
/// The version of OpenGL (core profile) that a context must have.
constexpr int kGLMajor = 4;
constexpr int kGLMinor = 5;

/// What the graphics card holds and was given.
struct DisplayStatistics
{
    // Since the last `setScene`.
    int64_t uploadedBytes = 0;
    int64_t copiedBytes = 0;  ///< of those, converted or gathered on the way: not uploaded from where the library has them
    int buffersKept = 0;
    int buffersRefreshed = 0;

    int64_t gpuBytes = 0;

    // Of the last picture.
    int64_t triangles = 0;
    int64_t trianglesDrawn = 0;  ///< of those, the ones that the driver was given: see `siftTriangles`
    int64_t segments = 0;
    int64_t points = 0;
    int64_t draws = 0;
};

/// Whether the current context draws on a graphics card, not by a program in its place.
bool hasGraphicsCard();

/// Samples a pixel that a scene deserves in the current context.  Where triangles are smaller than pixels their edges are
/// everywhere and there is little to smooth, but a program in place of a graphics card looks at each sample: then one is
/// taken, even of a framebuffer that has more.
int samplesOf(const Scene &scene);

/// The range that colours stand for in the last picture; `shown` is false where they stand for no numbers.
struct Legend
{
    bool shown = false;
    std::string title;
    ColourMap map = ColourMap::Spectrum;
    double minimum = 0.0;
    double maximum = 1.0;
};

/// Draws a scene with OpenGL.
///
/// Every array is uploaded from the library's own memory, when a picture first needs it, and known by its data id: what a
/// new scene has in common with the last stays where it is.
///
/// Failure  messages; a picture is drawn without what failed
/// Threads  belongs to the thread whose context was current at `create`, which must be current in every call and at the end
class Display
{
public:
    /// Null with the reason in `error` when the current context cannot do it.
    static std::unique_ptr<Display> create(std::string &error);
    ~Display();
    Display(const Display &) = delete;
    Display &operator=(const Display &) = delete;

    /// Show a scene from now on.  What only the last one used is let go with the next picture.
    void setScene(const SceneHandle &scene);
    const SceneHandle &scene() const;

    /// Draw into the bound framebuffer, over all of it.  False, with a message, when something had to be left out.
    bool draw(const OrbitCamera &camera, const DrawStyle &style, int width, int height, std::string *error = nullptr);

    const DisplayStatistics &statistics() const;
    const Legend &legend() const;

private:
    struct State;
    explicit Display(std::unique_ptr<State> state);

    std::unique_ptr<State> state_;
};
}  // namespace rq::viewport
