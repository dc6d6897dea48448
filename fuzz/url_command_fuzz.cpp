// Command URLs come from any script on the machine: any bytes must parse to a command or to
// nothing, log as exactly one line, and run through the whole model on a simulated machine
// without crashing, leaving a status file that is valid JSON.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "base/Check.h"
#include "display/Displays.h"
#include "log/Log.h"
#include "model/AppModel.h"
#include "model/UrlCommand.h"
#include "platform/MemoryDefaults.h"
#include "sim/SimMachine.h"
#include "sim/SimSession.h"
#include "sim/VirtualScheduler.h"
#include "sim/World.h"

namespace {

using namespace lumora;

// Virtual time run after each command: covers the refresh delay, the DDC debounce, the HiDPI
// mirroring step and its second refresh, and bounds the work of one input.
constexpr double kVirtualSecondsPerInput = 2.0;
// Commands accumulate state (virtual screens, colours for made-up display ids); the world is
// rebuilt this often so that one input's cost stays bounded.
constexpr int kInputsPerWorld = 256;

std::filesystem::path scratchFolder() {
    auto folder = std::filesystem::temp_directory_path() / "lumora-url-fuzz";
    std::filesystem::create_directories(folder);
    return folder;
}

// One simulated machine with the model started on it, as the application builds it.
struct Machine {
    explicit Machine(const std::filesystem::path& folder)
        : log(Log::Options{folder / "Lumora.log", [] { return std::tm{}; }, nullptr}),
          session(folder / "home", "fuzz"),
          machine(sim::defaultWorld(), clock),
          displays(machine.displayServer(), defaults, log) {
        model = AppModel::create(
            AppPorts{machine, clock, machine.osd(), session, defaults, displays, log});
        model->start();
        clock.advance(kVirtualSecondsPerInput);
    }
    ~Machine() { model.reset(); }

    Log log;
    sim::VirtualScheduler clock;
    MemoryDefaults defaults;
    sim::SimSession session;
    sim::SimMachine machine;
    Displays displays;
    std::shared_ptr<AppModel> model;
};

bool oneSafeLine(std::string_view text) {
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) return false;
    }
    return true;
}

void checkParsed(std::string_view url) {
    auto parsed = parseCommandUrl(url);
    if (!parsed) return;
    check(!parsed->command.empty(), "a parsed URL without a command");
    const std::string line =
        "url: " + escapeForLog(parsed->command) + " " + printQuery(parsed->query);
    check(oneSafeLine(line), "a URL's log line is not one clean line");
    for (char c : url) {
        const auto byte = static_cast<unsigned char>(c);
        check(byte > 0x20 && byte != 0x7F, "a URL with a space or control character parsed");
    }
}

void checkStatus(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return;
    const auto status = nlohmann::json::parse(in, nullptr, false);
    check(status.is_object() && status["displays"].is_array(), "the status file is not valid");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::filesystem::path folder = scratchFolder();
    static std::unique_ptr<Machine> world;
    static int inputs = 0;
    if (!world || ++inputs % kInputsPerWorld == 0) {
        world.reset();
        world = std::make_unique<Machine>(folder);
    }

    const std::string_view url(reinterpret_cast<const char*>(data), size);
    checkParsed(url);
    world->model->handleURL(url);
    world->clock.advance(kVirtualSecondsPerInput);
    checkStatus(world->session.statusFile());
    return 0;
}
