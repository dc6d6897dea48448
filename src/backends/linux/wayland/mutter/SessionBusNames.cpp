#include <QDBusConnectionInterface>

#include "wayland/mutter/SessionBusNames.h"

namespace lumora::wl {

std::vector<std::string> sessionBusNames(const QDBusConnection& bus) {
    std::vector<std::string> names;
    if (!bus.isConnected() || !bus.interface()) return names;
    const QDBusReply<QStringList> reply = bus.interface()->registeredServiceNames();
    if (!reply.isValid()) return names;
    for (const QString& name : reply.value())
        names.push_back(name.toStdString());
    return names;
}

}  // namespace lumora::wl
