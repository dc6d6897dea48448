#pragma once

#include <map>
#include <mutex>
#include <string>

#include "platform/Defaults.h"

namespace lumora {

// A defaults store that keeps nothing beyond the process: a locked in-memory dictionary
// (the listing, the simulated machine, tests).
class MemoryDefaults final : public Defaults {
  public:
    [[nodiscard]] std::optional<Value> object(std::string_view key) const override;
    void set(std::string_view key, Value value) override;
    void remove(std::string_view key) override;
    // Everything stored, for tests that compare whole stores.
    [[nodiscard]] nlohmann::json dump() const;

  private:
    mutable std::mutex mutex_;
    std::map<std::string, Value, std::less<>> values_;
};

}  // namespace lumora
