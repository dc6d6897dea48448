#include "wayland/mutter/MutterBus.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QList>
#include <QVariantMap>

#include "dbus/BusNameWatch.h"

// ApplyMonitorsConfig's argument types: a(iiduba(ssa{sv})).
struct MutterMonitorArg {
    QString connector;
    QString modeId;
    QVariantMap properties;
};
Q_DECLARE_METATYPE(MutterMonitorArg)

struct MutterLogicalMonitorArg {
    qint32 x = 0;
    qint32 y = 0;
    double scale = 1;
    quint32 transform = 0;
    bool primary = false;
    QList<MutterMonitorArg> monitors;
};
Q_DECLARE_METATYPE(MutterLogicalMonitorArg)

QDBusArgument& operator<<(QDBusArgument& arg, const MutterMonitorArg& m) {
    arg.beginStructure();
    arg << m.connector << m.modeId << m.properties;
    arg.endStructure();
    return arg;
}

const QDBusArgument& operator>>(const QDBusArgument& arg, MutterMonitorArg& m) {
    arg.beginStructure();
    arg >> m.connector >> m.modeId >> m.properties;
    arg.endStructure();
    return arg;
}

QDBusArgument& operator<<(QDBusArgument& arg, const MutterLogicalMonitorArg& lm) {
    arg.beginStructure();
    arg << lm.x << lm.y << lm.scale << lm.transform << lm.primary << lm.monitors;
    arg.endStructure();
    return arg;
}

const QDBusArgument& operator>>(const QDBusArgument& arg, MutterLogicalMonitorArg& lm) {
    arg.beginStructure();
    arg >> lm.x >> lm.y >> lm.scale >> lm.transform >> lm.primary >> lm.monitors;
    arg.endStructure();
    return arg;
}

namespace lumora::wl {

namespace {

const QString kService = QStringLiteral("org.gnome.Mutter.DisplayConfig");
const QString kPath = QStringLiteral("/org/gnome/Mutter/DisplayConfig");
const QString kInterface = QStringLiteral("org.gnome.Mutter.DisplayConfig");
const QString kProperties = QStringLiteral("org.freedesktop.DBus.Properties");

// Mutter answers within milliseconds; a compositor that hangs must not freeze the agent.
constexpr int kCallTimeoutMs = 2000;

void registerTypes() {
    static const bool registered = [] {
        qDBusRegisterMetaType<MutterMonitorArg>();
        qDBusRegisterMetaType<QList<MutterMonitorArg>>();
        qDBusRegisterMetaType<MutterLogicalMonitorArg>();
        qDBusRegisterMetaType<QList<MutterLogicalMonitorArg>>();
        return true;
    }();
    (void)registered;
}

std::string text(const QString& s) {
    return s.toStdString();
}

// A reply of `count` arguments or more, or the error.
bool answered(const QDBusMessage& reply, int count, MutterError& error) {
    if (reply.type() == QDBusMessage::ErrorMessage) {
        error = MutterError{text(reply.errorName()), text(reply.errorMessage())};
        return false;
    }
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() < count) {
        error = MutterError{"lumora.NoReply", "no usable reply from Mutter"};
        return false;
    }
    return true;
}

bool flag(const QVariantMap& properties, const char* key) {
    return properties.value(QLatin1String(key)).toBool();
}

std::int32_t integer(const QVariantMap& properties, const char* key) {
    return properties.value(QLatin1String(key)).toInt();
}

// (ssss): connector, vendor, product, serial.
MutterMonitor readMonitorSpec(const QDBusArgument& arg) {
    QString connector, vendor, product, serial;
    arg.beginStructure();
    arg >> connector >> vendor >> product >> serial;
    arg.endStructure();
    MutterMonitor m;
    m.connector = text(connector);
    m.vendor = text(vendor);
    m.product = text(product);
    m.serial = text(serial);
    return m;
}

// (siiddada{sv})
MutterMode readMode(const QDBusArgument& arg) {
    QString id;
    MutterMode mode;
    QList<double> scales;
    QVariantMap properties;
    arg.beginStructure();
    arg >> id >> mode.width >> mode.height >> mode.refresh >> mode.preferredScale >> scales >>
        properties;
    arg.endStructure();
    mode.id = text(id);
    mode.scales.assign(scales.begin(), scales.end());
    mode.current = flag(properties, "is-current");
    mode.preferred = flag(properties, "is-preferred");
    return mode;
}

// ((ssss)a(siiddada{sv})a{sv})
MutterMonitor readMonitor(const QDBusArgument& arg) {
    arg.beginStructure();
    MutterMonitor m = readMonitorSpec(arg);
    arg.beginArray();
    while (!arg.atEnd())
        m.modes.push_back(readMode(arg));
    arg.endArray();
    QVariantMap properties;
    arg >> properties;
    arg.endStructure();
    m.builtin = flag(properties, "is-builtin");
    m.displayName = text(properties.value(QStringLiteral("display-name")).toString());
    m.widthMm = integer(properties, "width-mm");
    m.heightMm = integer(properties, "height-mm");
    return m;
}

// (iiduba(ssss)a{sv})
MutterLogicalMonitor readLogicalMonitor(const QDBusArgument& arg) {
    MutterLogicalMonitor lm;
    QVariantMap properties;
    arg.beginStructure();
    arg >> lm.x >> lm.y >> lm.scale >> lm.transform >> lm.primary;
    arg.beginArray();
    while (!arg.atEnd())
        lm.connectors.push_back(readMonitorSpec(arg).connector);
    arg.endArray();
    arg >> properties;
    arg.endStructure();
    return lm;
}

QList<quint16> toList(const std::vector<std::uint16_t>& values) {
    return QList<quint16>(values.begin(), values.end());
}

}  // namespace

