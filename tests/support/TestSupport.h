#pragma once

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

namespace lumora::test {

// A world file of tests/fixtures (the test programs get the folder in LUMORA_FIXTURES).
inline std::filesystem::path fixture(const std::string& name) {
    const char* folder = std::getenv("LUMORA_FIXTURES");
    return std::filesystem::path(folder ? folder : "tests/fixtures") / name;
}

// A fresh folder under the system's temporary directory, removed with the object.
class TempDir {
  public:
    TempDir() {
        std::random_device rd;
        auto base = std::filesystem::temp_directory_path();
        for (;;) {
            path_ = base / ("lumora-test-" + std::to_string(rd()));
            if (std::filesystem::create_directory(path_)) break;
        }
    }
    ~TempDir() {
        std::error_code ec;
        std::filesystem::remove_all(path_, ec);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
        return path_ / name;
    }

  private:
    std::filesystem::path path_;
};

// 2026-11-21 09:05:07, the wall clock the tests' log lines carry.
inline std::tm fixedLocalTime() {
    std::tm t{};
    t.tm_year = 2026 - 1900;
    t.tm_mon = 10;
    t.tm_mday = 21;
    t.tm_hour = 9;
    t.tm_min = 5;
    t.tm_sec = 7;
    return t;
}
inline constexpr const char* kFixedStamp = "2026-11-21 09:05:07";

inline std::string readFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

inline void writeFile(const std::filesystem::path& file, const std::string& text) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << text;
}

}  // namespace lumora::test
