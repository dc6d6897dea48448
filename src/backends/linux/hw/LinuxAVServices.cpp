#include "hw/LinuxAVServices.h"

#include <cerrno>
#include <limits>
#include <system_error>

#include "hw/DisplayBuses.h"
#include "hw/I2cChannel.h"

namespace lumora::lx {

namespace {

std::filesystem::path devicePath(const std::filesystem::path& devRoot, unsigned bus) {
    return devRoot / ("i2c-" + std::to_string(bus));
}

std::string openProblem(const std::string& device, SysError error) {
    switch (error) {
        case EACCES:
        case EPERM:
            return "DDC/CI: no permission to open " + device +
                   ". Load the i2c-dev module (sudo modprobe i2c-dev) and install Lumora's udev "
                   "rule 60-lumora-i2c.rules, which lets the logged-in user use the display "
                   "buses without root; then log in again.";
        case ENOENT:
        case ENODEV:
        case ENXIO:
            return "DDC/CI: " + device +
                   " is missing: the i2c-dev module is not loaded. Load it with sudo modprobe "
                   "i2c-dev (Lumora's package loads it at boot).";
        default:
            return "DDC/CI: cannot open " + device + ": " + std::generic_category().message(error) +
                   ".";
    }
}

}  // namespace

LinuxAVServices::LinuxAVServices(Options options) : options_(std::move(options)) {
    if (!options_.devices) options_.devices = systemI2cDevices();
}

std::vector<AVServiceEntry> LinuxAVServices::entries() const {
    std::vector<AVServiceEntry> entries;
    std::map<unsigned, std::string> connectors;
    for (const auto& bus : findDisplayBuses(options_.sysfsRoot)) {
        AVServiceEntry entry{bus.external, std::nullopt, bus.number};
        if (bus.connector) {
            connectors[bus.number] = *bus.connector;
            if (options_.displayFor) entry.display = options_.displayFor(*bus.connector);
        }
        entries.push_back(entry);
    }
    std::lock_guard guard(mutex_);
    connectors_ = std::move(connectors);
    return entries;
}

std::shared_ptr<AVChannel> LinuxAVServices::create(const AVServiceEntry& entry) {
    if (entry.handle > std::numeric_limits<unsigned>::max()) return nullptr;
    const auto bus = static_cast<unsigned>(entry.handle);
    auto opened = options_.devices->open(devicePath(options_.devRoot, bus).string());
    if (!opened.device) {
        report(bus, openProblem(describe(bus), opened.error));
        return nullptr;
    }
    const std::string busy =
        "DDC: " + describe(bus) + " is held by another program for over 2 s; trying again later";
    std::lock_guard guard(mutex_);
    problems_.erase(bus);
    return std::make_shared<I2cChannel>(std::move(opened.device), [log = options_.log, busy] {
        if (log) log(busy);
    });
}

std::vector<std::string> LinuxAVServices::problems() const {
    std::lock_guard guard(mutex_);
    std::vector<std::string> lines;
    for (const auto& [bus, line] : problems_)
        lines.push_back(line);
    return lines;
}

std::string LinuxAVServices::describe(unsigned bus) const {
    std::string text = devicePath(options_.devRoot, bus).string();
    std::lock_guard guard(mutex_);
    if (auto found = connectors_.find(bus); found != connectors_.end())
        text += " (" + found->second + ")";
    return text;
}

void LinuxAVServices::report(unsigned bus, const std::string& line) {
    {
        std::lock_guard guard(mutex_);
        auto [at, added] = problems_.try_emplace(bus, line);
        // Discovery reopens the buses on every scan: say it once, again only if it changes.
        if (!added && at->second == line) return;
        at->second = line;
    }
    if (options_.log) options_.log(line);
}

}  // namespace lumora::lx
