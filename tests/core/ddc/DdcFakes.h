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

// A channel with scripted answers, for exact statuses the simulated monitor never gives:
// queued results first, then the standing answers (the EDID at chip 0x50, a reply at chip
// 0x37), otherwise a failed status. Read bytes are copied whatever the status.
class ScriptedChannel final : public AVChannel {
  public:
    explicit ScriptedChannel(std::function<double()> clock) : clock_(std::move(clock)) {}

    std::int32_t readI2C(std::uint8_t chip, std::uint8_t dataAddress,
                         std::span<std::uint8_t> buffer) override {
        std::lock_guard guard(mutex_);
        record(Transfer::Kind::read, chip, dataAddress, Bytes(buffer.size(), 0));
        std::optional<std::pair<std::int32_t, Bytes>> answer;
        if (!reads_.empty()) {
            answer = reads_.front();
            reads_.pop_front();
        } else if (chip == 0x50 && edid) {
            answer = {0, *edid};
        } else if (chip == 0x37 && reply) {
            answer = {0, *reply};
        }
        if (!answer) return kFailed;
        std::copy_n(answer->second.begin(), std::min(answer->second.size(), buffer.size()),
                    buffer.begin());
        return answer->first;
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
        reads_.emplace_back(status, std::move(bytes));
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
    std::deque<std::pair<std::int32_t, Bytes>> reads_;
    std::deque<std::int32_t> writeStatuses_;
    std::vector<Transfer> transfers_;
};

// A registry of AV service entries with a scripted channel behind each handle, and entry
// points that can be missing one by one.
class FakeAVServices final : public AVServices {
  public:
    explicit FakeAVServices(std::function<double()> clock) : clock_(std::move(clock)) {}

    // A new entry at the end of the registry; its channel, which creating may not reach.
    std::shared_ptr<ScriptedChannel> add(bool external, bool creatable = true,
                                         std::optional<DisplayID> display = std::nullopt) {
        const std::uint64_t handle = entries_.size() + 1;
        entries_.push_back({external, display, handle});
        auto channel = std::make_shared<ScriptedChannel>(clock_);
        if (creatable) channels_[handle] = channel;
        return channel;
    }

    [[nodiscard]] bool canCreate() const override { return createEntry; }
    [[nodiscard]] bool canRead() const override { return readEntry; }
    [[nodiscard]] bool canWrite() const override { return writeEntry; }
    [[nodiscard]] std::vector<AVServiceEntry> entries() const override { return entries_; }
    std::shared_ptr<AVChannel> create(const AVServiceEntry& entry) override {
        auto found = channels_.find(entry.handle);
        return found == channels_.end() ? nullptr : found->second;
    }

    bool createEntry = true, readEntry = true, writeEntry = true;

  private:
    std::function<double()> clock_;
    std::vector<AVServiceEntry> entries_;
    std::map<std::uint64_t, std::shared_ptr<ScriptedChannel>> channels_;
};

}  // namespace lumora::test
