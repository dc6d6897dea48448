#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace lumora {

// A child process started without waiting for it.
class ChildProcess {
public:
    virtual ~ChildProcess() = default;
    [[nodiscard]] virtual bool running() const = 0;
};

// Power management: idle-sleep assertions, user activity, and the power tool's processes.
class Power {
public:
    using AssertionID = std::uint32_t;  // 0 = none

    virtual ~Power() = default;
    // type e.g. "PreventUserIdleSystemSleep"; returns 0 when refused.
    virtual AssertionID createAssertion(const std::string& type, const std::string& name) = 0;
    virtual void releaseAssertion(AssertionID id) = 0;
    virtual void declareUserActivity(const std::string& name) = 0;

    struct Spawned {
        std::shared_ptr<ChildProcess> process;  // nothing on a launch error
        std::string error;  // the launch error's description
    };
    // Standard output and error go to the null device.
    virtual Spawned spawn(const std::string& path, const std::vector<std::string>& arguments) = 0;
};

}  // namespace lumora
