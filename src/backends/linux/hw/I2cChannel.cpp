#include "hw/I2cChannel.h"

#include <array>
#include <vector>

namespace lumora::lx {

namespace {

// The monitor's control processor: its replies are read without a data address.
constexpr std::uint8_t kDdcCiChip = 0x37;

}  // namespace

I2cChannel::I2cChannel(std::unique_ptr<I2cDevice> device, std::function<void()> onBusy)
    : device_(std::move(device)), onBusy_(std::move(onBusy)) {}

bool I2cChannel::beginExchange() {
    if (device_->lock(kBusHoldLimit) == kSysOK) {
        reportedBusy_ = false;
        return true;
    }
    if (!reportedBusy_ && onBusy_) onBusy_();
    reportedBusy_ = true;
    return false;
}

void I2cChannel::endExchange() {
    device_->unlock();
}

SysError I2cChannel::select(std::uint8_t chip) {
    if (slave_ == chip) return kSysOK;
    // Forget the old choice first: after a failure the kernel's selection is unknown.
    slave_.reset();
    const auto error = device_->setSlave(chip);
    if (error == kSysOK) slave_ = chip;
    return error;
}

I2CStatus I2cChannel::readI2C(std::uint8_t chip, std::uint8_t dataAddress,
                              std::span<std::uint8_t> buffer) {
    if (chip == kDdcCiChip) {
        if (const auto error = select(chip); error != kSysOK) return error;
        return device_->read(buffer);
    }
    std::array<std::uint8_t, 1> offset = {dataAddress};
    const std::array<I2cMessage, 2> messages = {I2cMessage{chip, false, offset},
                                                I2cMessage{chip, true, buffer}};
    return device_->transfer(messages);
}

I2CStatus I2cChannel::writeI2C(std::uint8_t chip, std::uint8_t dataAddress,
                               std::span<const std::uint8_t> bytes) {
    std::vector<std::uint8_t> message;
    message.reserve(bytes.size() + 1);
    message.push_back(dataAddress);
    message.insert(message.end(), bytes.begin(), bytes.end());
    if (const auto error = select(chip); error != kSysOK) return error;
    return device_->write(message);
}

}  // namespace lumora::lx
