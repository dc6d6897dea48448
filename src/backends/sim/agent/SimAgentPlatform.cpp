#include "sim/agent/SimAgentPlatform.h"

#include <utility>

namespace lumora::sim {

SimAgentPlatform::SimAgentPlatform(World world, std::optional<std::filesystem::path> worldFile,
                                   std::optional<std::filesystem::path> stateFile,
                                   Scheduler& scheduler)
    : SimMachine(world, scheduler),
      world_(std::move(world)),
      worldFile_(std::move(worldFile)),
      stateFile_(std::move(stateFile)) {}

SimAgentPlatform::~SimAgentPlatform() = default;

void SimAgentPlatform::attach(Log& log) {
    if (attached_) return;
    attached_ = true;
    if (stateFile_) setStateFile(*stateFile_);
    if (worldFile_) watcher_ = std::make_unique<WorldWatcher>(*worldFile_, world_, *this, log);
}

void SimAgentPlatform::persist() {
    if (attached_) writeStateFile();
}

}  // namespace lumora::sim
