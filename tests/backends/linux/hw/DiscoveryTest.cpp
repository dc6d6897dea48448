// Which I2C buses become DDC/CI entries, read from temporary sysfs trees, and what a bus that
// cannot be opened tells the user.
#include <gtest/gtest.h>

#include <map>
#include <tuple>

#include "SysfsTree.h"
#include "hw/DisplayBuses.h"
#include "hw/LinuxAVServices.h"

namespace lumora::lx {
namespace {

using Bus = std::tuple<unsigned, std::optional<std::string>, bool>;

std::vector<Bus> buses(const std::filesystem::path& root) {
    std::vector<Bus> seen;
    for (const auto& b : findDisplayBuses(root))
        seen.emplace_back(b.number, b.connector, b.external);
    return seen;
}

// Fails to open the paths in `errors` with their errno; other buses open and answer nothing.
class FailingDevices final : public I2cDevices {
  public:
    Opened open(const std::string& path) override {
        if (auto found = errors.find(path); found != errors.end()) return {nullptr, found->second};
        return {std::make_unique<Silent>(), kSysOK};
    }
    std::map<std::string, SysError> errors;

  private:
    struct Silent final : I2cDevice {
        SysError setSlave(std::uint8_t) override { return ENXIO; }
        SysError read(std::span<std::uint8_t>) override { return ENXIO; }
        SysError write(std::span<const std::uint8_t>) override { return ENXIO; }
        SysError transfer(std::span<const I2cMessage>) override { return ENXIO; }
    };
};

constexpr auto kIntel = "pci0000:00/0000:00:02.0";
constexpr auto kNvidia = "pci0000:00/0000:00:01.0/0000:01:00.0";

// A laptop: Intel graphics linking its connectors' buses, plus an NVIDIA card whose driver
// links none.
void buildHybridLaptop(test::SysfsTree& tree) {
    tree.card("card0", kIntel);
    tree.connector("card0-eDP-1", "connected", -1);
    tree.adapter(6, "DPDDC-A", std::string(kIntel) + "/drm/card0/card0-eDP-1");
    tree.link("class/drm/card0-eDP-1/i2c-6",
              tree.root() / "devices" / kIntel / "drm/card0/card0-eDP-1/i2c-6");
    tree.connector("card0-HDMI-A-1", "connected", 3);
    tree.connector("card0-DP-1", "disconnected", 7);
    tree.connector("card0-DP-2", "unknown", 8);
    tree.file("class/drm/card0-DP-3/status", "connected\n");  // no bus at all
    tree.file("class/drm/renderD128/dev", "226:128\n");
    tree.adapter(0, "SMBus I801 adapter at efa0", "pci0000:00/0000:00:1f.4");
    tree.adapter(2, "i915 gmbus dpb", kIntel);  // not linked: Intel drives that port over DP
    tree.adapter(3, "i915 gmbus dpc", kIntel);
    tree.adapter(7, "DPDDC-B", kIntel);
    tree.card("card1", kNvidia);
    tree.connector("card1-DP-4", "connected", -1);
    tree.adapter(10, "NVIDIA i2c adapter 3 at 1:00.0", kNvidia);
    tree.adapter(9, "NVIDIA i2c adapter 1 at 1:00.0", kNvidia);
}

TEST(DisplayBusesTest, MissingAndMalformedTreesGiveWhatTheyCan) {
    test::SysfsTree empty;
    EXPECT_TRUE(buses(empty.root()).empty());

    test::SysfsTree odd;  // no DRM tree; junk links and names
    odd.link("class/drm/cardX-DP-1/ddc", "../i2c-1");
    odd.link("class/drm/card0-/ddc", "../i2c-2");
    odd.link("class/drm/card0-DP-5/ddc", "../i2c-junk");
    odd.file("class/drm/card0-DP-7/status", "connected\n");
    odd.link("class/drm/card0-DP-7/ddc", "../i2c-12");  // a dangling link still names the bus
    odd.adapter(4, "AMDGPU DM i2c hw bus 0", "pci0000:00/0000:00:08.1/0000:05:00.0");
    odd.adapter(5, "i915 gmbus panel", "pci0000:00/0000:00:02.0");
    odd.file("bus/i2c/devices/i2c-13/name", "DPDDC-" + std::string(5000, 'x'));  // too long
    odd.file("bus/i2c/devices/i2c-/name", "DPDDC-A\n");
    EXPECT_EQ(
        buses(odd.root()),
        (std::vector<Bus>{{4, std::nullopt, true}, {5, std::nullopt, false}, {12, "DP-7", true}}));
}

// Connector buses and the unlinked card's adapters in bus order; `asked` ties connectors to buses.
TEST(LinuxAVServicesTest, EntriesNameTheirDisplaysAndKeepBusNumbersAsHandles) {
    test::SysfsTree tree;
    buildHybridLaptop(tree);
    std::vector<std::string> asked;
    LinuxAVServices services(
        {.sysfsRoot = tree.root(),
         .devRoot = kDefaultDevRoot,
         .displayFor = [&](const std::string& connector) -> std::optional<DisplayID> {
             asked.push_back(connector);
             if (connector == "HDMI-A-1") return 7;
             return std::nullopt;
         },
         .log = nullptr,
         .devices = std::make_shared<FailingDevices>()});
    std::vector<std::tuple<bool, std::optional<DisplayID>, std::uint64_t>> seen;
    for (const auto& e : services.entries())
        seen.emplace_back(e.external, e.display, e.handle);
    EXPECT_EQ(seen, (decltype(seen){{true, 7, 3},
                                    {false, std::nullopt, 6},
                                    {true, std::nullopt, 8},
                                    {true, std::nullopt, 9},
                                    {true, std::nullopt, 10}}));
    EXPECT_EQ(asked, (std::vector<std::string>{"HDMI-A-1", "eDP-1", "DP-2"}));
}

TEST(LinuxAVServicesTest, ABusThatCannotBeOpenedIsExplainedOncePerBus) {
    auto devices = std::make_shared<FailingDevices>();
    std::vector<std::string> logged;
    LinuxAVServices services{{.sysfsRoot = "/nonexistent",
                              .devRoot = "/dev",
                              .displayFor = nullptr,
                              .log = [&](const std::string& line) { logged.push_back(line); },
                              .devices = devices}};
    const auto open = [&](unsigned bus) { return services.create({true, std::nullopt, bus}); };
    devices->errors = {{"/dev/i2c-4", EACCES}, {"/dev/i2c-5", ENOENT}, {"/dev/i2c-6", EIO}};
    for (int round = 0; round < 2; ++round) {
        for (unsigned n : {4, 5, 6})
            EXPECT_FALSE(open(n)) << n;
    }
    const std::vector<std::string> expected = {
        "DDC/CI: no permission to open /dev/i2c-4. Load the i2c-dev module (sudo modprobe "
        "i2c-dev) and install Lumora's udev rule 60-lumora-i2c.rules, which lets the logged-in "
        "user use the display buses without root; then log in again.",
        "DDC/CI: /dev/i2c-5 is missing: the i2c-dev module is not loaded. Load it with sudo "
        "modprobe i2c-dev (Lumora's package loads it at boot).",
        "DDC/CI: cannot open /dev/i2c-6: Input/output error.",
    };
    EXPECT_EQ(logged, expected);
    EXPECT_EQ(services.problems(), expected);

    devices->errors.erase("/dev/i2c-4");
    EXPECT_TRUE(open(4));
    EXPECT_EQ(services.problems(),
              (std::vector<std::string>(expected.begin() + 1, expected.end())));
    EXPECT_EQ(logged.size(), expected.size());
}

}  // namespace
}  // namespace lumora::lx
