#pragma once

#include <iosfwd>
#include <string>
#include <utility>

namespace lumora {

// One command from the lid machine to its controller. Actions travel as an ordered list; a
// log line comes before the action it announces.
struct LidAction {
    enum class Kind { setPanel, dimBuiltin, log, displaySleep, wakeDisplay, systemSleep };

    Kind kind = Kind::log;
    bool on = false;      // payload of setPanel and dimBuiltin
    std::string message;  // payload of log, without the "lid: " prefix

    static LidAction setPanel(bool on) { return {Kind::setPanel, on, {}}; }
    static LidAction dimBuiltin(bool on) { return {Kind::dimBuiltin, on, {}}; }
    static LidAction log(std::string message) { return {Kind::log, false, std::move(message)}; }
    static LidAction displaySleep() { return {Kind::displaySleep, false, {}}; }
    static LidAction wakeDisplay() { return {Kind::wakeDisplay, false, {}}; }
    static LidAction systemSleep() { return {Kind::systemSleep, false, {}}; }

    // Same kind, and the same payload for the kinds that carry one.
    friend bool operator==(const LidAction& a, const LidAction& b);
};

// Readable form for test failures and traces: setPanel(true), log("..."), displaySleep.
std::ostream& operator<<(std::ostream& out, const LidAction& action);

}  // namespace lumora
