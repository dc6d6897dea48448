#include "logind/LinuxLidSensor.h"

#include <QDBusArgument>
#include <QStringList>
#include <QVariantMap>
#include <string>
#include <utility>

#include "logind/LidSwitchDevice.h"

namespace lumora::lx {

namespace {

const QString kManagerInterface = QStringLiteral("org.freedesktop.login1.Manager");
const QString kLidClosed = QStringLiteral("LidClosed");
constexpr std::int32_t kOpenOK = 0;

}  // namespace

LinuxLidSensor::LinuxLidSensor(std::shared_ptr<LogindClient> logind, LidSensorPaths paths)
    : logind_(std::move(logind)),
      hinge_(findHingeSensor(paths.iioDevices)),
      lidSwitch_(logind_->available() && findLidSwitch(paths.inputDevices)) {}

std::optional<std::int32_t> LinuxLidSensor::open(ChangeHandler onChange) {
    if (!hinge_ && !logind_->available()) return std::nullopt;
    onChange_ = std::move(onChange);
    // Which of the two this machine has, for whoever reads the log on new hardware.
    std::string sources = hinge_ ? "hinge angle from " + hinge_->device.string() : "";
    if (lidSwitch_)
        sources += (sources.empty() ? "" : ", ") + std::string("lid switch through logind");
    logind_->log("lid sensor: " + (sources.empty() ? "logind, but no lid switch" : sources));
    if (lidSwitch_) {
        // logind may not announce LidClosed changes; the controller's polling covers that.
        changes_ = logind_->onManagerPropertiesChanged(
            [this](const QDBusMessage& m) { propertiesChanged(m); });
    }
    (void)read(/*fresh=*/true);
    return kOpenOK;
}

LidReading LinuxLidSensor::read(bool fresh) {
    if (!fresh) return last_;
    // A failed read keeps what was last known.
    if (hinge_) {
        if (const auto angle = readHingeDegrees(*hinge_)) last_.angle = angle;
    }
    if (const auto closed = readLidClosed()) last_.closed = closed;
    return last_;
}

std::optional<bool> LinuxLidSensor::readLidClosed() {
    if (!lidSwitch_) return std::nullopt;
    LogindReply reply = logind_->managerProperty(kLidClosed);
    if (reply.ok && (reply.values.isEmpty() || reply.values.first().typeId() != QMetaType::Bool)) {
        reply = {false, {}, "not a boolean"};
    }
    if (!reply.ok) {
        // Polled every few seconds: one line until it can be read again.
        if (!lidReadFailed_) logind_->log("lid sensor: LidClosed unreadable (" + reply.error + ")");
        lidReadFailed_ = true;
        return std::nullopt;
    }
    lidReadFailed_ = false;
    return reply.values.first().toBool();
}

// PropertiesChanged(interface, changed values, invalidated names).
void LinuxLidSensor::propertiesChanged(const QDBusMessage& message) {
    const QVariantList args = message.arguments();
    if (args.size() < 3 || args[0].toString() != kManagerInterface) return;
    const QVariantMap changed = qdbus_cast<QVariantMap>(args[1]);
    const QStringList invalidated = qdbus_cast<QStringList>(args[2]);
    std::optional<bool> closed;
    if (const auto found = changed.find(kLidClosed);
        found != changed.end() && found->typeId() == QMetaType::Bool) {
        closed = found->toBool();
    } else if (invalidated.contains(kLidClosed)) {
        closed = readLidClosed();
    }
    if (!closed) return;
    last_.closed = closed;
    if (onChange_) onChange_(last_);
}

}  // namespace lumora::lx
