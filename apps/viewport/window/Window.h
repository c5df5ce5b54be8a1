#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct GLFWwindow;

namespace rq::viewport
{
/// A movement of the mouse with a button held, in the window's units.
struct Drag
{
    enum Button
    {
        Left,
        Right,
        Middle
    };
    Button button;
    bool shift;  ///< held when the button was pressed
    double x, y;
};

/// A window with an OpenGL context, current as long as it lives, and the panels' library running in it.
///
/// Failure  `create` gives null with the reason
/// Threads  the program's first; one window at a time
class Window
{
public:
    static std::unique_ptr<Window> create(int width, int height, const char *title, std::string &error);
    ~Window();
    Window(const Window &) = delete;
    Window &operator=(const Window &) = delete;

    /// What comes from outside.  Keys and characters are not told while a panel takes them for text.
    std::function<void(unsigned character)> onCharacter;
    std::function<void(int key)> onKey;
    std::function<void(const std::vector<std::string> &paths)> onDrop;

    /// Every movement, however many there are between two pictures, that began in the view.
    std::function<void(const Drag &drag)> onDrag;

    /// Whether a place lies in the view, panels that float over it left aside.
    std::function<bool(double x, double y)> isInView;

    void setTitle(const std::string &title);
    bool wantsToClose() const;

    /// Wait for something to happen, at most so long, and handle it.  True when something did.
    bool wait(double seconds);

    /// Begin and end a picture: panels are made in between; `finish` draws them over what is there and shows it.
    void begin();
    void finish();

    /// In pixels.
    int width() const;
    int height() const;

private:
    explicit Window(GLFWwindow *window);

    void listen();
    void listenToMouse();
    void press(int button, bool pressed, bool shift);
    void moveTo(double x, double y);
    bool isOverPanel() const;

    GLFWwindow *window_;
    std::string title_;
    bool touched_ = true;
    std::optional<Drag> drag_;  ///< while a button is held
    double x_ = 0.0;            ///< where the mouse is
    double y_ = 0.0;
    bool moved_ = false;  ///< since the last picture
};
}  // namespace rq::viewport
