#include "runtime/SettingsDefaults.h"

#include <QSettings>
#include <QString>
#include <chrono>
#include <utility>

#include "runtime/SettingsCodec.h"

namespace lumora::app {

namespace {

QString keyOf(std::string_view key) {
    return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
}

}  // namespace

SettingsDefaults::SettingsDefaults(std::filesystem::path iniFile)
    : SettingsDefaults(Storage::jsonText, std::move(iniFile)) {}

SettingsDefaults::SettingsDefaults(Storage storage, std::filesystem::path file)
    : storage_(storage), file_(std::move(file)) {}

#if defined(__APPLE__)
std::unique_ptr<SettingsDefaults> SettingsDefaults::userDefaults() {
    return std::unique_ptr<SettingsDefaults>(new SettingsDefaults(Storage::native, {}));
}
#endif

std::unique_ptr<QSettings> SettingsDefaults::open() const {
    if (storage_ == Storage::native) {
        // Organization domain and name that Qt turns into the bundle identifier's domain.
        return std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                           QStringLiteral("lumora.org"), QStringLiteral("Lumora"));
    }
    return std::make_unique<QSettings>(QString::fromStdString(file_.string()),
                                       QSettings::IniFormat);
}

std::optional<Defaults::Value> SettingsDefaults::object(std::string_view key) const {
    std::lock_guard lock(mutex_);
    auto settings = open();
    const QVariant stored = settings->value(keyOf(key));
    if (!stored.isValid()) return std::nullopt;
    if (storage_ == Storage::jsonText && stored.typeId() == QMetaType::QString) {
        return decodeSettingText(stored.toString().toStdString());
    }
    // Native values, or an entry that an INI reader found to be a list.
    return settingFromVariant(stored);
}

void SettingsDefaults::set(std::string_view key, Value value) {
    std::lock_guard lock(mutex_);
    auto settings = open();
    if (storage_ == Storage::jsonText) {
        settings->setValue(keyOf(key), QString::fromStdString(encodeSettingText(value)));
    } else {
        settings->setValue(keyOf(key), settingToVariant(value));
    }
    sync(*settings);
}

void SettingsDefaults::remove(std::string_view key) {
    if (key.empty()) return;  // QSettings would take an empty key for "everything"
    std::lock_guard lock(mutex_);
    auto settings = open();
    settings->remove(keyOf(key));
    sync(*settings);
}

void SettingsDefaults::sync(QSettings& settings) {
    settings.sync();
    if (settings.status() == QSettings::NoError || !log_) return;
    const double now =
        std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    if (!failures_.shouldReport(now)) return;
    log_->write("settings: cannot write " + settings.fileName().toStdString() +
                " (is the disk full?); the previous file is kept and the agent goes on");
}

}  // namespace lumora::app
