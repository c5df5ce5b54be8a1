#pragma once

#include <memory>
#include <string>

#include <apps/viewport/Display.h>
#include <apps/viewport/MaterialColours.h>
#include <apps/viewport/Session.h>
#include <apps/viewport/window/WindowOptions.h>
#include <apps/viewport/window/attributeTexts.h>
#include <apps/viewport/window/keys.h>

namespace rq::viewport
{
/// What a window shows, and what can be done with it by key, mouse and panel.
///
/// Threads  the window's
class Viewer
{
public:
    /// `notify` is called on another thread when there is something new.
    Viewer(std::unique_ptr<Display> display, const WindowOptions &options, std::function<void()> notify);

    void open(const std::vector<std::string> &paths);
    void run(Command command);

    /// Let time pass, and take over what the session has made.  True when something is to be drawn anew.
    bool update(double seconds);

    /// Draw the scene into the bound framebuffer.
    void draw(int width, int height);

    // Mouse movements, in parts of the view's height.
    void orbit(double x, double y);
    void pan(double x, double y) { camera_.pan(x, y); }
    void zoom(double steps);

    void select(int primitive);

    /// Set an option of refinement; a change of how primitives are made ready.
    void setParms(const RQ_RefineParms &parms) { session_.setParms(parms); }
    void setPreparation(const Preparation &preparation);
    Shading shading() const { return session_.preparation().shading; }

    Session &session() { return session_; }
    const Session &session() const { return session_; }
    const Display &display() const { return *display_; }
    const ResultHandle &result() const { return result_; }

    /// The attributes that can be shown as colour, of all primitives.
    const std::vector<AttributeRow> &colourChoices() const { return choices_; }

    /// The materials of what is shown.
    const std::vector<MaterialRow> &materials() const { return materials_; }

    /// What is wrong at the moment: of files, of what was refined, of drawing.
    std::string complaint() const;

    /// Whether the view is redrawn without anybody touching it.
    bool isBusy() const { return session_.status().busy || session_.player().isPlaying(); }

    /// What the window's title says.
    std::string title() const;

    double drawSeconds() const { return drawSeconds_; }

    /// How long the session has been at work without a pause.
    double busySeconds() const { return busySeconds_; }

    DrawStyle style;
    bool showsSidebar = true;
    bool showsHelp = false;
    bool quits = false;
    bool wantsPicture = false;  ///< the next one drawn is to be written to a file
    std::string notice;         ///< what was done last, for a person

private:
    void frame(bool selectedOnly);
    void stop();
    void nextColour();
    void nextShading();
    void scaleLevel(double factor);
    void takeOver(const ResultHandle &result);

    Session session_;
    std::unique_ptr<Display> display_;
    OrbitCamera camera_;
    ResultHandle result_;
    std::vector<AttributeRow> choices_;
    std::vector<MaterialRow> materials_;
    std::string drawError_;
    std::optional<UpAxis> up_;
    double zoomNext_;
    bool framesNext_ = true;
    double aspect_ = 1.0;
    double drawSeconds_ = 0.0;
    double busySeconds_ = 0.0;
};
}  // namespace rq::viewport
