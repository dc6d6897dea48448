#pragma once

#include <memory>

#include "logind/InhibitorLock.h"
#include "logind/LogindClient.h"

namespace lumora::lx {

// Keeps logind from acting on the lid switch (suspending, say) while Lumora's own lid logic
// is enabled, so the two never act on the same lid.
class LidSwitchInhibitor {
  public:
    explicit LidSwitchInhibitor(std::shared_ptr<LogindClient> logind);
    ~LidSwitchInhibitor();
    LidSwitchInhibitor(const LidSwitchInhibitor&) = delete;
    LidSwitchInhibitor& operator=(const LidSwitchInhibitor&) = delete;

    [[nodiscard]] bool available() const { return logind_->available(); }
    [[nodiscard]] bool held() const { return lock_.held(); }

    // Whether the lock is held afterwards; taking it again while held changes nothing.
    bool take();
    void release() {
        wanted_ = false;
        lock_.release();
    }

  private:
    std::shared_ptr<LogindClient> logind_;
    InhibitorLock lock_;
    bool wanted_ = false;  // taken and not given back: taken again when logind returns
    LogindClient::ReturnToken onReturn_ = 0;
};

}  // namespace lumora::lx
