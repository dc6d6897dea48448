#pragma once

#include <filesystem>
#include <memory>
#include <mutex>

#include "base/FileReplace.h"
#include "log/Log.h"
#include "platform/Defaults.h"

class QSettings;

namespace lumora::app {

// The user's settings over QSettings. Safe from any thread: calls take turns, each on its own
// QSettings object (they share one cache per file, and a QSettings belongs to the thread that
// made it), and every write is synced to disk at once. QSettings writes the file aside and
// renames it over the old one, so a kill or a full disk leaves the previous file whole; a
// write that fails stays in QSettings' memory and is tried again with the next one.
class SettingsDefaults final : public Defaults {
  public:
    // An INI file holding every value as its JSON text, so that types survive exactly.
    explicit SettingsDefaults(std::filesystem::path iniFile);
#if defined(__APPLE__)
    // The user defaults of the bundle identifier, in their native types.
    static std::unique_ptr<SettingsDefaults> userDefaults();
#endif

    [[nodiscard]] std::optional<Value> object(std::string_view key) const override;
    void set(std::string_view key, Value value) override;
    void remove(std::string_view key) override;

    // Where a failed write is told, at most once a minute.
    void reportFailuresTo(Log* log) {
        log_ = log;
    }

    [[nodiscard]] const std::filesystem::path& file() const {
        return file_;
    }

  private:
    enum class Storage { jsonText, native };
    SettingsDefaults(Storage storage, std::filesystem::path file);
    [[nodiscard]] std::unique_ptr<QSettings> open() const;
    void sync(QSettings& settings);

    mutable std::mutex mutex_;
    Storage storage_;
    std::filesystem::path file_;  // empty for the native store
    Log* log_ = nullptr;
    FailureThrottle failures_;
};

}  // namespace lumora::app
