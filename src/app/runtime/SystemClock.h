#pragma once

#include <ctime>

namespace lumora::app {

// The wall clock broken down in the system's local time zone: the stamp of every log line
// (Log::Options::localTime).
std::tm systemLocalTime();

}  // namespace lumora::app
