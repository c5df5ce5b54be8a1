#include <tests/apps/VirtualDisplay.h>

#include <cstdlib>

#include <fmt/format.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <fcntl.h>
#include <unistd.h>

namespace tests
{
namespace
{
bool isInstalled(const std::string &program)
{
    return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
}

// What a server that is about to start writes as its number; empty when it does not start.
std::string readLine(int descriptor)
{
    std::string line;
    for (char c; read(descriptor, &c, 1) == 1 && c != '\n';)
        line += c;
    return line;
}
}  // namespace

struct VirtualDisplay::Server
{
    std::unique_ptr<RunningProgram> program;
    ::Display *connection = nullptr;

    ~Server()
    {
        if (connection)
            XCloseDisplay(connection);
    }

    // The window on top that is shown and has a name.
    Window window() const
    {
        Window root, parent, *children = nullptr, found = None;
        unsigned count = 0;
        XQueryTree(connection, DefaultRootWindow(connection), &root, &parent, &children, &count);
        for (unsigned i = 0; i < count; ++i)
        {
            XWindowAttributes attributes;
            char *name = nullptr;
            if (XGetWindowAttributes(connection, children[i], &attributes) && attributes.map_state == IsViewable &&
                XFetchName(connection, children[i], &name) && name)
                found = children[i];
            if (name)
                XFree(name);
        }
        if (children)
            XFree(children);
        return found;
    }

    Atom atom(const char *name) const { return XInternAtom(connection, name, False); }

    void send(Window window, const char *type, long a, long b, long c, long d, long e) const
    {
        XEvent event = {};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = atom(type);
        event.xclient.format = 32;
        const long values[] = {a, b, c, d, e};
        std::copy(std::begin(values), std::end(values), event.xclient.data.l);
        XSendEvent(connection, window, False, NoEventMask, &event);
        XFlush(connection);
    }

    // Give the one who asks what is dropped.
    void answer(const XSelectionRequestEvent &request, const std::string &content) const
    {
        XChangeProperty(connection, request.requestor, request.property, request.target, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char *>(content.data()), int(content.size()));
        XEvent event = {};
        event.xselection.type = SelectionNotify;
        event.xselection.requestor = request.requestor;
        event.xselection.selection = request.selection;
        event.xselection.target = request.target;
        event.xselection.property = request.property;
        event.xselection.time = request.time;
        XSendEvent(connection, request.requestor, False, NoEventMask, &event);
        XFlush(connection);
    }
};

VirtualDisplay::VirtualDisplay() : server_(new Server) {}
VirtualDisplay::~VirtualDisplay() = default;

std::unique_ptr<VirtualDisplay> VirtualDisplay::start(int width, int height)
{
    if (!isInstalled("Xvfb") || !isInstalled("xdotool"))
        return nullptr;
    // Windows come and go while they are looked at.
    XSetErrorHandler([](::Display *, XErrorEvent *) { return 0; });
    std::unique_ptr<VirtualDisplay> display(new VirtualDisplay);
    // Servers that start at the same time may want the same number; all but one of them end then.
    for (int tries = 0; tries < 5 && !display->server_->connection; ++tries)
        display->open(fmt::format("{}x{}x24", width, height));
    return display->server_->connection ? std::move(display) : nullptr;
}

void VirtualDisplay::open(const std::string &screen)
{
    int ends[2];
    if (pipe(ends) != 0)
        return;
    server_->program = std::make_unique<RunningProgram>(
        std::vector<std::string>{"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0", screen, "-nolisten", "tcp"},
        [] { dup2(::open("/dev/null", O_WRONLY), STDERR_FILENO); });
    close(ends[1]);
    name_ = fmt::format(":{}", readLine(ends[0]));
    close(ends[0]);
    server_->connection = XOpenDisplay(name_.c_str());
}

std::string VirtualDisplay::title() const
{
    char *name = nullptr;
    const Window window = server_->window();
    std::string title;
    if (window != None && XFetchName(server_->connection, window, &name) && name)
        title = name;
    if (name)
        XFree(name);
    return title;
}

WindowPicture VirtualDisplay::picture() const
{
    WindowPicture picture;
    XWindowAttributes attributes;
    const Window window = server_->window();
    if (window == None || !XGetWindowAttributes(server_->connection, window, &attributes))
        return picture;
    XImage *image = XGetImage(server_->connection, window, 0, 0, unsigned(attributes.width), unsigned(attributes.height),
                              AllPlanes, ZPixmap);
    if (!image)
        return picture;
    picture.width = attributes.width;
    picture.height = attributes.height;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
        {
            const unsigned long pixel = XGetPixel(image, x, y);
            for (const int shift : {16, 8, 0})
                picture.rgb.push_back(static_cast<unsigned char>(pixel >> shift & 0xff));
        }
    XDestroyImage(image);
    return picture;
}

void VirtualDisplay::resize(int width, int height) const
{
    XResizeWindow(server_->connection, server_->window(), unsigned(width), unsigned(height));
    XSync(server_->connection, False);
}

void VirtualDisplay::input(const std::string &words) const
{
    XSetInputFocus(server_->connection, server_->window(), RevertToPointerRoot, CurrentTime);
    XSync(server_->connection, False);
    if (std::system(("DISPLAY=" + name_ + " timeout 60 xdotool " + words).c_str()) != 0)
        std::abort();
}

bool VirtualDisplay::drop(const std::string &path) const
{
    ::Display *const connection = server_->connection;
    const Window target = server_->window();
    const Window source = XCreateSimpleWindow(connection, DefaultRootWindow(connection), 0, 0, 1, 1, 0, 0, 0);
    const long from = long(source);
    XSetSelectionOwner(connection, server_->atom("XdndSelection"), source, CurrentTime);
    XWindowAttributes at;
    XGetWindowAttributes(connection, target, &at);
    const long middle = long(at.x + at.width / 2) << 16 | long(at.y + at.height / 2);
    constexpr long kVersion = 5;
    server_->send(target, "XdndEnter", from, kVersion << 24, long(server_->atom("text/uri-list")), 0, 0);
    server_->send(target, "XdndPosition", from, 0, middle, CurrentTime, long(server_->atom("XdndActionCopy")));
    server_->send(target, "XdndDrop", from, 0, CurrentTime, 0, 0);

    bool finished = false;
    waitUntil([&] {
        while (XPending(connection) > 0)
        {
            XEvent event;
            XNextEvent(connection, &event);
            if (event.type == SelectionRequest)
                server_->answer(event.xselectionrequest, "file://" + path + "\r\n");
            if (event.type == ClientMessage && event.xclient.message_type == server_->atom("XdndFinished"))
                finished = true;
        }
        return finished;
    });
    XDestroyWindow(connection, source);
    return finished;
}
}  // namespace tests
