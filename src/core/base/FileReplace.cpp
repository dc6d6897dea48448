#include "base/FileReplace.h"

#include <fstream>
#include <system_error>
#include <utility>

namespace lumora {

namespace fs = std::filesystem;

bool replaceFile(const fs::path& file, std::string_view text, std::string* why) {
    const auto fail = [why](std::string reason) {
        if (why) *why = std::move(reason);
        return false;
    };
    std::error_code ec;
    fs::create_directories(file.parent_path(), ec);
    fs::path aside = file;
    aside += ".new";
    {
        std::ofstream out(aside, std::ios::binary | std::ios::trunc);
        if (!out.is_open()) return fail("cannot create " + aside.string());
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
        out.flush();
        if (!out) {
            out.close();
            fs::remove(aside, ec);
            return fail("cannot write " + aside.string() + " (is the disk full?)");
        }
    }
    fs::rename(aside, file, ec);
    if (ec) {
        const std::string reason = ec.message();
        fs::remove(aside, ec);
        return fail("cannot replace " + file.string() + ": " + reason);
    }
    return true;
}

}  // namespace lumora
