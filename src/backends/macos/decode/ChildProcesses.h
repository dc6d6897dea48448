#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace lumora::mac {

// Short-lived helper programs started without waiting: output to the null device, and every
// child reaped once it has ended so that none lingers as a zombie. Main thread only.
class ChildProcesses {
  public:
    struct Started {
        pid_t pid = 0;      // 0 when the program could not be started
        std::string error;  // "PATH failed: REASON" when it could not
    };

    ChildProcesses() = default;
    ChildProcesses(const ChildProcesses&) = delete;
    ChildProcesses& operator=(const ChildProcesses&) = delete;
    // Children still running are left to finish on their own.
    ~ChildProcesses() = default;

    Started spawn(const std::string& path, const std::vector<std::string>& arguments);
    // Whether a child started here still runs; reaps it when it has ended.
    bool running(pid_t pid);
    // Reaps every child that has ended.
    void reap();

  private:
    std::vector<pid_t> children_;
};

}  // namespace lumora::mac
