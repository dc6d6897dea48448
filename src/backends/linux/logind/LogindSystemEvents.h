#pragma once

#include <map>
#include <memory>
#include <utility>

#include "logind/LogindClient.h"
#include "logind/LogindSignal.h"
#include "platform/SystemEvents.h"

namespace lumora::lx {

// System wake from logind's PrepareForSleep signal. logind says nothing about display sleep
// or the display server: the platform tells those through post().
class LogindSystemEvents final : public SystemEvents {
  public:
    explicit LogindSystemEvents(std::shared_ptr<LogindClient> logind);

    [[nodiscard]] bool available() const { return signal_ && signal_->connected(); }

    Token addObserver(SystemEvent event, Handler handler) override;
    void removeObserver(Token token) override;
    // Calls the observers of `event` present now, while they are still present (a handler may
    // add or remove observers).
    void post(SystemEvent event);

  private:
    void prepareForSleep(const QDBusMessage& message);

    std::shared_ptr<LogindClient> logind_;
    std::map<Token, std::pair<SystemEvent, Handler>> observers_;
    Token nextToken_ = 1;
    std::unique_ptr<LogindSignal> signal_;
};

}  // namespace lumora::lx
