#include "sim/SimOsd.h"

namespace lumora::sim {

void SimOsd::show(DisplayID display, double level, const std::string& symbol,
                  const std::optional<std::string>& text) {
    std::lock_guard lock(mutex_);
    shown_.push_back({display, level, symbol, text});
}

std::vector<SimOsd::Shown> SimOsd::shown() const {
    std::lock_guard lock(mutex_);
    return shown_;
}

void SimOsd::clear() {
    std::lock_guard lock(mutex_);
    shown_.clear();
}

}  // namespace lumora::sim
