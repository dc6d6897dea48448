// The status file: every display as the model sees it, rewritten after each URL command so
// that a script can read back the outcome.
#include <fstream>
#include <system_error>

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

void AppModel::writeStatus() {
    const std::filesystem::path file = ports_.session.statusFile();
    std::error_code ignored;
    std::filesystem::create_directories(file.parent_path(), ignored);
    // A name that is not UTF-8 is written with replacement characters rather than not at all.
    const std::string text =
        statusJson().dump(kStatusIndent, ' ', false, nlohmann::json::error_handler_t::replace);
    // Overwritten in place, then cut to length: a plain write, not an atomic one. Truncating
    // to zero first would make ext4 and similar file systems flush the old blocks on close,
    // which costs milliseconds on every command.
    {
        std::fstream out(file, std::ios::binary | std::ios::in | std::ios::out);
        if (!out.is_open()) out.open(file, std::ios::binary | std::ios::out | std::ios::trunc);
        out << text;
        if (!out) return;
    }
    std::filesystem::resize_file(file, text.size(), ignored);
}

}  // namespace lumora
