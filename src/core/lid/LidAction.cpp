#include "lid/LidAction.h"

#include <ostream>

namespace lumora {

bool operator==(const LidAction& a, const LidAction& b) {
    if (a.kind != b.kind) return false;
    switch (a.kind) {
        case LidAction::Kind::setPanel:
        case LidAction::Kind::dimBuiltin:
            return a.on == b.on;
        case LidAction::Kind::log:
            return a.message == b.message;
        case LidAction::Kind::displaySleep:
        case LidAction::Kind::wakeDisplay:
        case LidAction::Kind::systemSleep:
            return true;
    }
    return true;
}

std::ostream& operator<<(std::ostream& out, const LidAction& action) {
    const char* flag = action.on ? "true" : "false";
    switch (action.kind) {
        case LidAction::Kind::setPanel:
            return out << "setPanel(" << flag << ")";
        case LidAction::Kind::dimBuiltin:
            return out << "dimBuiltin(" << flag << ")";
        case LidAction::Kind::log:
            return out << "log(\"" << action.message << "\")";
        case LidAction::Kind::displaySleep:
            return out << "displaySleep";
        case LidAction::Kind::wakeDisplay:
            return out << "wakeDisplay";
        case LidAction::Kind::systemSleep:
            return out << "systemSleep";
    }
    return out << "?";
}

}  // namespace lumora
