#include <cmath>
#include <variant>

#include "sim/SimPorts.h"

namespace lumora::sim {

namespace {

struct SetMode {
    DisplayID id;
    std::int32_t mode;
};
struct SetOrigin {
    DisplayID id;
    Point origin;
};
struct SetMirror {
    DisplayID id;
    DisplayID target;
};
struct SetEnabled {
    DisplayID id;
    bool enabled;
};
struct SetMain {
    DisplayID id;
};
using Change = std::variant<SetMode, SetOrigin, SetMirror, SetEnabled, SetMain>;

// Checks each change when it is queued (an unknown display or mode is refused at once with
// kSimIllegalArgument, as the display server does) and applies them all in one step at
// completion. A display that went away in between is skipped.
class SimConfiguration final : public DisplayConfiguration {
  public:
    explicit SimConfiguration(std::shared_ptr<SimCore> core) : core_(std::move(core)) {}

    ConfigStatus setMode(DisplayID id, std::int32_t modeID) override {
        const bool known = core_->read([&](const SimData& data) {
            const SimDisplay* d = data.findOnline(id);
            if (!d) return false;
            for (const auto& m : d->modes) {
                if (m.id == modeID) return true;
            }
            return false;
        });
        return queue(known, SetMode{id, modeID});
    }

    ConfigStatus setOrigin(DisplayID id, std::int32_t x, std::int32_t y) override {
        return queue(isOnline(id),
                     SetOrigin{id, Point{static_cast<double>(x), static_cast<double>(y)}});
    }

    ConfigStatus setMain(DisplayID id) override { return queue(isOnline(id), SetMain{id}); }

    ConfigStatus setMirror(DisplayID id, DisplayID target) override {
        const bool valid = isOnline(id) && (target == 0 || (target != id && isOnline(target)));
        return queue(valid, SetMirror{id, target});
    }

    ConfigStatus setEnabled(DisplayID id, bool enabled) override {
        const auto [available, known] = core_->read([&](const SimData& data) {
            return std::pair{data.disconnect, data.find(id) != nullptr};
        });
        if (!available) return kConfigUnavailable;
        return queue(known, SetEnabled{id, enabled});
    }

    ConfigStatus complete(ConfigureOption /*option*/) override {
        std::vector<Change> changes = std::move(changes_);
        changes_.clear();
        if (changes.empty()) return kConfigOK;
        core_->change([&](SimData& data) {
            for (const auto& change : changes)
                std::visit([&](const auto& c) { apply(data, c); }, change);
            followSources(data);
        });
        return kConfigOK;
    }

    void cancel() override { changes_.clear(); }

  private:
    bool isOnline(DisplayID id) const {
        return core_->read([&](const SimData& data) { return data.findOnline(id) != nullptr; });
    }

    ConfigStatus queue(bool valid, Change change) {
        if (!valid) return kSimIllegalArgument;
        changes_.push_back(change);
        return kConfigOK;
    }

    static void apply(SimData& data, const SetMode& c) {
        if (SimDisplay* d = data.find(c.id)) d->mode = c.mode;
    }
    static void apply(SimData& data, const SetOrigin& c) {
        if (SimDisplay* d = data.find(c.id)) d->origin = c.origin;
    }
    static void apply(SimData& data, const SetMirror& c) {
        SimDisplay* d = data.find(c.id);
        if (!d) return;
        if (c.target == 0 && d->mirrorOf != 0) {
            // Out of the mirror set, the display takes a place of its own at the right.
            d->origin = Point{data.rightEdge(d->id), 0};
        }
        d->mirrorOf = c.target;
    }
    static void apply(SimData& data, const SetEnabled& c) {
        if (SimDisplay* d = data.find(c.id)) d->enabled = c.enabled;
    }
    // The main display is the one at the origin: every display moves by the same offset, so
    // the arrangement stays as it was.
    static void apply(SimData& data, const SetMain& c) {
        const SimDisplay* main = data.findOnline(c.id);
        if (!main) return;
        const Point shift = main->origin;
        for (auto& d : data.displays) {
            if (!d.online()) continue;
            d.origin = Point{std::trunc(d.origin.x - shift.x), std::trunc(d.origin.y - shift.y)};
        }
    }

    // A mirroring display shows its source, so it sits where the source sits.
    static void followSources(SimData& data) {
        for (auto& d : data.displays) {
            if (d.mirrorOf == 0) continue;
            if (const SimDisplay* source = data.find(d.mirrorOf)) d.origin = source->origin;
        }
    }

    std::shared_ptr<SimCore> core_;
    std::vector<Change> changes_;
};

}  // namespace

std::unique_ptr<DisplayConfiguration> makeSimConfiguration(std::shared_ptr<SimCore> core) {
    return std::make_unique<SimConfiguration>(std::move(core));
}

}  // namespace lumora::sim
