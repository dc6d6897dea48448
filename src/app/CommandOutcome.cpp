#include "CommandOutcome.h"

#include <ostream>

namespace lumora::app {

int reportOutcome(const InstanceChannel::Answer& answer, bool printStatus, std::ostream& out,
                  std::ostream& err) {
    if (!answer.result.carriedOut) err << "lumora: " << answer.result.problem << "\n";
    if (printStatus) {
        if (answer.status) {
            out << *answer.status;
            if (!answer.status->ends_with('\n')) out << "\n";
        } else {
            err << "lumora: no status file to print\n";
        }
    }
    out.flush();
    err.flush();
    return answer.result.carriedOut ? kCarriedOut : kNothingDone;
}

std::optional<int> handOverCommand(const std::string& socketPath, const std::string& url,
                                   bool printStatus, std::ostream& out, std::ostream& err,
                                   std::chrono::milliseconds timeout) {
    auto answer = InstanceChannel::handOver(socketPath, url, printStatus, timeout);
    if (!answer) return std::nullopt;
    return reportOutcome(*answer, printStatus, out, err);
}

}  // namespace lumora::app
