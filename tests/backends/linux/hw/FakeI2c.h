#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "hw/I2cDevice.h"

namespace lumora::lx::test {

using Bytes = std::vector<std::uint8_t>;

// "51 82 01 10 AC".
inline std::string hexBytes(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (auto b : bytes) {
        char two[4];
        std::snprintf(two, sizeof two, "%s%02X", text.empty() ? "" : " ", b);
        text += two;
    }
    return text;
}

// What a scripted bus saw, and its answers: a read (plain, or the read message of a combined
// transfer) takes the next entry of `reads`, and with none left nobody acknowledges (ENXIO);
// setSlave() and write() fail with the next entry of their queue, else succeed.
struct BusScript {
    std::vector<std::string> calls;
    std::deque<std::pair<SysError, Bytes>> reads;
    std::deque<SysError> slaveErrors, writeErrors;
};

class FakeBus final : public I2cDevice {
  public:
    explicit FakeBus(std::shared_ptr<BusScript> script) : s_(std::move(script)) {}
    ~FakeBus() override { s_->calls.push_back("close"); }

    SysError setSlave(std::uint8_t address) override {
        s_->calls.push_back("slave " + hexBytes(std::span(&address, 1)));
        return next(s_->slaveErrors);
    }
    SysError read(std::span<std::uint8_t> buffer) override {
        s_->calls.push_back("read " + std::to_string(buffer.size()));
        return answer(buffer);
    }
    SysError write(std::span<const std::uint8_t> bytes) override {
        s_->calls.push_back("write " + hexBytes(bytes));
        return next(s_->writeErrors);
    }
    SysError transfer(std::span<const I2cMessage> messages) override {
        std::string call = "transfer";
        SysError error = kSysOK;
        for (const auto& m : messages) {
            call += (m.read ? " r" : " w") + hexBytes(std::span(&m.address, 1)) + "[" +
                    (m.read ? std::to_string(m.bytes.size()) : hexBytes(m.bytes)) + "]";
            if (m.read && error == kSysOK) error = answer(m.bytes);
        }
        s_->calls.push_back(call);
        return error;
    }

  private:
    static SysError next(std::deque<SysError>& errors) {
        if (errors.empty()) return kSysOK;
        const auto error = errors.front();
        errors.pop_front();
        return error;
    }
    SysError answer(std::span<std::uint8_t> buffer) {
        if (s_->reads.empty()) return ENXIO;
        const auto [error, bytes] = s_->reads.front();
        s_->reads.pop_front();
        std::copy_n(bytes.begin(), std::min(bytes.size(), buffer.size()), buffer.begin());
        return error;
    }

    std::shared_ptr<BusScript> s_;
};

// Opens what `make` builds (a FakeBus on `script` by default), or fails with the errno given
// for a path.
class FakeDevices final : public I2cDevices {
  public:
    Opened open(const std::string& path) override {
        opened.push_back(path);
        if (auto found = errors.find(path); found != errors.end()) return {nullptr, found->second};
        return {make(), kSysOK};
    }

    std::shared_ptr<BusScript> script = std::make_shared<BusScript>();
    std::function<std::unique_ptr<I2cDevice>()> make = [this] {
        return std::make_unique<FakeBus>(script);
    };
    std::map<std::string, SysError> errors;
    std::vector<std::string> opened;
};

}  // namespace lumora::lx::test
