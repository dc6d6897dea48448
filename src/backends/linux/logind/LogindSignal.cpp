#include "logind/LogindSignal.h"

#include <utility>

namespace lumora::lx {

LogindSignal::LogindSignal(QDBusConnection bus, QString service, QString path, QString interface,
                           QString name, Handler handler)
    : bus_(std::move(bus)),
      service_(std::move(service)),
      path_(std::move(path)),
      interface_(std::move(interface)),
      name_(std::move(name)),
      handler_(std::move(handler)) {
    // A slot taking only the message accepts the signal whatever its arguments.
    connected_ =
        bus_.connect(service_, path_, interface_, name_, this, SLOT(deliver(QDBusMessage)));
}

LogindSignal::~LogindSignal() {
    if (connected_) {
        bus_.disconnect(service_, path_, interface_, name_, this, SLOT(deliver(QDBusMessage)));
    }
}

void LogindSignal::deliver(const QDBusMessage& message) {
    if (handler_) handler_(message);
}

}  // namespace lumora::lx
