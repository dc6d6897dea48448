#pragma once

#include <QObject>
#include <functional>

#include "model/Observable.h"

namespace lumora::ui {

// Turns the model's "about to change" notifications into one update after the change: the
// model tells subscribers before it stores a new value, so a view that re-read at once would
// see the old one. Every notification schedules a zero-delay queued call; notifications that
// arrive before it runs are folded into it.
class ModelWatcher : public QObject {
  public:
    ModelWatcher(const Signal& willChange, std::function<void()> update, QObject* parent = nullptr);

    // Whether an update is scheduled and has not run yet.
    [[nodiscard]] bool pending() const { return pending_; }

  private:
    void schedule();

    std::function<void()> update_;
    bool pending_ = false;
    Subscription subscription_;  // last: unsubscribes before the rest goes
};

}  // namespace lumora::ui
