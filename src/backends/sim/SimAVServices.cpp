#include "sim/SimPorts.h"

namespace lumora::sim {

namespace {

// An entry's handle is the display identifier shifted left by one; the low bit marks the
// built-in panel's own service, which has no DDC/CI monitor behind it.
constexpr std::uint64_t kEmbeddedBit = 1;

class SimChannel final : public AVChannel {
  public:
    SimChannel(std::weak_ptr<SimCore> core, DisplayID display)
        : core_(std::move(core)), display_(display) {}

    std::int32_t readI2C(std::uint8_t chip, std::uint8_t dataAddress,
                         std::span<std::uint8_t> buffer) override {
        return transfer(
            WireEvent::Kind::read, chip, dataAddress,
            [&](SimDdcMonitor& monitor, double now) {
                return monitor.read(chip, dataAddress, buffer, now);
            },
            [&] { return std::vector<std::uint8_t>(buffer.begin(), buffer.end()); });
    }

    std::int32_t writeI2C(std::uint8_t chip, std::uint8_t dataAddress,
                          std::span<const std::uint8_t> bytes) override {
        return transfer(
            WireEvent::Kind::write, chip, dataAddress,
            [&](SimDdcMonitor& monitor, double now) {
                return monitor.write(chip, dataAddress, bytes, now);
            },
            [&] { return std::vector<std::uint8_t>(bytes.begin(), bytes.end()); });
    }

    bool beginExchange() override {
        auto core = core_.lock();
        if (!core) return true;
        bool free = true;
        core->update([&](SimData& data) {
            SimDisplay* d = data.find(display_);
            if (d && d->ddc) free = d->ddc->takeBus();
            return false;
        });
        return free;
    }

  private:
    // Runs one transfer against the monitor while its display is online, and records it.
    template <class Send, class Bytes>
    std::int32_t transfer(WireEvent::Kind kind, std::uint8_t chip, std::uint8_t dataAddress,
                          Send send, Bytes bytes) {
        auto core = core_.lock();
        if (!core) return kSimNoDevice;
        const double now = core->scheduler().uptime();
        std::int32_t status = kSimNoDevice;
        core->update([&](SimData& data) {
            SimDisplay* d = data.find(display_);
            bool changed = false;
            if (d && d->online() && d->ddc) {
                const auto before = d->ddc->vcp();
                status = send(*d->ddc, now);
                changed = d->ddc->vcp() != before;
            }
            data.wire.push_back(WireEvent{now, display_, kind, chip, dataAddress, bytes(), status});
            return changed;
        });
        return status;
    }

    std::weak_ptr<SimCore> core_;
    DisplayID display_;
};

class SimAVServices final : public AVServices {
  public:
    explicit SimAVServices(std::shared_ptr<SimCore> core) : core_(std::move(core)) {}

    [[nodiscard]] bool canCreate() const override { return true; }
    [[nodiscard]] bool canRead() const override { return true; }
    [[nodiscard]] bool canWrite() const override { return true; }

    [[nodiscard]] std::vector<AVServiceEntry> entries() const override {
        return core_->read([](const SimData& data) {
            std::vector<AVServiceEntry> entries;
            for (const auto& d : data.displays) {
                if (!d.online()) continue;
                const std::uint64_t handle = std::uint64_t{d.id} << 1;
                if (d.ddc) entries.push_back({/*external=*/true, std::nullopt, handle});
                if (d.builtin) {
                    entries.push_back({/*external=*/false, std::nullopt, handle | kEmbeddedBit});
                }
            }
            return entries;
        });
    }

    std::shared_ptr<AVChannel> create(const AVServiceEntry& entry) override {
        if (entry.handle & kEmbeddedBit) return nullptr;
        const auto id = static_cast<DisplayID>(entry.handle >> 1);
        const bool monitor = core_->read([&](const SimData& data) {
            const SimDisplay* d = data.findOnline(id);
            return d && d->ddc;
        });
        if (!monitor) return nullptr;
        return std::make_shared<SimChannel>(core_, id);
    }

  private:
    std::shared_ptr<SimCore> core_;
};

}  // namespace

std::unique_ptr<AVServices> makeSimAVServices(std::shared_ptr<SimCore> core) {
    return std::make_unique<SimAVServices>(std::move(core));
}

}  // namespace lumora::sim
