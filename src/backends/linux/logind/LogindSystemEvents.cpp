#include "logind/LogindSystemEvents.h"

#include <vector>

namespace lumora::lx {

LogindSystemEvents::LogindSystemEvents(std::shared_ptr<LogindClient> logind)
    : logind_(std::move(logind)) {
    signal_ = logind_->onManagerSignal(QStringLiteral("PrepareForSleep"),
                                       [this](const QDBusMessage& m) { prepareForSleep(m); });
}

SystemEvents::Token LogindSystemEvents::addObserver(SystemEvent event, Handler handler) {
    const Token token = nextToken_++;
    observers_.emplace(token, std::make_pair(event, std::move(handler)));
    return token;
}

void LogindSystemEvents::removeObserver(Token token) {
    observers_.erase(token);
}

// PrepareForSleep(true) comes before the system sleeps, PrepareForSleep(false) after it woke.
void LogindSystemEvents::prepareForSleep(const QDBusMessage& message) {
    const QVariantList args = message.arguments();
    if (args.isEmpty() || args.first().typeId() != QMetaType::Bool || args.first().toBool()) {
        return;
    }
    post(SystemEvent::didWake);
}

void LogindSystemEvents::post(SystemEvent event) {
    std::vector<Token> tokens;
    for (const auto& [token, observer] : observers_) {
        if (observer.first == event) tokens.push_back(token);
    }
    for (const Token token : tokens) {
        const auto found = observers_.find(token);
        if (found == observers_.end()) continue;
        const Handler handler = found->second.second;  // may remove itself while it runs
        if (handler) handler();
    }
}

}  // namespace lumora::lx
