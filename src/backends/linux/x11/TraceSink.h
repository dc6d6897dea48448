#pragma once

#include <functional>
#include <string>

namespace lumora::lx {

// Lines for the event log ("x11: ..."), handed to whoever keeps the log.
using TraceSink = std::function<void(const std::string&)>;

}  // namespace lumora::lx
