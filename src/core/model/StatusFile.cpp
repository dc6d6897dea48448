// The status file: every display as the model sees it, rewritten after each URL command so
// that a script can read back the outcome.
#include <system_error>

#include "base/FileReplace.h"
#include "model/AppModel.h"

namespace lumora {

namespace {

constexpr int kStatusIndent = 2;
constexpr std::int64_t kUnknownAngle = -1;

}  // namespace

nlohmann::json AppModel::statusJson() const {
    // nlohmann::json keeps object keys sorted, which the file promises.
    nlohmann::json status = nlohmann::json::object();
    status["lid"] = std::string(rawValue(lid_->machine().mode()));
    status["angle"] = lid_->angle().value_or(kUnknownAngle);
    status["restoreAfterWake"] = restoreAfterWake_.get();
    status["running"] = running_;
    status["adaptive"] = adaptive_->statusJson();
    nlohmann::json list = nlohmann::json::array();
    for (const DisplayInfo& d : displays_.get()) {
        nlohmann::json entry = {
            {"id", d.id},
            {"name", d.name},
            {"builtin", d.isBuiltin},
            {"main", d.isMain},
            {"online", d.isOnline},
            {"virtual", d.isVirtual},
            {"hidpi", hidpiOn_->contains(d.id)},
            {"ddc", ddc_->available()->contains(d.id)},
            {"brightness", brightness_.level(d.id)},
        };
        // A monitor in HiDPI runs in its backing display's mode.
        if (auto mode = ports_.displays.currentMode(shownDisplay(d.id))) {
            entry["mode"] = mode->label();
        }
        list.push_back(std::move(entry));
    }
    status["displays"] = std::move(list);
    return status;
}

void AppModel::writeLastStatus() {
    running_ = false;
    writeStatus();
}

void AppModel::writeStatus() {
    const std::filesystem::path file = ports_.session.statusFile();
    // A name that is not UTF-8 is written with replacement characters rather than not at all.
    const std::string text =
        statusJson().dump(kStatusIndent, ' ', false, nlohmann::json::error_handler_t::replace);
    // Replacing a file costs a block flush on ext4; a status that has not changed since the
    // last write (a plain "status" query) is already there.
    std::error_code ec;
    if (text == lastStatusText_ && std::filesystem::file_size(file, ec) == text.size() && !ec)
        return;
    // A script must never read half a file: the previous one stays until the new one is whole.
    std::string why;
    if (replaceFile(file, text, &why)) {
        lastStatusText_ = text;
        return;
    }
    if (statusWriteFailures_.shouldReport(ports_.scheduler.uptime())) {
        ports_.log.write("status: " + why + "; the agent goes on");
    }
}

}  // namespace lumora
