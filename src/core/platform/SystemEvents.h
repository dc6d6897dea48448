#pragma once

#include <cstdint>
#include <functional>

namespace lumora {

// Notifications of the user's session that the core reacts to.
enum class SystemEvent {
    didWake,         // the system woke from sleep
    screensDidWake,  // the displays woke from display sleep
    // The connection to the display server (the X server, the compositor) broke for good: the
    // server crashed or the session ended. Whoever hears it must end the process.
    displayServerLost,
};

// The session's notification centre. Handlers run on the main queue.
class SystemEvents {
  public:
    using Handler = std::function<void()>;
    using Token = std::uint64_t;  // never 0

    virtual ~SystemEvents() = default;
    virtual Token addObserver(SystemEvent event, Handler handler) = 0;
    // An unknown or already removed token is ignored.
    virtual void removeObserver(Token token) = 0;
};

}  // namespace lumora
