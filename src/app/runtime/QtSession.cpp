#include "runtime/QtSession.h"

#include <QCoreApplication>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

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

// The line of a desktop entry by which a user disables it without deleting it.
bool hiddenEntry(const fs::path& file) {
    std::ifstream in(file);
    std::string line;
    while (std::getline(in, line)) {
        if (line == "Hidden=true") return true;
    }
    return false;
}

// Written next to the target and renamed over it, so a crash never leaves half an entry.
bool writeAtomically(const fs::path& file, const std::string& text) {
    std::error_code ec;
    fs::create_directories(file.parent_path(), ec);
    const fs::path temporary = file.string() + ".new";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        out << text;
        out.flush();
        if (!out) {
            fs::remove(temporary, ec);
            return false;
        }
    }
    fs::rename(temporary, file, ec);
    if (ec) {
        fs::remove(temporary, ec);
        return false;
    }
    return true;
}

}  // namespace

QtSession::QtSession(AppPaths paths, Launch launch, Log* log)
    : paths_(std::move(paths)),
      launch_(std::move(launch)),
      log_(log),
      launchAgentAtStart_(fileExists(paths_.autostartFile)) {}

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
    return fileExists(paths_.autostartFile) && !hiddenEntry(paths_.autostartFile);
#endif
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
    if (enabled) {
        return writeAtomically(paths_.autostartFile,
                               autostartEntry(launch_.binary, launch_.headless));
    }
    std::error_code ec;
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
