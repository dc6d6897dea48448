#include "sim/SimPorts.h"

namespace lumora::sim {

namespace {

class SimSystemEvents final : public SystemEvents {
  public:
    explicit SimSystemEvents(std::shared_ptr<SimCore> core) : core_(std::move(core)) {}

    Token addObserver(SystemEvent event, Handler handler) override {
        Token token = 0;
        core_->update([&](SimData& data) {
            token = data.nextObserver++;
            data.observers.emplace(token, SimObserver{event, std::move(handler)});
            return false;
        });
        return token;
    }

    void removeObserver(Token token) override {
        core_->update([&](SimData& data) {
            data.observers.erase(token);
            return false;
        });
    }

  private:
    std::shared_ptr<SimCore> core_;
};

}  // namespace

std::unique_ptr<SystemEvents> makeSimSystemEvents(std::shared_ptr<SimCore> core) {
    return std::make_unique<SimSystemEvents>(std::move(core));
}

void postSimSystemEvent(const std::shared_ptr<SimCore>& core, SystemEvent event) {
    core->scheduler().mainQueue().post([weak = std::weak_ptr<SimCore>(core), event] {
        auto alive = weak.lock();
        if (!alive) return;
        std::vector<SystemEvents::Handler> handlers = alive->read([&](const SimData& data) {
            std::vector<SystemEvents::Handler> matching;
            for (const auto& [token, observer] : data.observers) {
                if (observer.event == event) matching.push_back(observer.handler);
            }
            return matching;
        });
        for (const auto& handler : handlers)
            handler();
    });
}

}  // namespace lumora::sim
