#pragma once

#include <string>
#include <vector>

#include "log/Log.h"
#include "support/TestSupport.h"

namespace lumora::test {

using Lines = std::vector<std::string>;

// A log in a temporary folder with the fixed wall clock, read back a batch at a time.
class TestLog {
  public:
    // The lines written since the last call, without their time stamps.
    Lines logged() {
        log.flush();
        const auto all = log.tail(100000);
        Lines fresh;
        for (std::size_t i = seen_; i < all.size(); ++i)
            fresh.push_back(all[i].substr(std::string(kFixedStamp).size() + 1));
        seen_ = all.size();
        return fresh;
    }

    TempDir dir;
    Log log{Log::Options{dir / "Lumora.log", fixedLocalTime, nullptr}};

  private:
    std::size_t seen_ = 0;
};

}  // namespace lumora::test
