#pragma once

#include <memory>

#include "platform/SystemEvents.h"

namespace lumora::mac {

// Wake notifications of the shared workspace, delivered on the main queue.
class MacSystemEvents final : public SystemEvents {
  public:
    MacSystemEvents();
    ~MacSystemEvents() override;
    MacSystemEvents(const MacSystemEvents&) = delete;
    MacSystemEvents& operator=(const MacSystemEvents&) = delete;

    Token addObserver(SystemEvent event, Handler handler) override;
    void removeObserver(Token token) override;

  private:
    struct Observers;  // the notification centre's tokens (Objective-C objects)
    std::unique_ptr<Observers> observers_;
    Token next_ = 1;
};

}  // namespace lumora::mac
