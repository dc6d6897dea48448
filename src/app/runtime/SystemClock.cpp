#include "runtime/SystemClock.h"

namespace lumora::app {

std::tm systemLocalTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    // The reentrant form: log lines are stamped on many threads at once.
    localtime_r(&now, &local);
    return local;
}

}  // namespace lumora::app
