// The CPU cost of one DDC/CI read (brightness) through the Linux transport: the core's
// DDCService over LinuxAVServices and the i2c channel, to the simulated monitor's firmware.
// The protocol's waits pass on a virtual clock, so only the work of the exchange is measured.
#include <benchmark/benchmark.h>

#include <cerrno>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "ddc/DDCService.h"
#include "hw/LinuxAVServices.h"
#include "sim/SimDdcMonitor.h"
#include "sim/VirtualScheduler.h"

namespace lumora::lx {
namespace {

// Any monitor will do: these only fill its EDID.
constexpr std::uint32_t kVendor = 0x10AC;
constexpr std::uint32_t kProduct = 0xA0B1;
constexpr std::uint32_t kSerial = 0x1234;

constexpr std::uint8_t kBrightness = 0x10;
constexpr std::uint8_t kHostAddress = 0x51;  // a plain read carries no data address
constexpr std::uint64_t kBus = 4;            // /dev/i2c-4, any number will do

// The wire between an adapter and the simulated monitor, transfers as the kernel delivers them.
class SimMonitorBus final : public I2cDevice {
  public:
    SimMonitorBus(sim::SimDdcMonitor& monitor, sim::VirtualScheduler& clock)
        : monitor_(monitor), clock_(clock) {}

    SysError setSlave(std::uint8_t address) override {
        slave_ = address;
        return kSysOK;
    }
    SysError read(std::span<std::uint8_t> buffer) override {
        return acked(monitor_.read(slave_, kHostAddress, buffer, clock_.uptime()));
    }
    SysError write(std::span<const std::uint8_t> bytes) override {
        if (bytes.empty()) return EINVAL;
        return acked(monitor_.write(slave_, bytes[0], bytes.subspan(1), clock_.uptime()));
    }
    SysError transfer(std::span<const I2cMessage> m) override {  // offset write, then read
        if (m.size() != 2 || m[0].read || !m[1].read || m[0].bytes.size() != 1) return EINVAL;
        return acked(monitor_.read(m[1].address, m[0].bytes[0], m[1].bytes, clock_.uptime()));
    }

  private:
    static SysError acked(std::int32_t status) { return status == 0 ? kSysOK : ENXIO; }

    sim::SimDdcMonitor& monitor_;
    sim::VirtualScheduler& clock_;
    std::uint8_t slave_ = 0;
};

// Every adapter path leads to the one simulated monitor.
class SimMonitorDevices final : public I2cDevices {
  public:
    SimMonitorDevices(sim::SimDdcMonitor& monitor, sim::VirtualScheduler& clock)
        : monitor_(monitor), clock_(clock) {}
    Opened open(const std::string&) override {
        return {std::make_unique<SimMonitorBus>(monitor_, clock_), kSysOK};
    }

  private:
    sim::SimDdcMonitor& monitor_;
    sim::VirtualScheduler& clock_;
};

void BM_DdcReadBrightness(benchmark::State& state) {
    sim::VirtualScheduler clock;
    sim::SimDdcMonitor monitor(sim::WorldDdc{}, kVendor, kProduct, kSerial);
    LinuxAVServices::Options options;
    options.devices = std::make_shared<SimMonitorDevices>(monitor, clock);
    LinuxAVServices services(std::move(options));
    auto service = DDCService::open(services, AVServiceEntry{true, std::nullopt, kBus}, clock);
    if (!service || !service->read(kBrightness)) {
        state.SkipWithError("the simulated monitor does not answer");
        return;
    }
    const double start = clock.uptime();
    bool answered = true;
    for (auto _ : state)
        answered = service->read(kBrightness).has_value() && answered;
    if (!answered) state.SkipWithError("a read failed: the figure is not one exchange");
    // The protocol's waits, which a real bus would add on top.
    state.counters["virtual_s_per_read"] =
        benchmark::Counter(clock.uptime() - start, benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_DdcReadBrightness);

}  // namespace
}  // namespace lumora::lx
