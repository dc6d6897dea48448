#pragma once

#include <functional>
#include <memory>
#include <string>

namespace lumora::mac {

// The get-URL Apple event (lumora:// links opened by other applications), for a program that
// takes it from the event manager itself instead of from Qt. The event manager holds one
// handler per event for the whole process: while this object lives it replaces Qt's, which
// would otherwise turn the event into a file-open event on the application object.
class MacUrlEvents {
  public:
    using Handler = std::function<void(const std::string& url)>;

    // Main thread; the handler runs on the main thread for every URL opened.
    explicit MacUrlEvents(Handler handler);
    ~MacUrlEvents();
    MacUrlEvents(const MacUrlEvents&) = delete;
    MacUrlEvents& operator=(const MacUrlEvents&) = delete;

  private:
    struct Receiver;  // the Objective-C object the event manager calls
    std::unique_ptr<Receiver> receiver_;
};

}  // namespace lumora::mac
