#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/AVServices.h"
#include "platform/DisplayServer.h"
#include "platform/Scheduler.h"

namespace lumora::test {

using Bytes = std::vector<std::uint8_t>;

// A non-zero I/O status (kIOReturnError).
inline constexpr std::int32_t kFailed = static_cast<std::int32_t>(0xE00002BCu);

// One I2C transfer as a scripted channel saw it.
struct Transfer {
    enum class Kind { write, read };
    Kind kind = Kind::write;
    double time = 0;
    std::uint8_t chip = 0;
    std::uint8_t dataAddress = 0;
    Bytes bytes;  // written bytes; for a read, the buffer length in zeros
    std::thread::id thread;
};

// A channel whose answers are scripted: queued read results first, then the standing
// answers (the EDID at chip 0x50, a reply at chip 0x37), otherwise a failed status.
class ScriptedChannel final : public AVChannel {
  public:
    struct Answer {
        std::int32_t status = 0;
        Bytes bytes;  // copied into the buffer whatever the status, as far as it fits
    };

    explicit ScriptedChannel(std::function<double()> clock) : clock_(std::move(clock)) {}

    std::int32_t readI2C(std::uint8_t chip, std::uint8_t dataAddress,
                         std::span<std::uint8_t> buffer) override {
        std::lock_guard guard(mutex_);
        record(Transfer::Kind::read, chip, dataAddress, Bytes(buffer.size(), 0));
        std::optional<Answer> answer;
        if (!reads_.empty()) {
            answer = reads_.front();
            reads_.pop_front();
        } else if (chip == 0x50 && edid) {
            answer = Answer{0, *edid};
        } else if (chip == 0x37 && reply) {
            answer = Answer{0, *reply};
        }
        if (!answer) return kFailed;
        std::copy_n(answer->bytes.begin(), std::min(answer->bytes.size(), buffer.size()),
                    buffer.begin());
        return answer->status;
    }

    std::int32_t writeI2C(std::uint8_t chip, std::uint8_t dataAddress,
                          std::span<const std::uint8_t> bytes) override {
        std::lock_guard guard(mutex_);
        record(Transfer::Kind::write, chip, dataAddress, Bytes(bytes.begin(), bytes.end()));
        if (writeStatuses_.empty()) return 0;
        const auto status = writeStatuses_.front();
        writeStatuses_.pop_front();
        return status;
    }

    void queueRead(std::int32_t status, Bytes bytes) {
        std::lock_guard guard(mutex_);
        reads_.push_back({status, std::move(bytes)});
    }
    void queueWriteStatus(std::int32_t status) {
        std::lock_guard guard(mutex_);
        writeStatuses_.push_back(status);
    }
    std::vector<Transfer> transfers() const {
        std::lock_guard guard(mutex_);
        return transfers_;
    }
    void clear() {
        std::lock_guard guard(mutex_);
        transfers_.clear();
    }

    std::optional<Bytes> edid;
    std::optional<Bytes> reply;

  private:
    void record(Transfer::Kind kind, std::uint8_t chip, std::uint8_t dataAddress, Bytes bytes) {
        transfers_.push_back(
            {kind, clock_(), chip, dataAddress, std::move(bytes), std::this_thread::get_id()});
    }

    std::function<double()> clock_;
    mutable std::mutex mutex_;
    std::deque<Answer> reads_;
    std::deque<std::int32_t> writeStatuses_;
    std::vector<Transfer> transfers_;
};

// A registry of AV service entries with a scripted channel behind each handle.
class FakeAVServices final : public AVServices {
  public:
    explicit FakeAVServices(std::function<double()> clock) : clock_(std::move(clock)) {}

    // A new entry at the end of the registry; its channel, or nothing when creating fails.
    std::shared_ptr<ScriptedChannel> add(std::string location, bool creatable = true) {
        const std::uint64_t handle = entries_.size() + 1;
        entries_.push_back({std::move(location), handle});
        auto channel = std::make_shared<ScriptedChannel>(clock_);
        if (creatable) channels_[handle] = channel;
        return channel;
    }

