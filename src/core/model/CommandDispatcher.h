#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/CommandResult.h"
#include "model/UrlCommand.h"
#include "platform/Types.h"

namespace lumora {

class AppModel;

// The URL command interface: lumora://<command>?<name>=<value>&... Every command ends by
// rewriting the status file (but "mode" without a display or a size), so a script reads back
// what happened, and reports its outcome to the sender.
//
// A command that sets or reads a monitor's DDC/CI controls while that monitor's first scan is
// still running waits for the scan (at most a few seconds): otherwise a monitor that answers
// DDC/CI would be dimmed in software just because the command came early.
//
// Main thread only.
class CommandDispatcher {
  public:
    using Done = std::function<void(const CommandResult&)>;

    explicit CommandDispatcher(AppModel& model) : model_(model) {}

    // Parses, logs and carries out one URL; text that is no URL with a host is dropped.
    void handleURL(std::string_view url, Done done);
    void handle(const std::string& command, const Query& query, Done done);

  private:
    struct Call;
    using Handler = CommandResult (CommandDispatcher::*)(Call&);
    // The handler of the command at `index` of the command table.
    static Handler handler(std::size_t index);

    void run(std::size_t index, Call call, const Done& done);
    [[nodiscard]] std::optional<DisplayID> display(const Call& call) const;
    // One log line and the outcome for a control this machine does not have.
    CommandResult unavailable(const Call& call, const std::string& what);
    static CommandResult notFound(const Call& call);

    CommandResult hidpi(Call& call);
    CommandResult brightness(Call& call);
    CommandResult brightnessStep(Call& call);
    CommandResult connect(Call& call);
    CommandResult disconnect(Call& call);
    CommandResult main(Call& call);
    CommandResult mode(Call& call);
    CommandResult dim(Call& call);
    CommandResult ddc(Call& call);
    CommandResult sleepDisplays(Call& call);
    CommandResult virtualScreen(Call& call);
    CommandResult status(Call& call);
    CommandResult adaptive(Call& call);
    CommandResult panel(Call& call);

    AppModel& model_;
};

}  // namespace lumora
