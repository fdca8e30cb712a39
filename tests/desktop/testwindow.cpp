// The test window of the desktop tests: a top-level window with one child,
// both with a known class and title, that logs every button, key and motion
// event it receives, one line per event, flushed at once:
//
//   ready top=0x400001 child=0x400002 x=100 y=100 width=600 height=400 childx=150 childy=150
//   ButtonPress win=child sent=0 time=1234 x=10 y=20 root=160,170 at=5021.337012 button=1 state=0x0
//   KeyPress win=top sent=1 time=0 x=0 y=0 root=0,0 at=5021.337090 keycode=38 keysym=0x61 state=0x0
//
// "ready" comes once the top-level window is mapped and has the focus; x and
// y are the root positions of the windows' insides. Positions of the child
// are the child's own. at is when the window read the event, in seconds of
// the monotonic clock: where the benchmarks see delivery end. keysym is the
// one XLookupString reads from the key and the event's state (its level and
// group), read when the event is handled.
//
// usage: tarvoke-testwindow [--class C] [--title T] [--child-class C]
//                           [--geometry WxH+X+Y] [--log FILE] [--pid no] [--focus late]

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <unistd.h>

namespace {

struct Options {
    std::string windowClass = "TarvokeTest";
    std::string title = "Tarvoke Test Window";
    std::string childClass = "TarvokeChild";
    int x = 100, y = 100, width = 600, height = 400;
    const char* log = nullptr;
    bool publishPid = true;  // "--pid no" leaves _NET_WM_PID out, as plain Xt programs do
    // "--focus late": the window manager never focuses the window, which takes
    // the focus itself a moment after a click, as some managers give it.
    bool lateFocus = false;
};

Options parseOptions(int argc, char** argv) {
    Options o;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        const char* value = argv[i + 1];
        std::string* text = name == "--class" ? &o.windowClass : name == "--title" ? &o.title
                          : name == "--child-class" ? &o.childClass : nullptr;
        if (text) *text = value;
        else if (name == "--log") o.log = value;
        else if (name == "--pid") o.publishPid = std::strcmp(value, "no") != 0;
        else if (name == "--focus") o.lateFocus = std::strcmp(value, "late") == 0;
        else if (name == "--geometry") std::sscanf(value, "%dx%d+%d+%d", &o.width, &o.height, &o.x, &o.y);
        else {
            std::fprintf(stderr, "tarvoke-testwindow: unknown option %s\n", name.c_str());
            std::exit(2);
        }
    }
    return o;
}

void setNames(Display* display, Window window, const std::string& windowClass, const std::string& title) {
    XClassHint hint;
    // The instance name in lower case, as programs have it, so that it is
    // never taken for the class.
    std::string name = windowClass, instance;
    for (char c : windowClass) instance += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    hint.res_name = instance.data();
    hint.res_class = name.data();
    XSetClassHint(display, window, &hint);
    XStoreName(display, window, title.c_str());
    XChangeProperty(display, window, XInternAtom(display, "_NET_WM_NAME", False),
                    XInternAtom(display, "UTF8_STRING", False), 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(title.data()), static_cast<int>(title.size()));
}

// One line per event, flushed at once.
void log(const XEvent& event, Window top, Window child, FILE* out) {
    const auto head = [&](const char* type, Window window, Bool sent, Time time, int x, int y, int rootX, int rootY) {
        const char* name = window == top ? "top" : window == child ? "child" : "other";
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        std::fprintf(out, "%s win=%s sent=%d time=%lu x=%d y=%d root=%d,%d at=%ld.%06ld", type, name, sent ? 1 : 0,
                     time, x, y, rootX, rootY, static_cast<long>(now.tv_sec), now.tv_nsec / 1000);
    };
    if (event.type == ButtonPress || event.type == ButtonRelease) {
        const XButtonEvent& e = event.xbutton;
        head(event.type == ButtonPress ? "ButtonPress" : "ButtonRelease", e.window, e.send_event, e.time, e.x, e.y,
             e.x_root, e.y_root);
        std::fprintf(out, " button=%u state=0x%x\n", e.button, e.state);
    } else if (event.type == KeyPress || event.type == KeyRelease) {
        XKeyEvent e = event.xkey;
        head(event.type == KeyPress ? "KeyPress" : "KeyRelease", e.window, e.send_event, e.time, e.x, e.y, e.x_root,
             e.y_root);
        KeySym keysym = NoSymbol;
        char text[32];
        XLookupString(&e, text, sizeof text, &keysym, nullptr);
        std::fprintf(out, " keycode=%u keysym=0x%lx state=0x%x\n", e.keycode, keysym, e.state);
    } else if (event.type == MotionNotify) {
        const XMotionEvent& e = event.xmotion;
        head("MotionNotify", e.window, e.send_event, e.time, e.x, e.y, e.x_root, e.y_root);
        std::fprintf(out, " state=0x%x\n", e.state);
    } else {
        return;
    }
    std::fflush(out);
}

