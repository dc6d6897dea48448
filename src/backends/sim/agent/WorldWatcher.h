#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "sim/World.h"

class QFileSystemWatcher;
class QTimer;

namespace lumora {
class Log;
}  // namespace lumora

namespace lumora::sim {

class SimMachine;

// Makes edits of the --simulate world file hardware changes: a moment after the file changes,
// it is read again and the machine moves to the new world (plugs, unplugs, pointer, lid).
// A world file that does not load is logged once and the machine stays as it was.
class WorldWatcher {
  public:
    // Editors save in several steps (write a copy, rename it over the file); the reload waits
    // for the last of them.
    static constexpr int kSettleMilliseconds = 50;

    // `current` is the world the machine was built from. Lives on the thread with the event
    // loop; the machine and the log must outlive the watcher.
    WorldWatcher(std::filesystem::path file, sim::World current, sim::SimMachine& machine,
                 Log& log);
    ~WorldWatcher();
    WorldWatcher(const WorldWatcher&) = delete;
    WorldWatcher& operator=(const WorldWatcher&) = delete;

    [[nodiscard]] const std::filesystem::path& file() const { return file_; }

  private:
    void changed();
    void watchFile();
    void reload();

    std::filesystem::path file_;
    sim::World current_;
    sim::SimMachine& machine_;
    Log& log_;
    std::string lastError_;  // the failure already logged, until a world loads again
    std::unique_ptr<QFileSystemWatcher> watcher_;
    std::unique_ptr<QTimer> settle_;
};

}  // namespace lumora::sim
