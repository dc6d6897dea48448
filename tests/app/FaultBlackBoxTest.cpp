// The agent under faults it must survive: a full disk, being killed at any instant of a burst
// of commands, and many clients at once.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <numeric>
#include <random>
#include <thread>

#include "AgentHarness.h"
#include "runtime/SettingsDefaults.h"

namespace lumora::test {
namespace {

using namespace std::chrono_literals;

// The displays the user switched off, by id, as the settings file holds them.
std::optional<std::map<std::string, std::string>> disconnected(const Home& home) {
    return app::SettingsDefaults(home.settingsFile()).stringDictionary("disconnectedDisplays");
}
using Names = std::map<std::string, std::string>;

// A small file system of its own under `folder`, unmounted again at the end.
class TinyDisk {
  public:
    explicit TinyDisk(const std::filesystem::path& folder) : folder_(folder) {
        std::filesystem::create_directories(folder);
        mounted_ =
            ::geteuid() == 0 && ::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=256k") == 0;
    }
    ~TinyDisk() {
        if (mounted_) ::umount2(folder_.c_str(), MNT_DETACH);
    }
    TinyDisk(const TinyDisk&) = delete;
    TinyDisk& operator=(const TinyDisk&) = delete;

    [[nodiscard]] bool mounted() const { return mounted_; }
    // Takes every free byte, until `free()`.
    void fill() {
        std::ofstream out(folder_ / "filler", std::ios::binary);
        const std::string block(4096, 'x');
        while (out.write(block.data(), static_cast<std::streamsize>(block.size()))) {
        }
    }
    void free() { std::filesystem::remove(folder_ / "filler"); }

  private:
    std::filesystem::path folder_;
    bool mounted_ = false;
};

TEST(Faults, AFullDiskKeepsThePreviousFilesAndTheAgentGoesOnFromMemory) {
    Home home;
    TinyDisk config(home / "config");
    TinyDisk state(home / "state");
    if (!config.mounted() || !state.mounted()) GTEST_SKIP() << "needs root to mount a tmpfs";
    Agent agent(home, {"--simulate=" + fixture("laptopAndExternal.json").string()});
    ASSERT_TRUE(agent.ready()) << agent.process().output();
    ASSERT_TRUE(agent.send("lumora://disconnect?display=projector"));
    const std::string settingsBefore = readFile(home.settingsFile());
    ASSERT_EQ(disconnected(home), (Names{{"3", "Projector"}})) << settingsBefore;

    config.fill();
    state.fill();
    ASSERT_TRUE(agent.send("lumora://connect?display=projector"));
    ASSERT_TRUE(agent.send("lumora://dim?display=2&value=0.5"));
    EXPECT_TRUE(eventually([&] {
        const auto s = agent.state();
        return s && displayWithId(*s, 3)["enabled"] == true;
    })) << "carried out";
    EXPECT_EQ(readFile(home.settingsFile()), settingsBefore);
    const auto status = readJson(home.statusFile());
    EXPECT_TRUE(status) << "the previous status file is whole";

    config.free();
    state.free();
    ASSERT_TRUE(agent.send("lumora://disconnect?display=2"));
    EXPECT_EQ(disconnected(home), (Names{{"2", "Office Monitor"}}))
        << "the change made on the full disk was kept in memory and is written now";
    const auto output = agent.process().output();
    const std::string line = "settings: cannot write ";
    EXPECT_TRUE(contains(output, line)) << output;
    EXPECT_EQ(output.find(line), output.rfind(line)) << "once a minute at most";
}

// Sends `urls` on one connection, answered in order; how many answers came back.
int pipeline(const std::string& socketPath, const std::vector<std::string>& urls) {
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    socketPath.copy(address.sun_path, sizeof(address.sun_path) - 1);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        ::close(fd);
        return 0;
    }
    std::string requests;
    for (const auto& url : urls)
        requests += "url " + url + "\n";
    (void)::send(fd, requests.data(), requests.size(), MSG_NOSIGNAL);
    int answers = 0;
    char buffer[4096];
    for (ssize_t n; (n = ::recv(fd, buffer, sizeof(buffer), 0)) > 0;) {
        answers += static_cast<int>(std::count(buffer, buffer + n, '\n'));
        if (answers == static_cast<int>(urls.size())) break;
    }
    ::close(fd);
    return answers;
}

// Killed at any instant of a burst of commands that change settings, the agent leaves a
// settings file that parses, each key with its old or its new value.
TEST(Faults, AKillAtAnyInstantOfABurstLeavesSettingsThatParse) {
    Home home;
    std::mt19937 random(20261125);
    std::vector<std::string> urls;
    for (int i = 0; i < 100; ++i) {
        urls.push_back("lumora://disconnect?display=projector");
        urls.push_back("lumora://connect?display=projector");
    }
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        Agent agent(home, {"--simulate=" + fixture("laptopAndExternal.json").string()});
        ASSERT_TRUE(agent.ready()) << agent.process().output();
        std::thread storm([&] { (void)pipeline(home.socket(), urls); });
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 300));
        agent.process().signal(SIGKILL);
        storm.join();
        (void)agent.process().waitExit();

        const auto list = disconnected(home);
        ASSERT_TRUE(list.has_value() || !std::filesystem::exists(home.settingsFile()))
            << readFile(home.settingsFile());
        if (list && !list->empty()) {
            EXPECT_EQ(*list, (Names{{"3", "Projector"}}));
        }
        EXPECT_TRUE(app::SettingsDefaults(home.settingsFile()).boolean("loginItemAsked"))
            << "a key the burst does not touch keeps its value";
    }
}

// Resident memory of a process, in kilobytes.
long residentKilobytes(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
    }
    return -1;
}

// 1,000 hand-overs from 50 clients at once are all answered, each with its own exit status,
// and the agent's memory ends where it began.
TEST(Faults, AThousandHandOversFromFiftyClientsAreAllAnsweredRightly) {
    Home home;
    Agent agent(home, {"--simulate=" + fixture("laptopAndExternal.json").string()});
    ASSERT_TRUE(agent.ready()) << agent.process().output();
    ASSERT_TRUE(agent.send("lumora://status"));  // the first command's one-time work
    const long before = residentKilobytes(agent.process().pid());

    constexpr int kClients = 50;
    constexpr int kEach = 20;
    std::vector<int> wrong(kClients, 0);
    std::vector<std::thread> clients;
    for (int c = 0; c < kClients; ++c) {
        clients.emplace_back([&, c] {
            for (int i = 0; i < kEach; ++i) {
                // Every third command names no display and does nothing: exit status 1.
                const bool fails = (c + i) % 3 == 0;
                const auto run =
                    runToEnd(home, {"dim", fails ? "nosuch" : "2", std::to_string(0.3 + 0.01 * i)});
                if (run.status != (fails ? 1 : 0)) ++wrong[static_cast<std::size_t>(c)];
            }
        });
    }
    for (auto& client : clients)
        client.join();
    EXPECT_EQ(std::accumulate(wrong.begin(), wrong.end(), 0), 0);
    const long after = residentKilobytes(agent.process().pid());
    RecordProperty("rssBeforeKB", std::to_string(before));
    RecordProperty("rssAfterKB", std::to_string(after));
#if !defined(__SANITIZE_ADDRESS__)  // its quarantine keeps freed memory resident
    EXPECT_LT(after - before, 5 * 1024) << before << " kB before, " << after << " kB after";
#endif
}

}  // namespace
}  // namespace lumora::test
