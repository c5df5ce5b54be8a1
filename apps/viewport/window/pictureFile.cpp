#include <apps/viewport/window/pictureFile.h>

#include <filesystem>

#include <fmt/format.h>

#include <apps/viewport/readPicture.h>

namespace rq::viewport
{
std::string writePicture(const std::string &folder, int width, int height, const Legend &legend)
{
    namespace fs = std::filesystem;
    fs::path path;
    int number = 0;
    do
        path = fs::path(folder) / fmt::format("rq-view-{}.png", ++number);
    while (fs::exists(path));
    Picture picture = readPicture(width, height);
    drawLegend(picture, legend);
    std::string error;
    return app::writePNG(path.string(), picture, error) ? "wrote " + path.lexically_normal().string()
                                                        : fmt::format("{}: error: {}", path.string(), error);
}
}  // namespace rq::viewport
