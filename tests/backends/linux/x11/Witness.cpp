#include "Witness.h"

#include <X11/Xatom.h>
#include <X11/extensions/Xrandr.h>
#include <poll.h>

#include <chrono>
#include <regex>
#include <sstream>

#include "XorgServer.h"

namespace lumora::lx::test {

Witness::Witness(const std::string& display) : display_(XOpenDisplay(display.c_str())) {}

Witness::~Witness() {
    if (display_) XCloseDisplay(display_);
}

// The output's id and its CRTC's; zeros when there is no such output.
std::pair<unsigned long, unsigned long> Witness::find(const std::string& output) {
    XRRScreenResources* res = XRRGetScreenResourcesCurrent(display_, DefaultRootWindow(display_));
    std::pair<unsigned long, unsigned long> found{0, 0};
    for (int i = 0; i < res->noutput && !found.first; ++i) {
        XRROutputInfo* info = XRRGetOutputInfo(display_, res, res->outputs[i]);
        if (output == info->name) found = {res->outputs[i], info->crtc};
        XRRFreeOutputInfo(info);
    }
    XRRFreeScreenResources(res);
    return found;
}

void Witness::setEdid(const std::string& output, const std::vector<std::uint8_t>& edid) {
    const Atom atom = XInternAtom(display_, "EDID", False);
    XRRChangeOutputProperty(display_, find(output).first, atom, XA_INTEGER, 8, PropModeReplace,
                            edid.data(), static_cast<int>(edid.size()));
    XSync(display_, False);
}

Witness::Ramps Witness::gamma(const std::string& output) {
    XRRCrtcGamma* g = XRRGetCrtcGamma(display_, find(output).second);
    Ramps r;
    if (!g) return r;
    const auto n = static_cast<std::size_t>(g->size);
    r.red.assign(g->red, g->red + n);
    r.green.assign(g->green, g->green + n);
    r.blue.assign(g->blue, g->blue + n);
    XRRFreeGamma(g);
    return r;
}

void Witness::setGamma(const std::string& output, const Ramps& ramps) {
    XRRCrtcGamma* g = XRRAllocGamma(static_cast<int>(ramps.red.size()));
    std::copy(ramps.red.begin(), ramps.red.end(), g->red);
    std::copy(ramps.green.begin(), ramps.green.end(), g->green);
    std::copy(ramps.blue.begin(), ramps.blue.end(), g->blue);
    XRRSetCrtcGamma(display_, find(output).second, g);
    XRRFreeGamma(g);
    XSync(display_, False);
}

namespace {
bool refused = false;
int noteRefusal(Display*, XErrorEvent*) {
    refused = true;
    return 0;
}
}  // namespace

bool Witness::grabKey(unsigned long keysym, unsigned int modifiers) {
    XSync(display_, False);
    refused = false;
    XErrorHandler previous = XSetErrorHandler(&noteRefusal);
    XGrabKey(display_, XKeysymToKeycode(display_, keysym), modifiers, DefaultRootWindow(display_),
             False, GrabModeAsync, GrabModeAsync);
    XSync(display_, False);
    XSetErrorHandler(previous);
    return !refused;
}

void Witness::focusWindow() {
    window_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 100, 100, 0, 0, 0);
    XSelectInput(display_, window_, KeyPressMask | StructureNotifyMask);
    XMapWindow(display_, window_);
    XEvent e;
    do {
        XNextEvent(display_, &e);
    } while (e.type != MapNotify);
    XSetInputFocus(display_, window_, RevertToParent, CurrentTime);
    XSync(display_, False);
}

std::vector<unsigned int> Witness::pressesReceived() {
    XSync(display_, False);
    std::vector<unsigned int> keys;
    while (XPending(display_)) {
        XEvent e;
        XNextEvent(display_, &e);
        if (e.type == KeyPress) keys.push_back(e.xkey.keycode);
    }
    return keys;
}

XrandrState xrandr(const std::string& display) {
    const ToolResult result = runTool({"xrandr", "--verbose"}, display);
    XrandrState state;
    static const std::regex screen(R"(^Screen 0: .*current (\d+ x \d+),)");
    static const std::regex output(
        R"(^(\S+) (connected|disconnected)( primary)?(?: (\d+x\d+\+\d+\+\d+))?(?: \((0x[0-9a-f]+)\))?)");
    static const std::regex mode(R"(^  \S+ \((0x[0-9a-f]+)\) .*)");
    static const std::regex hLine(R"(^        h: width\s+(\d+))");
    static const std::regex vLine(R"(^        v: height\s+(\d+) .*clock\s+([\d.]+)Hz)");
    std::istringstream lines(result.output);
    std::string line, current;
    std::smatch m;
    while (std::getline(lines, line)) {
        if (std::regex_search(line, m, screen)) {
            state.screen = m[1];
        } else if (std::regex_search(line, m, output)) {
            current = m[1];
            state.outputs[current] = XrandrOutput{m[2] == "connected", m[3].matched, m[4], m[5]};
        } else if (std::regex_search(line, m, mode)) {
            state.modes[current].push_back(XrandrMode{m[1]});
        } else if (std::regex_search(line, m, hLine) && !state.modes[current].empty()) {
            state.modes[current].back().width = std::stoi(m[1]);
        } else if (std::regex_search(line, m, vLine) && !state.modes[current].empty()) {
            state.modes[current].back().height = std::stoi(m[1]);
            state.modes[current].back().refresh = std::stod(m[2]);
        }
    }
    return state;
}

bool pumpUntil(int fd, const std::function<void()>& dispatch, const std::function<bool()>& done,
               int timeoutMs) {
    constexpr int kSliceMs = 20;
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    dispatch();
    while (!done()) {
        if (std::chrono::steady_clock::now() >= until) return false;
        pollfd p{fd, POLLIN, 0};
        poll(&p, 1, kSliceMs);
        dispatch();
    }
    return true;
}

}  // namespace lumora::lx::test
