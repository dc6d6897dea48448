#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "sim/SimMachine.h"
#include "sim/World.h"
#include "sim/agent/WorldWatcher.h"

namespace lumora::sim {

// The simulated machine as the agent runs it: once attached, its hardware state goes to the
// state file after every change, and edits of the world file become hardware changes.
class SimAgentPlatform final : public SimMachine {
  public:
    SimAgentPlatform(World world, std::optional<std::filesystem::path> worldFile,
                     std::optional<std::filesystem::path> stateFile, Scheduler& scheduler);
    ~SimAgentPlatform() override;

    void attach(Log& log) override;
    // Nothing unless attached: a listing or a refused second start leaves the file alone.
    void persist() override;

  private:
    World world_;
    std::optional<std::filesystem::path> worldFile_;
    std::optional<std::filesystem::path> stateFile_;
    std::unique_ptr<WorldWatcher> watcher_;
    bool attached_ = false;
};

}  // namespace lumora::sim
