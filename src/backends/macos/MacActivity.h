#pragma once

#include <memory>

namespace lumora::mac {

// While this object lives the system treats the process as doing work the user asked for:
// App Nap never throttles its timers (the lid tick keeps its pace while no window is visible),
// and idle system sleep stays allowed.
class MacActivity {
  public:
    MacActivity();
    ~MacActivity();
    MacActivity(const MacActivity&) = delete;
    MacActivity& operator=(const MacActivity&) = delete;

  private:
    struct Token;
    std::unique_ptr<Token> token_;
};

}  // namespace lumora::mac
