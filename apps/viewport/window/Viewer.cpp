#include <apps/viewport/window/Viewer.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>

#include <fmt/format.h>

namespace rq::viewport
{
namespace
{
constexpr double kDegreesPerHeight = 270.0;
constexpr double kZoomPerStep = 1.15;

// Of the time of a picture, so that the figure can be read.
constexpr double kSmoothing = 0.2;

/// What a command turns on and off; null when it does something else.
bool *flagOf(Viewer &viewer, Command command)
{
    switch (command)
    {
    case Command::ToggleWire:
        return &viewer.style.wire;
    case Command::TogglePoints:
        return &viewer.style.points;
    case Command::ToggleNormals:
        return &viewer.style.normals;
    case Command::ToggleFaces:
        return &viewer.style.faces;
    case Command::ToggleBackFaces:
        return &viewer.style.backFaceTint;
    case Command::ToggleSidebar:
        return &viewer.showsSidebar;
    case Command::ToggleHelp:
        return &viewer.showsHelp;
    default:
        return nullptr;
    }
}
}  // namespace

Viewer::Viewer(std::unique_ptr<Display> display, const WindowOptions &options, std::function<void()> notify)
    : style(options.style), session_({options.parms, options.preparation, options.change, std::move(notify)}),
      display_(std::move(display)), camera_(options.camera), up_(options.up), zoomNext_(options.zoom)
{}

void Viewer::open(const std::vector<std::string> &paths)
{
    framesNext_ = true;
    notice.clear();
    session_.open(paths);
}

bool Viewer::update(double seconds)
{
    session_.tick(seconds);
    busySeconds_ = session_.status().busy ? busySeconds_ + seconds : 0.0;
    const ResultHandle result = session_.takeResult();
    if (result)
        takeOver(result);
    return result != nullptr;
}

void Viewer::takeOver(const ResultHandle &result)
{
    result_ = result;
    choices_ = viewport::colourChoices(result->emitted);
    materials_ = materialsOf(*result->scene);
    style.selected = std::min(style.selected, int(result->emitted.size()) - 1);
    display_->setScene(result->scene);
    camera_.setSceneBounds(result->scene->bounds());
    if (!framesNext_)
        return;
    framesNext_ = false;
    style.selected = -1;
    camera_.setUpAxis(up_.value_or(likelyUpAxis(result->scene->bounds())));
    frame(false);
    camera_.zoom(std::exchange(zoomNext_, 1.0));
}

void Viewer::frame(bool selectedOnly)
{
    if (!result_)
        return;
    const BAS_BoundingBox &whole = result_->scene->bounds();
    const bool isPart = selectedOnly && style.selected >= 0;
    camera_.frame(isPart ? result_->scene->bounds(size_t(style.selected)) : whole, aspect_);
    camera_.setSceneBounds(whole);
}

void Viewer::draw(int width, int height)
{
    const auto start = std::chrono::steady_clock::now();
    aspect_ = double(std::max(1, width)) / double(std::max(1, height));
    drawError_.clear();
    display_->draw(camera_, style, width, height, &drawError_);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    drawSeconds_ += (drawSeconds_ > 0.0 ? kSmoothing : 1.0) * (seconds - drawSeconds_);
}

void Viewer::orbit(double x, double y) { camera_.orbit(-x * kDegreesPerHeight, -y * kDegreesPerHeight); }
void Viewer::zoom(double steps) { camera_.zoom(std::pow(kZoomPerStep, steps)); }

void Viewer::select(int primitive)
{
    const int count = result_ ? int(result_->emitted.size()) : 0;
    style.selected = count == 0 ? -1 : std::clamp(primitive, -1, count - 1);
}

void Viewer::setPreparation(const Preparation &preparation) { session_.setPreparation(preparation); }

void Viewer::nextShading()
{
    Preparation preparation = session_.preparation();
    preparation.shading = Shading((int(preparation.shading) + 1) % (int(Shading::Flat) + 1));
    setPreparation(preparation);
}

void Viewer::nextColour()
{
    ColourSource &colour = style.colour;
    switch (colour.by)
    {
    case ColourBy::Own:
        colour.by = ColourBy::Plain;
        return;
    case ColourBy::Plain:
        colour.by = !materials_.empty() ? ColourBy::Attribute : ColourBy::FaceSet;
        if (!materials_.empty())
            colour.name = kMaterialName, colour.owner = RQ_OWNER_INVALID;
        return;
    case ColourBy::FaceSet:
        colour.by = choices_.empty() ? ColourBy::Own : ColourBy::Attribute;
        if (!choices_.empty())
            colour.name = choices_.front().name, colour.owner = choices_.front().owner;
        return;
    case ColourBy::Attribute:
        colour.by = colour.isByMaterial() ? ColourBy::FaceSet : ColourBy::Own;
        return;
    }
}

void Viewer::scaleLevel(double factor)
{
    RQ_RefineParms parms(session_.parms());
    parms.setLOD(std::clamp(parms.getLOD() * factor, 1.0 / 16.0, 16.0));
    setParms(parms);
    notice = fmt::format("level of detail {:.3g}", parms.getLOD());
}

void Viewer::stop()
{
    if (session_.status().busy)
        session_.cancel();
    else if (showsHelp)
        showsHelp = false;
    else
        style.selected = -1;
}

void Viewer::run(Command command)
{
    constexpr double kFiner = 1.25;
    if (bool *flag = flagOf(*this, command))
    {
        *flag = !*flag;
        return;
    }
    switch (command)
    {
    case Command::FrameSelected:
        return frame(true);
    case Command::FrameAll:
        return frame(false);
    case Command::ViewFront:
        return camera_.setAngles(0.0, 0.0);
    case Command::ViewRight:
        return camera_.setAngles(90.0, 0.0);
    case Command::ViewTop:
        return camera_.setAngles(0.0, 90.0);
    case Command::NextShading:
        return nextShading();
    case Command::NextColour:
        return nextColour();
    case Command::SelectPrevious:
        return select(std::max(0, style.selected - 1));
    case Command::SelectNext:
        return select(style.selected + 1);
    case Command::SelectNothing:
        return stop();
    case Command::TogglePlaying:
        return session_.player().togglePlaying();
    case Command::PreviousFrame:
        return session_.player().step(-1);
    case Command::NextFrame:
        return session_.player().step(1);
    case Command::Finer:
        return scaleLevel(kFiner);
    case Command::Coarser:
        return scaleLevel(1.0 / kFiner);
    case Command::Reload:
        return session_.reload();
    case Command::Screenshot:
        wantsPicture = true;
        return;
    case Command::Quit:
        quits = true;
        return;
    default:
        return;
    }
}

std::string Viewer::complaint() const
{
    std::string text = session_.status().error;
    if (result_)
    {
        text += result_->warnings;
        for (const std::string &complaint : result_->scene->complaints())
            text += complaint + '\n';
    }
    return drawError_.empty() ? text : text + drawError_ + '\n';
}

std::string Viewer::title() const
{
    if (!result_)
        return "rq view";
    std::string name = std::filesystem::path(result_->files.front()).filename().string();
    if (result_->files.size() > 1)
        name += fmt::format(" and {} more", result_->files.size() - 1);
    if (const int frames = session_.player().frames(); frames > 1)
        name += fmt::format(" ({}/{})", result_->frame + 1, frames);
    return name + " - rq view";
}
}  // namespace rq::viewport
