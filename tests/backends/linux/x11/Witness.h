#pragma once

#include <X11/Xlib.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace lumora::lx::test {

// Another X client: looks at what the backend did and plays the other applications.
class Witness {
  public:
    explicit Witness(const std::string& display);
    ~Witness();
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

    [[nodiscard]] bool connected() const { return display_ != nullptr; }
    [[nodiscard]] Display* display() const { return display_; }

    void setEdid(const std::string& output, const std::vector<std::uint8_t>& edid);

    struct Ramps {
        std::vector<std::uint16_t> red, green, blue;
        friend bool operator==(const Ramps&, const Ramps&) = default;
    };
    [[nodiscard]] Ramps gamma(const std::string& output);
    void setGamma(const std::string& output, const Ramps& ramps);

    // Grabs a key on the root window, as another application holding a shortcut would; false
    // when another client holds it.
    bool grabKey(unsigned long keysym, unsigned int modifiers);
    // A focused window that records the keys reaching it.
    void focusWindow();
    // Key codes that reached the focused window since the last call, presses only.
    [[nodiscard]] std::vector<unsigned int> pressesReceived();

  private:
    std::pair<unsigned long, unsigned long> find(const std::string& output);

    Display* display_ = nullptr;
    unsigned long window_ = 0;
};

// One output as `xrandr --verbose` shows it.
struct XrandrOutput {
    bool connected = false;
    bool primary = false;
    std::string geometry;  // "1920x1080+2048+0"; empty while off
    std::string mode;      // "0x67"
    friend bool operator==(const XrandrOutput&, const XrandrOutput&) = default;
};
struct XrandrMode {
    std::string id;  // "0x67"
    int width = 0;
    int height = 0;
    double refresh = 0;  // as xrandr prints it, two decimals
};
struct XrandrState {
    std::string screen;  // "3968 x 1536"
    std::map<std::string, XrandrOutput> outputs;
    std::map<std::string, std::vector<XrandrMode>> modes;  // per output
};
[[nodiscard]] XrandrState xrandr(const std::string& display);

// Polls `fd` and calls `dispatch` until `done` holds or `timeoutMs` pass; whether it held.
bool pumpUntil(int fd, const std::function<void()>& dispatch, const std::function<bool()>& done,
               int timeoutMs = 3000);

}  // namespace lumora::lx::test
