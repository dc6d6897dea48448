#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/Osd.h"

namespace lumora::sim {

// The on-screen display of the simulated machine: remembers every show, in order.
class SimOsd final : public Osd {
  public:
    struct Shown {
        DisplayID display = 0;
        double level = 0;
        std::string symbol;
        std::optional<std::string> text;
        friend bool operator==(const Shown&, const Shown&) = default;
    };

    void show(DisplayID display, double level, const std::string& symbol,
              const std::optional<std::string>& text) override;

    [[nodiscard]] std::vector<Shown> shown() const;
    void clear();

  private:
    mutable std::mutex mutex_;
    std::vector<Shown> shown_;
};

}  // namespace lumora::sim