Window createWindow(Display* display, Window parent, int x, int y, int width, int height, unsigned long pixel) {
    XSetWindowAttributes attributes{};
    attributes.background_pixel = pixel;
    attributes.event_mask = ButtonPressMask | ButtonReleaseMask | KeyPressMask | KeyReleaseMask | PointerMotionMask |
                            StructureNotifyMask | ExposureMask | FocusChangeMask;
    return XCreateWindow(display, parent, x, y, static_cast<unsigned>(width), static_cast<unsigned>(height), 0,
                         CopyFromParent, InputOutput, CopyFromParent, CWBackPixel | CWEventMask, &attributes);
}

// The window manager places a window where the program asks only for a
// position the user gave.
void askForPosition(Display* display, Window window, const Options& options) {
    XSizeHints* hints = XAllocSizeHints();
    hints->flags = USPosition | USSize;
    hints->x = options.x;
    hints->y = options.y;
    hints->width = options.width;
    hints->height = options.height;
    XSetWMNormalHints(display, window, hints);
    XFree(hints);
    XWMHints wmHints{};
    wmHints.flags = InputHint;
    wmHints.input = !options.lateFocus;
    XSetWMHints(display, window, &wmHints);
}

void reportReady(Display* display, Window top, Window child, const Options& options, FILE* out) {
    Window unused;
    int x = 0, y = 0, childX = 0, childY = 0;
    XTranslateCoordinates(display, top, DefaultRootWindow(display), 0, 0, &x, &y, &unused);
    XTranslateCoordinates(display, child, DefaultRootWindow(display), 0, 0, &childX, &childY, &unused);
    std::fprintf(out, "ready top=0x%lx child=0x%lx x=%d y=%d width=%d height=%d childx=%d childy=%d\n", top, child, x,
                 y, options.width, options.height, childX, childY);
    std::fflush(out);
}

// A request of ours can fail (the focus before the window manager has shown
// the window, or after it went away): that is no reason to stop logging.
int ignoreError(Display*, XErrorEvent*) { return 0; }

}  // namespace

int main(int argc, char** argv) {
    const Options options = parseOptions(argc, argv);
    FILE* out = stdout;
    if (options.log && !(out = std::fopen(options.log, "w"))) {
        std::perror(options.log);
        return 2;
    }
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        std::fprintf(stderr, "tarvoke-testwindow: cannot open display\n");
        return 2;
    }
    XSetErrorHandler(ignoreError);
    const int screen = DefaultScreen(display);
    const Window top = createWindow(display, RootWindow(display, screen), options.x, options.y, options.width,
                                    options.height, WhitePixel(display, screen));
    const Window child = createWindow(display, top, 50, 50, 200, 100, BlackPixel(display, screen));
    setNames(display, top, options.windowClass, options.title);
    setNames(display, child, options.childClass, "Tarvoke Child");
    askForPosition(display, top, options);
    const long pid = getpid();
    if (options.publishPid)
        XChangeProperty(display, top, XInternAtom(display, "_NET_WM_PID", False), XA_CARDINAL, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(&pid), 1);
    Atom deleteWindow = XInternAtom(display, "WM_DELETE_WINDOW", False);
    XSetWMProtocols(display, top, &deleteWindow, 1);
    XMapWindow(display, child);
    XMapWindow(display, top);

    bool ready = false;
    for (;;) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type == MappingNotify) {
            XRefreshKeyboardMapping(&event.xmapping);
        } else if ((event.type == MapNotify || event.type == Expose) && event.xany.window == top && !ready) {
            // The window manager may map the window inside a frame it shows
            // later: the focus asked for then fails, and the first exposure
            // (the window is viewable at last) asks again.
            XSetInputFocus(display, top, RevertToParent, CurrentTime);
            XSync(display, False);
        } else if (event.type == FocusIn && event.xfocus.window == top && !ready) {
            ready = true;
            reportReady(display, top, child, options, out);
        } else if (event.type == ButtonPress && options.lateFocus) {
            log(event, top, child, out);
            usleep(50000);
            XSetInputFocus(display, top, RevertToParent, CurrentTime);
        } else if (event.type == ClientMessage && static_cast<Atom>(event.xclient.data.l[0]) == deleteWindow) {
            break;
        } else {
            log(event, top, child, out);
        }
    }
    XCloseDisplay(display);
    return 0;
}
