#include "MacPower.h"

#include "CFRef.h"

namespace lumora::mac {

namespace {

constexpr const char* kPreventIdleSleep = "PreventUserIdleSystemSleep";

// Held while it lives; released with it.
class AssertionInhibition final : public SleepInhibition {
  public:
    explicit AssertionInhibition(IOPMAssertionID id) : id_(id) {}
    ~AssertionInhibition() override { IOPMAssertionRelease(id_); }
    AssertionInhibition(const AssertionInhibition&) = delete;
    AssertionInhibition& operator=(const AssertionInhibition&) = delete;

  private:
    IOPMAssertionID id_;
};

}  // namespace

MacPower::~MacPower() {
    if (activity_ != kIOPMNullAssertionID) IOPMAssertionRelease(activity_);
}

std::unique_ptr<SleepInhibition> MacPower::inhibitIdleSleep(const std::string& reason) {
    CFRef<CFStringRef> type = makeCFString(kPreventIdleSleep);
    CFRef<CFStringRef> name = makeCFString(reason);
    IOPMAssertionID id = kIOPMNullAssertionID;
    if (IOPMAssertionCreateWithName(type.get(), kIOPMAssertionLevelOn, name.get(), &id) !=
        kIOReturnSuccess) {
        return nullptr;
    }
    return std::make_unique<AssertionInhibition>(id);
}

PowerRequest MacPower::sleepDisplays() {
    return tool_.sleepDisplays();
}

PowerRequest MacPower::sleepSystem() {
    return tool_.sleepSystem();
}

void MacPower::declareUserActivity(const std::string& reason) {
    CFRef<CFStringRef> name = makeCFString(reason);
    IOPMAssertionDeclareUserActivity(name.get(), kIOPMUserActiveLocal, &activity_);
}

}  // namespace lumora::mac