bool MutterError::staleSerial() const {
    return name == "org.freedesktop.DBus.Error.AccessDenied";
}

MutterBus::MutterBus(QDBusConnection connection) : connection_(std::move(connection)) {
    registerTypes();
}

std::optional<MutterState> MutterBus::currentState(MutterError& error) const {
    auto call = QDBusMessage::createMethodCall(kService, kPath, kInterface,
                                               QStringLiteral("GetCurrentState"));
    const QDBusMessage reply = connection_.call(call, QDBus::Block, kCallTimeoutMs);
    if (!answered(reply, 4, error)) return std::nullopt;
    const QList<QVariant> args = reply.arguments();
    MutterState state;
    state.serial = args[0].toUInt();
    const auto monitors = args[1].value<QDBusArgument>();
    monitors.beginArray();
    while (!monitors.atEnd())
        state.monitors.push_back(readMonitor(monitors));
    monitors.endArray();
    const auto logical = args[2].value<QDBusArgument>();
    logical.beginArray();
    while (!logical.atEnd())
        state.logicalMonitors.push_back(readLogicalMonitor(logical));
    logical.endArray();
    QVariantMap properties;
    args[3].value<QDBusArgument>() >> properties;
    if (properties.value(QStringLiteral("layout-mode")).toUInt() ==
        static_cast<std::uint32_t>(MutterLayout::physical))
        state.layout = MutterLayout::physical;
    return state;
}

std::optional<MutterResources> MutterBus::resources(MutterError& error) const {
    auto call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("GetResources"));
    const QDBusMessage reply = connection_.call(call, QDBus::Block, kCallTimeoutMs);
    if (!answered(reply, 3, error)) return std::nullopt;
    const QList<QVariant> args = reply.arguments();
    MutterResources result;
    result.serial = args[0].toUInt();
    // The CRTCs' own fields are not needed: which output drives one is told by the output.
    std::vector<std::uint32_t> crtcIds;
    const auto crtcs = args[1].value<QDBusArgument>();
    crtcs.beginArray();
    while (!crtcs.atEnd()) {
        quint32 id = 0, transform = 0;
        qint64 winsys = 0;
        qint32 x = 0, y = 0, width = 0, height = 0, mode = 0;
        QList<quint32> transforms;
        QVariantMap properties;
        crtcs.beginStructure();
        crtcs >> id >> winsys >> x >> y >> width >> height >> mode >> transform >> transforms >>
            properties;
        crtcs.endStructure();
        crtcIds.push_back(id);
    }
    crtcs.endArray();
    // (uxiausauaua{sv}): id, winsys id, current crtc, possible crtcs, name, modes, clones, props
    const auto outputs = args[2].value<QDBusArgument>();
    outputs.beginArray();
    while (!outputs.atEnd()) {
        quint32 id = 0;
        qint64 winsys = 0;
        qint32 crtc = -1;
        QList<quint32> possible, modes, clones;
        QString name;
        QVariantMap properties;
        outputs.beginStructure();
        outputs >> id >> winsys >> crtc >> possible >> name >> modes >> clones >> properties;
        outputs.endStructure();
        const std::string connector = text(name);
        if (crtc >= 0 && static_cast<std::size_t>(crtc) < crtcIds.size())
            result.crtcs.push_back(MutterCrtc{crtcIds[static_cast<std::size_t>(crtc)], connector});
        const QByteArray edid = properties.value(QStringLiteral("edid")).toByteArray();
        if (!edid.isEmpty()) result.edids[connector].assign(edid.begin(), edid.end());
    }
    outputs.endArray();
    return result;
}

