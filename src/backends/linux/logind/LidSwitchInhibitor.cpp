#include "logind/LidSwitchInhibitor.h"

#include <utility>

namespace lumora::lx {

LidSwitchInhibitor::LidSwitchInhibitor(std::shared_ptr<LogindClient> logind)
    : logind_(std::move(logind)) {
    // A restarted logind knows nothing of the lock the old one gave: it is taken anew.
    onReturn_ = logind_->onReturn([this] {
        if (!wanted_) return;
        lock_.release();
        (void)take();
    });
}

LidSwitchInhibitor::~LidSwitchInhibitor() {
    logind_->forgetReturn(onReturn_);
}

bool LidSwitchInhibitor::take() {
    wanted_ = true;
    if (lock_.held()) return true;
    lock_ = logind_->inhibit(QStringLiteral("handle-lid-switch"),
                             QStringLiteral("Lumora handles the lid"));
    return lock_.held();
}

}  // namespace lumora::lx
