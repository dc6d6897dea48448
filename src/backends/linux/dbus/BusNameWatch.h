#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <utility>

namespace lumora::lx {

// Follows who owns `name` on `bus`: `changed(true)` when a service takes it (again),
// `changed(false)` when it leaves, on the main thread's event loop, while the watch lives.
inline std::unique_ptr<QDBusServiceWatcher> watchBusName(const QDBusConnection& bus,
                                                         const QString& name,
                                                         std::function<void(bool)> changed) {
    auto watch =
        std::make_unique<QDBusServiceWatcher>(name, bus, QDBusServiceWatcher::WatchForOwnerChange);
    QObject::connect(
        watch.get(), &QDBusServiceWatcher::serviceOwnerChanged, watch.get(),
        [changed = std::move(changed)](const QString&, const QString&, const QString& owner) {
            changed(!owner.isEmpty());
        });
    return watch;
}

}  // namespace lumora::lx
