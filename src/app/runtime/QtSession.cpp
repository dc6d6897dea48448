#include "runtime/QtSession.h"

#include <QCoreApplication>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

#include "base/FileReplace.h"
#include "runtime/AutostartEntry.h"
#if defined(__APPLE__)
#include "MacLoginItem.h"
#endif

#ifndef LUMORA_VERSION
#define LUMORA_VERSION ""
#endif

namespace lumora::app {

namespace {

namespace fs = std::filesystem;

const char* const kNoVersion = "dev";

bool fileExists(const fs::path& file) {
    std::error_code ec;
    return fs::exists(file, ec);
}

// A link to a unit counts even when its target has gone: it is the user's switch.
bool linkExists(const fs::path& link) {
    std::error_code ec;
    return !link.empty() && fs::is_symlink(fs::symlink_status(link, ec));
}

// The line of a desktop entry by which a user disables it without deleting it.
bool hiddenEntry(const fs::path& file) {
    std::ifstream in(file);
    std::string line;
    while (std::getline(in, line)) {
        if (line == "Hidden=true") return true;
    }
    return false;
}

}  // namespace

QtSession::QtSession(AppPaths paths, Launch launch, Log* log)
    : paths_(std::move(paths)),
      launch_(std::move(launch)),
      log_(log),
      launchAgentAtStart_(fileExists(paths_.autostartFile) || linkExists(paths_.userUnitLink)) {}

std::string QtSession::version() const {
    const std::string version = LUMORA_VERSION;
    return version.empty() ? kNoVersion : version;
}

fs::path QtSession::statusFile() const {
    return paths_.statusFile;
}

bool QtSession::launchAgentInstalled() const {
    return launchAgentAtStart_;
}

bool QtSession::loginItemEnabled() const {
#if defined(__APPLE__)
    return mac::MacLoginItem(paths_.home, kBundleIdentifier).enabled();
#else
    if (userUnit()) return linkExists(paths_.userUnitLink);
    return fileExists(paths_.autostartFile) && !hiddenEntry(paths_.autostartFile);
#endif
}

std::optional<fs::path> QtSession::userUnit() const {
    std::error_code ec;
    if (paths_.systemdRuntimeFolder.empty() || !fs::is_directory(paths_.systemdRuntimeFolder, ec))
        return std::nullopt;
    for (const fs::path& folder : paths_.userUnitFolders) {
        const fs::path unit = folder / kUserUnitName;
        if (fs::is_regular_file(unit, ec)) return unit;
    }
    return std::nullopt;
}

bool QtSession::setLoginItemEnabled(bool enabled) {
#if defined(__APPLE__)
    mac::MacLoginItem item(paths_.home, kBundleIdentifier);
    std::string why;
    if (item.setEnabled(enabled, &why)) return true;
    if (log_) log_->write("login item: " + why);
    // Only the user can approve it, in the system settings: take them there.
    if (enabled && item.awaitingApproval()) mac::MacLoginItem::openApprovalSettings();
    return false;
#else
    std::error_code ec;
    if (auto unit = userUnit()) {
        // What `systemctl --user enable` does; the autostart entry would start a second one.
        fs::remove(paths_.autostartFile, ec);
        fs::remove(paths_.userUnitLink, ec);
        if (!enabled) return !linkExists(paths_.userUnitLink);
        fs::create_directories(paths_.userUnitLink.parent_path(), ec);
        fs::create_symlink(*unit, paths_.userUnitLink, ec);
        return !ec;
    }
    if (enabled) {
        return replaceFile(paths_.autostartFile, autostartEntry(launch_.binary, launch_.headless));
    }
    fs::remove(paths_.autostartFile, ec);
    return !ec;
#endif
}

bool QtSession::registerLoginItem() {
#if defined(__APPLE__)
    return mac::MacLoginItem(paths_.home, kBundleIdentifier).setEnabled(true);
#else
    return setLoginItemEnabled(true);
#endif
}

fs::path QtSession::runningBinary() {
    std::error_code ec;
    // Linux names the running binary here; elsewhere Qt finds it from argv[0].
    const fs::path kSelfLink = "/proc/self/exe";
    fs::path self = fs::read_symlink(kSelfLink, ec);
    if (!ec && self.is_absolute()) return self;
    return fs::path(QCoreApplication::applicationFilePath().toStdString());
}

}  // namespace lumora::app
