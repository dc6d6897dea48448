#include "model/CommandDispatcher.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "model/AppModel.h"
#include "model/CaseFold.h"
#include "model/CommandArguments.h"
#include "model/CommandTable.h"

namespace lumora {

namespace {

// A requested refresh rate matches a mode's within this many hertz (so 60 finds 59.94).
constexpr double kRefreshTolerance = 1.0;
// User-created virtual screens always run at this rate.

std::optional<std::string_view> item(const Query& query, std::string_view name) {
    const std::string* text = queryItem(query, name);
    return text ? std::optional<std::string_view>(*text) : std::nullopt;
}

std::optional<std::int64_t> integerItem(const Query& query, std::string_view name) {
    const std::string* text = queryItem(query, name);
    return text ? parseInteger(*text) : std::nullopt;
}

}  // namespace

struct CommandDispatcher::Call {
    const std::string& command;
    const Query& query;
    std::optional<bool> on;
    std::optional<double> value;
    std::optional<DisplayID> display;  // resolved once, before any wait
    bool writesStatus = true;          // "mode" may leave the file as it is
    // Set by a command whose outcome comes later (a DDC write on the monitor's bus): it calls
    // its argument once with the outcome, on the main queue.
    std::function<void(Done)> finishLater;
};

namespace {

template <class Handlers>
constexpr bool inTableOrder(const Handlers& handlers) {
    for (std::size_t i = 0; i < handlers.size(); ++i) {
        if (handlers[i].first != kCommandTable[i].name) return false;
    }
    return true;
}

}  // namespace

CommandDispatcher::Handler CommandDispatcher::handler(std::size_t index) {
    using D = CommandDispatcher;
    static constexpr std::array<std::pair<std::string_view, Handler>, kCommandTable.size()>
        kHandlers{{
            {"hidpi", &D::hidpi},
            {"brightness", &D::brightness},
            {"brightness-up", &D::brightnessStep},
            {"brightness-down", &D::brightnessStep},
            {"connect", &D::connect},
            {"disconnect", &D::disconnect},
            {"main", &D::main},
            {"mode", &D::mode},
            {"dim", &D::dim},
            {"ddc", &D::ddc},
            {"sleep-displays", &D::sleepDisplays},
            {"virtual", &D::virtualScreen},
            {"status", &D::status},
            {"panel", &D::panel},
            {"adaptive", &D::adaptive},
        }};
    static_assert(inTableOrder(kHandlers), "one handler per command, in the table's order");
    return kHandlers.at(index).second;
}

void CommandDispatcher::handleURL(std::string_view url, Done done) {
    auto command = parseCommandUrl(url);
    if (!command) {
        if (done) done(CommandResult::nothing("not a lumora:// URL"));
        return;
    }
    model_.log().write("url: " + escapeForLog(command->command) + " " + printQuery(command->query));
    handle(command->command, command->query, std::move(done));
}

void CommandDispatcher::handle(const std::string& command, const Query& query, Done done) {
    model_.refresh();  // names and states current before resolving
    const CommandSpec* entry = findCommand(command);
    if (!entry) {
        model_.log().write("url: unknown command " + escapeForLog(command));
        model_.writeStatus();
        if (done) done(CommandResult::nothing("unknown command: " + command));
        return;
    }
    Call call{command, query, onArgument(query), levelArgument(query), std::nullopt, true, {}};
    const auto named = item(query, "display");
    call.display = model_.resolve(named);
    // A display named by a command is the one later actions fall back to where the pointer
    // cannot be found.
    if (call.display && named && !named->empty() && foldCase(*named) != "cursor") {
        model_.choose(*call.display);
    }
    const auto index = static_cast<std::size_t>(entry - kCommandTable.data());
    // A command for no display has no scan of its own to wait for.
    using Wait = CommandSpec::Wait;
    const bool waits =
        entry->wait == Wait::everyDisplay || (entry->wait == Wait::itsDisplay && call.display);
    const std::optional<DisplayID> scanOf =
        entry->wait == Wait::everyDisplay ? std::nullopt : call.display;
    if (!waits || !model_.ddc().scanning(scanOf)) {
        run(index, call, done);
        return;
    }
    // The query and command are copied: the wait outlives this call.
    auto saved = std::make_shared<std::pair<std::string, Query>>(command, query);
    model_.ddc().whenScanned(
        scanOf, [weak = model_.weak_from_this(), index, saved, display = call.display, done] {
            auto self = weak.lock();
            if (!self) return;
            Call later{saved->first,
                       saved->second,
                       onArgument(saved->second),
                       levelArgument(saved->second),
                       display,
                       true,
                       {}};
            self->refresh();
            self->dispatcher().run(index, later, done);
        });
}

void CommandDispatcher::run(std::size_t index, Call call, const Done& done) {
    const CommandResult result = (this->*handler(index))(call);
    if (call.finishLater) {
        call.finishLater([weak = model_.weak_from_this(), writes = call.writesStatus,
                          done](const CommandResult& later) {
            auto self = weak.lock();
            if (!self) return;
            if (writes) self->writeStatus();
            if (done) done(later);
        });
        return;
    }
    if (call.writesStatus) model_.writeStatus();
    if (done) done(result);
}

std::optional<DisplayID> CommandDispatcher::display(const Call& call) const {
    return call.display;
}

CommandResult CommandDispatcher::notFound(const Call& call) {
    const std::string* argument = queryItem(call.query, "display");
    if (!argument || argument->empty())
        return CommandResult::nothing("no display under the pointer");
    return CommandResult::nothing("display not found: " + *argument);
}

CommandResult CommandDispatcher::unavailable(const Call& call, const std::string& what) {
    const std::string line = what + " is not available on this machine";
    model_.log().write("url: " + call.command + ": " + line);
    return CommandResult::nothing(line);
}

CommandResult CommandDispatcher::hidpi(Call& call) {
    const auto id = display(call);
    if (!id) return notFound(call);
    model_.setHiDPI(*id, call.on.value_or(!model_.hidpi().isOn(*id)));
    return CommandResult::done();
}

CommandResult CommandDispatcher::brightness(Call& call) {
    const auto id = display(call);
    if (!id) return notFound(call);
    if (!call.value) return CommandResult::nothing("brightness needs a value (0-100 or 0-1)");
    if (model_.brightness().path(*id) == BrightnessPath::software && !model_.capabilities().gamma) {
        return unavailable(call, "software dimming");
    }
    model_.brightness().set(*id, *call.value);
    // The bar cannot show less than empty or more than full.
    model_.osd().show(*id, std::clamp(*call.value, 0.0, 1.0), "sun.max.fill", std::nullopt);
    return CommandResult::done();
}

CommandResult CommandDispatcher::brightnessStep(Call& call) {
    const auto id = display(call);
    if (!id) return notFound(call);
    if (model_.brightness().path(*id) == BrightnessPath::software && !model_.capabilities().gamma) {
        return unavailable(call, "software dimming");
    }
    model_.brightness().step(*id, call.command == "brightness-up", /*fine=*/false);
    return CommandResult::done();
}

CommandResult CommandDispatcher::connect(Call& call) {
    const auto id = display(call);
    if (!id) return notFound(call);
    if (!model_.capabilities().enableDisable) {
        return unavailable(call, "switching displays off and on");
    }
    const bool ok = model_.inventory().setEnabled(*id, call.on.value_or(true), /*quiet=*/false);
    model_.refresh();
    return ok ? CommandResult::done() : CommandResult::nothing("the display server refused");
}

CommandResult CommandDispatcher::disconnect(Call& call) {
    const auto id = display(call);
    if (!id) return notFound(call);
    if (!model_.capabilities().enableDisable) {
        return unavailable(call, "switching displays off and on");
    }
    const bool ok = model_.inventory().setEnabled(*id, false, /*quiet=*/false);
    model_.refresh();
    return ok ? CommandResult::done() : CommandResult::nothing("the display server refused");
}

CommandResult CommandDispatcher::main(Call& call) {
    const auto id = display(call);
    if (!id) return notFound(call);
    if (!model_.capabilities().setMain) return unavailable(call, "choosing the main display");
    const bool ok = model_.inventory().setMain(model_.shownDisplay(*id));
    model_.refresh();
    return ok ? CommandResult::done() : CommandResult::nothing("the display server refused");
}

CommandResult CommandDispatcher::mode(Call& call) {
    const auto width = integerItem(call.query, "width");
    const auto height = integerItem(call.query, "height");
    const auto id = display(call);
    // The one path that leaves the status file as it is.
    if (!id || !width || !height) {
        call.writesStatus = false;
        if (!id) return notFound(call);
        return CommandResult::nothing("mode needs a whole width and height");
    }
    if (!model_.capabilities().setMode) return unavailable(call, "changing modes");

    std::optional<bool> hidpi;
    if (auto text = item(call.query, "hidpi")) hidpi = *text == "1" || *text == "true";
    std::optional<double> hz;
    if (auto text = item(call.query, "hz")) hz = parseNumber(*text);

    const DisplayID target = model_.shownDisplay(*id);
    for (const DisplayMode& m : model_.inventory().modes(target)) {
        if (m.width != *width || m.height != *height) continue;
        if (hidpi && m.hiDPI() != *hidpi) continue;
        if (hz && !(std::abs(m.refresh - *hz) < kRefreshTolerance)) continue;
        const bool ok = model_.inventory().setMode(target, m);
        model_.refresh();
        return ok ? CommandResult::done() : CommandResult::nothing("the display server refused");
    }
    return CommandResult::nothing("no mode matches " + std::to_string(*width) + "x" +
                                  std::to_string(*height));
}

CommandResult CommandDispatcher::dim(Call& call) {
    const auto id = display(call);
    if (!id) return notFound(call);
    if (!model_.capabilities().gamma) return unavailable(call, "software dimming");
    // No floor here: an absent value means black.
    model_.brightness().setDim(*id, call.value.value_or(0.0));
    return CommandResult::done();
}

CommandResult CommandDispatcher::ddc(Call& call) {
    const auto id = display(call);
    if (!id) return notFound(call);
    const std::string* vcpText = queryItem(call.query, "vcp");
    const std::string* valueText = queryItem(call.query, "value");
    if (!vcpText || !valueText) return CommandResult::nothing("ddc needs vcp and value");
    const auto byte = parseHexByte(*vcpText);
    const auto raw = parseUnsigned(*valueText, std::numeric_limits<std::uint16_t>::max());
    if (!byte || !raw) return CommandResult::nothing("ddc needs a hex vcp and a value 0-65535");
    const auto vcp = vcpFromCode(*byte);
    if (!vcp) return CommandResult::nothing("unknown VCP code " + *vcpText);
    if (!model_.ddc().hasChannel(*id)) {
        return CommandResult::nothing("display " + std::to_string(*id) + " has no DDC/CI channel");
    }
    // The command ends when the monitor has taken the value or refused it.
    const std::string what = "display " + std::to_string(*id) + " did not take VCP " + *vcpText +
                             " = " + std::to_string(*raw) + ": ";
    call.finishLater = [this, id = *id, vcp = *vcp, raw = static_cast<std::uint16_t>(*raw),
                        what](Done finish) {
        model_.ddc().send(id, vcp, raw, [finish, what](DdcWriteStatus status) {
            finish(status == DdcWriteStatus::ok ? CommandResult::done()
                                                : CommandResult::nothing(what + describe(status)));
        });
    };
    return CommandResult::done();
}

CommandResult CommandDispatcher::sleepDisplays(Call& call) {
    if (!model_.capabilities().displaySleep) return unavailable(call, "display sleep");
    // Every display sleeps: which one is under the pointer does not matter.
    const PowerRequest request = model_.ports_.platform.power().sleepDisplays();
    if (!request.started) {
        model_.log().write("sleep displays: " + request.error);
        return CommandResult::nothing("the displays did not go to sleep: " + request.error);
    }
    return CommandResult::done();
}

CommandResult CommandDispatcher::virtualScreen(Call& call) {
    constexpr auto kLargest = std::numeric_limits<std::uint32_t>::max();
    const auto width = integerItem(call.query, "width");
    const auto height = integerItem(call.query, "height");
    // The platform takes 32-bit unsigned sides.
    if (!width || !height || *width < 0 || *height < 0 || *width > kLargest || *height > kLargest) {
        return CommandResult::nothing("virtual needs a whole width and height");
    }
    const std::string* name = queryItem(call.query, "name");
    const std::string title = name ? *name : VirtualScreenConfig::defaultName(*width, *height);
    const std::string* hidpi = queryItem(call.query, "hidpi");
    model_.addVirtualScreen(title, *width, *height, VirtualScreenConfig::kDefaultRefresh,
                            !hidpi || *hidpi != "0");
    return CommandResult::done();
}

CommandResult CommandDispatcher::status(Call& /*call*/) {
    return CommandResult::done();  // the status write after every command is all
}

CommandResult CommandDispatcher::panel(Call& call) {
    if (!model_.panelHandler_) {
        const std::string line = "this Lumora runs without windows";
        model_.log().write("url: panel: " + line);
        return CommandResult::nothing(line);
    }
    model_.panelHandler_(call.on);
    return CommandResult::done();
}

CommandResult CommandDispatcher::adaptive(Call& call) {
    const auto name = item(call.query, "value");
    const auto mode = name ? parseAdaptiveMode(foldCase(*name)) : std::nullopt;
    if (!mode) return CommandResult::nothing("adaptive needs off, sync, sensor or schedule");
    const auto latitude = item(call.query, "latitude");
    const auto longitude = item(call.query, "longitude");
    if (latitude || longitude) {
        std::optional<GeoLocation> place;
        if (latitude && longitude) {
            const auto lat = parseNumber(*latitude);
            const auto lon = parseNumber(*longitude);
            if (lat && lon) place = GeoLocation{*lat, *lon};
        }
        if (!place || !validLocation(*place)) {
            return CommandResult::nothing("latitude -90…90 and longitude -180…180 go together");
        }
        model_.adaptive().setLocation(*place);
    }
    if (auto why = model_.adaptive().setMode(*mode)) return CommandResult::nothing(*why);
    return CommandResult::done();
}

}  // namespace lumora