    [[nodiscard]] bool canCreate() const override { return createEntry; }
    [[nodiscard]] bool canRead() const override { return readEntry; }
    [[nodiscard]] bool canWrite() const override { return writeEntry; }
    [[nodiscard]] std::vector<AVServiceEntry> entries() const override { return entries_; }
    std::shared_ptr<AVChannel> create(const AVServiceEntry& entry) override {
        created.push_back(entry.handle);
        auto found = channels_.find(entry.handle);
        if (found == channels_.end()) return nullptr;
        return found->second;
    }

    bool createEntry = true;
    bool readEntry = true;
    bool writeEntry = true;
    std::vector<std::uint64_t> created;  // handles, in call order

  private:
    std::function<double()> clock_;
    std::vector<AVServiceEntry> entries_;
    std::map<std::uint64_t, std::shared_ptr<ScriptedChannel>> channels_;
};

// The display facts discovery reads: vendor, model and serial per display.
class FakeDisplays final : public DisplayServer {
  public:
    struct Ids {
        std::uint32_t vendor = 0;
        std::uint32_t model = 0;
        std::uint32_t serial = 0;
    };
    std::map<DisplayID, Ids> ids;

    [[nodiscard]] std::uint32_t vendor(DisplayID id) const override { return at(id).vendor; }
    [[nodiscard]] std::uint32_t model(DisplayID id) const override { return at(id).model; }
    [[nodiscard]] std::uint32_t serial(DisplayID id) const override { return at(id).serial; }

    [[nodiscard]] std::vector<DisplayID> onlineIDs() const override { return {}; }
    [[nodiscard]] DisplayID mainDisplay() const override { return 0; }
    [[nodiscard]] bool isBuiltin(DisplayID) const override { return false; }
    [[nodiscard]] bool isAsleep(DisplayID) const override { return false; }
    [[nodiscard]] double rotation(DisplayID) const override { return 0; }
    [[nodiscard]] Rect bounds(DisplayID) const override { return {}; }
    [[nodiscard]] Size physicalSize(DisplayID) const override { return {}; }
    [[nodiscard]] std::optional<PlatformMode> currentMode(DisplayID) const override { return {}; }
    [[nodiscard]] std::vector<PlatformMode> allModes(DisplayID) const override { return {}; }
    [[nodiscard]] DisplayID mirrorSource(DisplayID) const override { return 0; }
    std::unique_ptr<DisplayConfiguration> beginConfiguration() override { return nullptr; }
    [[nodiscard]] bool canEnableDisable() const override { return false; }
    void restoreColorProfiles() override {}
    ConfigStatus setTransferTable(DisplayID, const GammaTable&) override { return kConfigOK; }
    [[nodiscard]] std::vector<Screen> screens() const override { return {}; }
    [[nodiscard]] Point pointerLocation() const override { return {}; }
    int addReconfigurationHandler(ReconfigurationHandler) override { return 0; }
    void removeReconfigurationHandler(int) override {}

  private:
    [[nodiscard]] Ids at(DisplayID id) const {
        auto found = ids.find(id);
        return found == ids.end() ? Ids{} : found->second;
    }
};

// The first 16 bytes of an EDID carrying the three numbers, padded to a full block.
inline Bytes edidWith(std::uint32_t vendor, std::uint32_t product, std::uint32_t serial) {
    Bytes e(128, 0);
    std::fill(e.begin() + 1, e.begin() + 7, 0xFF);
    e[8] = static_cast<std::uint8_t>(vendor >> 8);
    e[9] = static_cast<std::uint8_t>(vendor);
    e[10] = static_cast<std::uint8_t>(product);
    e[11] = static_cast<std::uint8_t>(product >> 8);
    for (int i = 0; i < 4; ++i)
        e[12 + i] = static_cast<std::uint8_t>(serial >> (8 * i));
    return e;
}

}  // namespace lumora::test
