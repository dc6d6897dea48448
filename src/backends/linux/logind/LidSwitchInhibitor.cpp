#include "logind/LidSwitchInhibitor.h"

#include <utility>

namespace lumora::lx {

LidSwitchInhibitor::LidSwitchInhibitor(std::shared_ptr<LogindClient> logind)
    : logind_(std::move(logind)) {}

bool LidSwitchInhibitor::take() {
    if (lock_.held()) return true;
    lock_ = logind_->inhibit(QStringLiteral("handle-lid-switch"),
                             QStringLiteral("Lumora handles the lid"));
    return lock_.held();
}

}  // namespace lumora::lx
