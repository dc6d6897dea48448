#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "ddc/DdcPacket.h"
#include "ddc/DdcTiming.h"
#include "platform/AVServices.h"
#include "platform/Scheduler.h"

namespace lumora {

// One read of a feature, as the wire went.
struct DdcReading {
    enum class Status {
        ok,            // current and maximum hold the monitor's values
        unsupported,   // the monitor answered that it lacks the code
        noReply,       // every attempt went unanswered or was refused on the bus
        invalidReply,  // the last attempt's reply failed its checks (`fault` says how)
        busBusy,       // another program held the bus too long
        noAccess,      // the platform cannot read or write this channel
    };
    Status status = Status::noReply;
    std::uint16_t current = 0;
    std::uint16_t maximum = 0;
    std::string fault;
};

// Why a reading has no value: "unsupported code", "no reply", "invalid reply: <fault>",
// "bus busy", "no access"; empty when it has one.
[[nodiscard]] std::string describe(const DdcReading& reading);

// How a write went. DDC/CI has no answer to a write: the monitor taking the bytes on the bus
// is all there is to know.
enum class DdcWriteStatus {
    ok,        // the monitor took at least one transmission
    noReply,   // nobody acknowledged on the bus (the monitor is off, gone or ignores DDC/CI)
    busBusy,   // another program held the bus every time
    noAccess,  // the platform cannot write this channel
};
// "no reply on the bus" and the like, for a command's one line.
[[nodiscard]] const char* describe(DdcWriteStatus status);

// What the wire has been through, for figures and tests.
struct DdcCounters {
    unsigned attempts = 0;
    unsigned noReplies = 0;
    unsigned invalidReplies = 0;
    unsigned busyBus = 0;
};

// One open DDC/CI channel to one external monitor, shared by everyone who talks to it.
// Every exchange holds the channel's lock from its first wait to its last transfer, so two
// operations on one monitor never interleave their packets; different monitors run in
// parallel. Each message waits the monitor's quiet time first, learned per monitor (see
// DdcTimingLearner) from the reads that succeed and fail. Calls block for tens of
// milliseconds: keep them off the main thread.
class DDCService {
  public:
    // Told whenever the learned waits change, with the learning so far; runs on the caller's
    // thread.
    using TimingListener = std::function<void(const DdcTimingLearner&, DdcTimingLearner::Change)>;

    // Nothing when the platform cannot create the channel. Reads the monitor's EDID numbers;
    // a monitor whose EDID cannot be read keeps a usable channel with zero numbers.
    static std::shared_ptr<DDCService> open(AVServices& services, const AVServiceEntry& entry,
                                            Sleeper& sleeper);

    DDCService(const DDCService&) = delete;
    DDCService& operator=(const DDCService&) = delete;

    // Sets a feature, sending it twice.
    DdcWriteStatus write(std::uint8_t code, std::uint16_t value);
    // Up to three attempts; a valid answer ends them (an invalid one is retried, never used).
    DdcReading readFeature(std::uint8_t code);
    // (current, maximum) of a feature when readFeature() gives them.
    std::optional<std::pair<std::uint16_t, std::uint16_t>> read(std::uint8_t code);

    // The monitor's capabilities string, fragment by fragment until an empty one, at the
    // default waits; each fragment validated and retried like a read. Nothing when a fragment never
    // comes valid or the string runs past any real one.
    std::optional<std::string> readCapabilities();

    // The learning of an earlier channel to the same monitor (an earlier scan or run) goes on.
    void useLearner(const DdcTimingLearner& learner);
    void setTimingListener(TimingListener listener);
    [[nodiscard]] DdcTiming timing();
    [[nodiscard]] DdcCounters counters();

    // The bus it talks over (the platform's identity of the channel entry): exchanges on one
    // bus take turns, different buses run at once.
    [[nodiscard]] std::uint64_t bus() const { return bus_; }

    // As the display server reports them for the same monitor; 0 when the EDID was unread.
    [[nodiscard]] std::uint32_t edidVendor() const { return edid_.vendor; }
    [[nodiscard]] std::uint32_t edidProduct() const { return edid_.product; }
    [[nodiscard]] std::uint32_t edidSerial() const { return edid_.serial; }

  private:
    DDCService(std::shared_ptr<AVChannel> channel, bool canRead, bool canWrite, Sleeper& sleeper);
    void readEdid();
    enum class Asked { answered, noReply, busBusy };
    // One exchange: the quiet wait, the request, the reply wait and the reply read into
    // `reply` (unchecked), counted; the lock is held.
    Asked ask(std::span<const std::uint8_t> request, std::span<std::uint8_t> reply,
              const DdcTiming& timing);
    // One request and its reply, checked; the lock is held.
    DdcReading attemptRead(std::uint8_t code, std::span<const std::uint8_t> request);
    std::optional<std::vector<std::uint8_t>> readFragment(std::uint16_t offset);

    std::shared_ptr<AVChannel> channel_;
    // The platform's read and write entry points are bound once; a missing one stays missing.
    bool canRead_;
    bool canWrite_;
    Sleeper& sleeper_;
    EdidIds edid_;
    std::uint64_t bus_ = 0;
    std::mutex lock_;
    DdcTimingLearner learner_;
    DdcCounters counters_;
    TimingListener listener_;
};

}  // namespace lumora