bool MutterBus::applyMonitorsConfig(std::uint32_t serial, std::uint32_t method,
                                    const std::vector<MutterLogicalPlan>& plan,
                                    MutterError& error) {
    QList<MutterLogicalMonitorArg> logical;
    for (const auto& lm : plan) {
        MutterLogicalMonitorArg arg;
        arg.x = lm.x;
        arg.y = lm.y;
        arg.scale = lm.scale;
        arg.transform = lm.transform;
        arg.primary = lm.primary;
        for (const auto& m : lm.monitors) {
            arg.monitors.push_back(MutterMonitorArg{
                QString::fromStdString(m.connector), QString::fromStdString(m.modeId), {}});
        }
        logical.push_back(arg);
    }
    auto call = QDBusMessage::createMethodCall(kService, kPath, kInterface,
                                               QStringLiteral("ApplyMonitorsConfig"));
    call << QVariant::fromValue(serial) << QVariant::fromValue(method)
         << QVariant::fromValue(logical) << QVariant::fromValue(QVariantMap());
    const QDBusMessage reply = connection_.call(call, QDBus::Block, kCallTimeoutMs);
    return answered(reply, 0, error);
}

std::optional<GammaTables> MutterBus::crtcGamma(std::uint32_t serial, std::uint32_t crtc,
                                                MutterError& error) const {
    auto call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("GetCrtcGamma"));
    call << QVariant::fromValue(serial) << QVariant::fromValue(crtc);
    const QDBusMessage reply = connection_.call(call, QDBus::Block, kCallTimeoutMs);
    if (!answered(reply, 3, error)) return std::nullopt;
    GammaTables tables;
    // arguments() returns a copy: hold it, or the elements dangle.
    const QVariantList arguments = reply.arguments();
    for (int channel = 0; channel < 3; ++channel) {
        QList<quint16> values;
        const QVariant& arg = arguments[channel];
        if (arg.userType() == qMetaTypeId<QDBusArgument>()) {
            arg.value<QDBusArgument>() >> values;
        } else {
            values = arg.value<QList<quint16>>();
        }
        tables[static_cast<std::size_t>(channel)].assign(values.begin(), values.end());
    }
    return tables;
}

bool MutterBus::setCrtcGamma(std::uint32_t serial, std::uint32_t crtc, const GammaTables& tables,
                             MutterError& error) {
    auto call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("SetCrtcGamma"));
    call << QVariant::fromValue(serial) << QVariant::fromValue(crtc)
         << QVariant::fromValue(toList(tables[0])) << QVariant::fromValue(toList(tables[1]))
         << QVariant::fromValue(toList(tables[2]));
    const QDBusMessage reply = connection_.call(call, QDBus::Block, kCallTimeoutMs);
    return answered(reply, 0, error);
}

std::optional<std::int32_t> MutterBus::powerSaveMode(MutterError& error) const {
    auto call = QDBusMessage::createMethodCall(kService, kPath, kProperties, QStringLiteral("Get"));
    call << kInterface << QStringLiteral("PowerSaveMode");
    const QDBusMessage reply = connection_.call(call, QDBus::Block, kCallTimeoutMs);
    if (!answered(reply, 1, error)) return std::nullopt;
    return reply.arguments()[0].value<QDBusVariant>().variant().toInt();
}

bool MutterBus::setPowerSaveMode(std::int32_t mode, MutterError& error) {
    auto call = QDBusMessage::createMethodCall(kService, kPath, kProperties, QStringLiteral("Set"));
    call << kInterface << QStringLiteral("PowerSaveMode")
         << QVariant::fromValue(QDBusVariant(QVariant::fromValue(mode)));
    const QDBusMessage reply = connection_.call(call, QDBus::Block, kCallTimeoutMs);
    return answered(reply, 0, error);
}

bool MutterBus::applyAllowed() const {
    auto call = QDBusMessage::createMethodCall(kService, kPath, kProperties, QStringLiteral("Get"));
    call << kInterface << QStringLiteral("ApplyMonitorsConfigAllowed");
    const QDBusMessage reply = connection_.call(call, QDBus::Block, kCallTimeoutMs);
    MutterError error;
    // An older Mutter without the property allows it.
    if (!answered(reply, 1, error)) return true;
    return reply.arguments()[0].value<QDBusVariant>().variant().toBool();
}

std::unique_ptr<QDBusServiceWatcher> MutterBus::watchOwner(
    std::function<void(bool present)> changed) {
    return lx::watchBusName(connection_, kService, std::move(changed));
}

bool MutterBus::connectMonitorsChanged(QObject* receiver, const char* slot) {
    return connection_.connect(kService, kPath, kInterface, QStringLiteral("MonitorsChanged"),
                               receiver, slot);
}

}  // namespace lumora::wl
