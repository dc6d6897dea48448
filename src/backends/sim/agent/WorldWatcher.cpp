#include "sim/agent/WorldWatcher.h"

#include <QFileSystemWatcher>
#include <QString>
#include <QTimer>
#include <system_error>
#include <utility>

#include "log/Log.h"
#include "sim/SimMachine.h"

namespace lumora::sim {

namespace {

QString qtPath(const std::filesystem::path& path) {
    return QString::fromStdString(path.string());
}

}  // namespace

WorldWatcher::WorldWatcher(std::filesystem::path file, sim::World current, sim::SimMachine& machine,
                           Log& log)
    : current_(std::move(current)),
      machine_(machine),
      log_(log),
      watcher_(std::make_unique<QFileSystemWatcher>()),
      settle_(std::make_unique<QTimer>()) {
    std::error_code ec;
    file_ = std::filesystem::absolute(file, ec);
    if (ec) file_ = std::move(file);
    settle_->setSingleShot(true);
    settle_->setInterval(kSettleMilliseconds);
    QObject::connect(settle_.get(), &QTimer::timeout, settle_.get(), [this] { reload(); });
    QObject::connect(watcher_.get(), &QFileSystemWatcher::fileChanged, watcher_.get(),
                     [this](const QString&) { changed(); });
    // A file replaced by rename is no longer the watched one; its folder sees it come back.
    QObject::connect(watcher_.get(), &QFileSystemWatcher::directoryChanged, watcher_.get(),
                     [this](const QString&) { changed(); });
    watcher_->addPath(qtPath(file_.parent_path()));
    watchFile();
}

WorldWatcher::~WorldWatcher() = default;

void WorldWatcher::watchFile() {
    const QString path = qtPath(file_);
    if (!watcher_->files().contains(path)) watcher_->addPath(path);  // fails while it is away
}

void WorldWatcher::changed() {
    watchFile();
    settle_->start();  // restarts: one reload for a burst of changes
}

void WorldWatcher::reload() {
    watchFile();
    sim::WorldResult loaded = sim::loadWorldFile(file_);
    if (!loaded.world) {
        if (loaded.error != lastError_) {
            log_.write("sim: world file ignored: " + loaded.error);
            lastError_ = loaded.error;
        }
        return;
    }
    lastError_.clear();
    // Saving without a change, or touching a neighbour in the folder, is no hardware event.
    if (*loaded.world == current_) return;
    current_ = std::move(*loaded.world);
    machine_.applyWorld(current_);
}

}  // namespace lumora::sim
