#include "ModelWatcher.h"

#include <QMetaObject>
#include <utility>

namespace lumora::ui {

ModelWatcher::ModelWatcher(const Signal& willChange, std::function<void()> update, QObject* parent)
    : QObject(parent), update_(std::move(update)) {
    subscription_ = willChange.subscribe([this] { schedule(); });
}

void ModelWatcher::schedule() {
    if (pending_) return;
    pending_ = true;
    // Queued with this object as context: dropped if the watcher is gone by then.
    QMetaObject::invokeMethod(
        this,
        [this] {
            pending_ = false;
            update_();
        },
        Qt::QueuedConnection);
}

}  // namespace lumora::ui
