#pragma once

#include <QDBusConnection>
#include <string>
#include <vector>

namespace lumora::wl {

// The names owned on `bus`, for the session probe; empty when the bus does not answer.
std::vector<std::string> sessionBusNames(const QDBusConnection& bus);

}  // namespace lumora::wl
