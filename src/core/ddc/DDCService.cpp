#include "ddc/DDCService.h"

#include <array>
#include <string>
#include <vector>

namespace lumora {

namespace {

constexpr double kEdidRetryPause = 0.010;
constexpr int kEdidAttempts = 3;
constexpr int kReadAttempts = 3;
// Some monitors miss the first packet after an idle spell, so every write goes out twice.
constexpr int kWriteTransmissions = 2;

constexpr std::int32_t kStatusOK = 0;
// Real capabilities strings are a few hundred bytes; past this the monitor is babbling.
constexpr std::size_t kCapabilitiesLimit = 4096;

// Holds the bus for one exchange; released however the exchange ends.
class Exchange {
  public:
    explicit Exchange(AVChannel& channel) : channel_(channel), held_(channel.beginExchange()) {}
    ~Exchange() {
        if (held_) channel_.endExchange();
    }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;
    [[nodiscard]] bool held() const { return held_; }

  private:
    AVChannel& channel_;
    bool held_;
};

}  // namespace

std::shared_ptr<DDCService> DDCService::open(AVServices& services, const AVServiceEntry& entry,
                                             Sleeper& sleeper) {
    if (!services.canCreate()) return nullptr;
    auto channel = services.create(entry);
    if (!channel) return nullptr;
    std::shared_ptr<DDCService> service(
        new DDCService(std::move(channel), services.canRead(), services.canWrite(), sleeper));
    service->bus_ = entry.handle;
    service->readEdid();
    return service;
}

DDCService::DDCService(std::shared_ptr<AVChannel> channel, bool canRead, bool canWrite,
                       Sleeper& sleeper)
    : channel_(std::move(channel)), canRead_(canRead), canWrite_(canWrite), sleeper_(sleeper) {}

void DDCService::readEdid() {
    if (!canRead_) return;
    // One buffer for every attempt: a failed read may leave bytes behind, as on the real bus.
    std::array<std::uint8_t, kEdidBlockSize> buffer{};
    for (int attempt = 0; attempt < kEdidAttempts; ++attempt) {
        I2CStatus status = kStatusOK + 1;
        if (Exchange exchange(*channel_); exchange.held())
            status = channel_->readI2C(kEdidChip, kEdidDataAddress, buffer);
        if (status == kStatusOK) {
            if (auto ids = parseEdidIds(buffer)) {
                edid_ = *ids;
                return;
            }
        }
        sleeper_.sleep(kEdidRetryPause);
    }
}

void DDCService::useLearner(const DdcTimingLearner& learner) {
    std::lock_guard guard(lock_);
    learner_ = learner;
}

void DDCService::setTimingListener(TimingListener listener) {
    std::lock_guard guard(lock_);
    listener_ = std::move(listener);
}

DdcTiming DDCService::timing() {
    std::lock_guard guard(lock_);
    return learner_.timing();
}

DdcCounters DDCService::counters() {
    std::lock_guard guard(lock_);
    return counters_;
}

std::string describe(const DdcReading& reading) {
    switch (reading.status) {
        case DdcReading::Status::ok:
            return {};
        case DdcReading::Status::unsupported:
            return "unsupported code";
        case DdcReading::Status::noReply:
            return "no reply";
        case DdcReading::Status::invalidReply:
            return "invalid reply: " + reading.fault;
        case DdcReading::Status::busBusy:
            return "bus busy";
        case DdcReading::Status::noAccess:
            return "no access";
    }
    return {};
}

const char* describe(DdcWriteStatus status) {
    switch (status) {
        case DdcWriteStatus::ok:
            return "taken";
        case DdcWriteStatus::noReply:
            return "no reply on the bus";
        case DdcWriteStatus::busBusy:
            return "the bus was busy";
        case DdcWriteStatus::noAccess:
            return "the channel cannot be written";
    }
    return "";
}

DdcWriteStatus DDCService::write(std::uint8_t code, std::uint16_t value) {
    if (!canWrite_) return DdcWriteStatus::noAccess;
    const auto packet = setVcpPacket(code, value);
    std::lock_guard guard(lock_);
    bool accepted = false;
    bool sent = false;
    for (int i = 0; i < kWriteTransmissions; ++i) {
        sleeper_.sleep(learner_.timing().quiet);
        Exchange exchange(*channel_);
        if (!exchange.held()) {
            ++counters_.busyBus;
            continue;
        }
        sent = true;
        if (channel_->writeI2C(kDdcChip, kDdcDataAddress, packet) == kStatusOK) accepted = true;
    }
    if (accepted) return DdcWriteStatus::ok;
    return sent ? DdcWriteStatus::noReply : DdcWriteStatus::busBusy;
}

std::optional<std::pair<std::uint16_t, std::uint16_t>> DDCService::read(std::uint8_t code) {
    const DdcReading reading = readFeature(code);
    if (reading.status != DdcReading::Status::ok) return std::nullopt;
    return std::pair{reading.current, reading.maximum};
}

DdcReading DDCService::readFeature(std::uint8_t code) {
    DdcReading reading;
    if (!canRead_ || !canWrite_) {
        reading.status = DdcReading::Status::noAccess;
        return reading;
    }
    const auto request = getVcpRequest(code);
    TimingListener listener;
    DdcTimingLearner::Change change = DdcTimingLearner::Change::none;
    DdcTimingLearner learned;
    {
        std::lock_guard guard(lock_);
        for (int attempt = 0; attempt < kReadAttempts; ++attempt) {
            reading = attemptRead(code, request);
            const bool answered = reading.status == DdcReading::Status::ok ||
                                  reading.status == DdcReading::Status::unsupported;
            // A busy bus says nothing about the monitor's timing.
            if (reading.status != DdcReading::Status::busBusy) {
                const auto step = answered ? learner_.succeeded() : learner_.failed();
                if (step != DdcTimingLearner::Change::none) change = step;
            }
            if (answered) break;
        }
        listener = listener_;
        learned = learner_;
    }
    if (listener && change != DdcTimingLearner::Change::none) listener(learned, change);
    return reading;
}

DDCService::Asked DDCService::ask(std::span<const std::uint8_t> request,
                                  std::span<std::uint8_t> reply, const DdcTiming& timing) {
    ++counters_.attempts;
    sleeper_.sleep(timing.quiet);
    Exchange exchange(*channel_);
    if (!exchange.held()) {
        ++counters_.busyBus;
        return Asked::busBusy;
    }
    bool delivered = channel_->writeI2C(kDdcChip, kDdcDataAddress, request) == kStatusOK;
    if (delivered) {
        sleeper_.sleep(timing.replyWait);
        delivered = channel_->readI2C(kDdcChip, kDdcDataAddress, reply) == kStatusOK;
    }
    if (!delivered) {
        ++counters_.noReplies;
        return Asked::noReply;
    }
    return Asked::answered;
}

std::optional<std::string> DDCService::readCapabilities() {
    if (!canRead_ || !canWrite_) return std::nullopt;
    std::lock_guard guard(lock_);
    std::string text;
    while (text.size() <= kCapabilitiesLimit) {
        auto fragment = readFragment(static_cast<std::uint16_t>(text.size()));
        if (!fragment) return std::nullopt;
        if (fragment->empty()) return text;
        text.append(fragment->begin(), fragment->end());
    }
    return std::nullopt;
}

std::optional<std::vector<std::uint8_t>> DDCService::readFragment(std::uint16_t offset) {
    const auto request = capabilitiesRequest(offset);
    // Read once per monitor, and many monitors do not answer at all: at the default waits,
    // which suit every monitor, and without teaching the learner anything.
    const DdcTiming timing;
    for (int attempt = 0; attempt < kReadAttempts; ++attempt) {
        std::array<std::uint8_t, kCapabilitiesReplyMaxSize> reply{};
        if (ask(request, reply, timing) != Asked::answered) continue;
        auto fragment = checkCapabilitiesFragment(reply, offset);
        if (fragment.data) return fragment.data;
        ++counters_.invalidReplies;
    }
    return std::nullopt;
}

DdcReading DDCService::attemptRead(std::uint8_t code, std::span<const std::uint8_t> request) {
    DdcReading reading;
    std::array<std::uint8_t, kVcpReplySize> reply{};
    switch (ask(request, reply, learner_.timing())) {
        case Asked::busBusy:
            reading.status = DdcReading::Status::busBusy;
            return reading;
        case Asked::noReply:
            return reading;
        case Asked::answered:
            break;
    }
    const VcpReply checked = checkVcpReply(reply, code);
    switch (checked.kind) {
        case VcpReply::Kind::ok:
            reading.status = DdcReading::Status::ok;
            reading.current = checked.current;
            reading.maximum = checked.maximum;
            break;
        case VcpReply::Kind::unsupported:
            reading.status = DdcReading::Status::unsupported;
            break;
        case VcpReply::Kind::invalid:
            ++counters_.invalidReplies;
            reading.status = DdcReading::Status::invalidReply;
            reading.fault = checked.fault;
            break;
    }
    return reading;
}

}  // namespace lumora
