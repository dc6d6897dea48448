#include "CommandLine.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "CommandOutcome.h"
#include "ShortCommand.h"
#include "model/CommandTable.h"
#include "model/UrlCommand.h"

namespace lumora::app {
namespace {

TEST(CommandLine, AcceptedArgumentsFillTheirFieldsInAnyOrder) {
    auto plain = parseCommandLine({"--simulate", "--list", "--json"});
    EXPECT_EQ(plain.error, "");
    EXPECT_TRUE(plain.simulate && plain.list && plain.json);
    EXPECT_FALSE(plain.worldFile);

    auto withWorld = parseCommandLine({"--simulate=/tmp/w.json", "--sim-state=/tmp/s.json",
                                       "--headless", "lumora://status", "--print-status"});
    EXPECT_EQ(withWorld.error, "");
    EXPECT_EQ(withWorld.worldFile, std::filesystem::path("/tmp/w.json"));
    EXPECT_EQ(withWorld.stateFile, std::filesystem::path("/tmp/s.json"));
    EXPECT_TRUE(withWorld.headless && withWorld.printStatus);
    EXPECT_EQ(withWorld.url, "lumora://status");

    // Options may follow a short command's words, and single dashes are values.
    auto words = parseCommandLine(
        {"--simulate", "brightness", "office", "-1", "--headless", "--print-status"});
    EXPECT_EQ(words.error, "");
    EXPECT_EQ(words.url, "lumora://brightness?display=office&value=-1");
    EXPECT_TRUE(words.simulate && words.headless && words.printStatus);

    auto render = parseCommandLine({"--simulate=/tmp/w.json", "--render-panel=/tmp/panel.png"});
    EXPECT_EQ(render.error, "");
    EXPECT_EQ(render.renderPanel, std::filesystem::path("/tmp/panel.png"));
    EXPECT_FALSE(render.preview);
    EXPECT_FALSE(parseCommandLine({"--preview"}).renderPanel);
}

TEST(CommandLine, RefusesWhatItCannotUse) {
    const std::string noPanel = "--headless shows no panel: drop --preview or --render-panel";
    const struct {
        std::vector<std::string> arguments;
        std::string error;
    } cases[] = {
        {{"--frobnicate"}, "unknown argument: --frobnicate"},
        {{"--simulate="}, "--simulate= needs a world file"},
        {{"--simulatex"}, "unknown argument: --simulatex"},
        {{"--sim-state=/tmp/s.json"}, "--sim-state needs --simulate"},
        {{"lumora://a", "lumora://b"}, "only one command at a time"},
        {{"lumora://a", "status"}, "only one command at a time"},
        {{"status", "lumora://a"}, "too many words for status: lumora://a"},
        {{"--render-panel="}, "--render-panel= needs a file"},
        {{"--headless", "--preview"}, noPanel},
        {{"--render-panel=/tmp/p.png", "--headless"}, noPanel},
        {{"--json"}, "--json needs --list"},
        {{"--list", "status"}, "--list takes no command"},
        {{"--print-status"}, "--print-status needs a command"},
        {{"brightness", "office", "70", "80"}, "too many words for brightness: 80"},
        {{"", "office"}, "no command"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parseCommandLine(c.arguments).error, c.error) << c.arguments.front();
    }
}

TEST(CommandLine, HelpAndVersionWinOverEverythingElse) {
    for (const auto& arguments : std::vector<std::vector<std::string>>{
             {"--bogus", "--help"}, {"brightness", "office", "-h"}}) {
        const auto cli = parseCommandLine(arguments);
        EXPECT_TRUE(cli.help);
        EXPECT_TRUE(cli.error.empty()) << cli.error;
        EXPECT_FALSE(cli.url);
    }
    const auto cli = parseCommandLine({"--simulate=", "--version"});
    EXPECT_TRUE(cli.version);
    EXPECT_TRUE(cli.error.empty()) << cli.error;
}

// What the agent reads from the URL a short command makes.
TEST(ShortCommand, WordsMeanTheSameAsTheUrl) {
    const struct {
        std::vector<std::string> words;
        std::string command;
        Query query;
    } cases[] = {
        {{"brightness", "office", "70"}, "brightness", {{"display", "office"}, {"value", "70"}}},
        // The display always comes first: a lone number is a display.
        {{"brightness", "70"}, "brightness", {{"display", "70"}}},
        {{"brightness-up"}, "brightness-up", {}},
        {{"hidpi", "main", "off"}, "hidpi", {{"display", "main"}, {"on", "off"}}},
        {{"mode", "main", "1920x1080@60"},
         "mode",
         {{"display", "main"}, {"width", "1920"}, {"height", "1080"}, {"hz", "60"}}},
        {{"mode", "2", "2560\u00D71440", "hidpi"},
         "mode",
         {{"display", "2"}, {"width", "2560"}, {"height", "1440"}, {"hidpi", "1"}}},
        // What cannot be split goes as it is, for the agent to refuse and name.
        {{"mode", "main", "abc"}, "mode", {{"display", "main"}, {"width", "abc"}}},
        {{"virtual", "1280x720", "Desk & Co", "lodpi"},
         "virtual",
         {{"width", "1280"}, {"height", "720"}, {"name", "Desk & Co"}, {"hidpi", "0"}}},
        // A refresh has no place in a virtual screen's size.
        {{"virtual", "1280x720@60"}, "virtual", {{"width", "1280"}, {"height", "720@60"}}},
        // KEY=VALUE for the command's own keys, anywhere; other words with "=" are places.
        {{"virtual", "1280x720", "hidpi=0"},
         "virtual",
         {{"width", "1280"}, {"height", "720"}, {"hidpi", "0"}}},
        {{"brightness", "value=70", "a=b"}, "brightness", {{"display", "a=b"}, {"value", "70"}}},
        {{"mode", "main", "hz=50", "1920x1080"},
         "mode",
         {{"display", "main"}, {"width", "1920"}, {"height", "1080"}, {"hz", "50"}}},
        {{"brightness", "B\u00FCro 2?#%+", "-5"},
         "brightness",
         {{"display", "B\u00FCro 2?#%+"}, {"value", "-5"}}},
        // Unknown to us: the agent refuses it by name; the words after it have no place.
        {{"frobnicate", "x", "y"}, "frobnicate", {}},
    };
    for (const auto& c : cases) {
        const ShortCommand made = shortCommandUrl(c.words);
        ASSERT_EQ(made.error, "") << c.words.front();
        const auto parsed = parseCommandUrl(made.url);
        ASSERT_TRUE(parsed) << made.url;
        EXPECT_EQ(parsed->command, c.command) << made.url;
        EXPECT_EQ(parsed->query, c.query) << made.url;
    }
    EXPECT_EQ(shortCommandUrl({"brightness", "Caf\u00E9 1", "70"}).url,
              "lumora://brightness?display=Caf%C3%A9%201&value=70");
    EXPECT_EQ(shortCommandUrl({"na me"}).url, "lumora://na%20me");
}

// --help is made from the table the dispatcher carries out, one line per command.
TEST(Help, NamesEveryCommandTheAgentKnowsWithItsKeys) {
    const std::string help = helpText();
    std::istringstream lines(help);
    std::vector<std::string> commandLines;
    bool inCommands = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("commands")) {
            inCommands = true;
        } else if (line.empty()) {
            inCommands = false;
        } else if (inCommands) {
            commandLines.push_back(line);
        }
    }
    ASSERT_EQ(commandLines.size(), commandTable().size()) << help;
    for (std::size_t i = 0; i < commandLines.size(); ++i) {
        const CommandSpec& c = commandTable()[i];
        const std::string synopsis = shortCommandSynopsis(c.name);
        EXPECT_TRUE(synopsis.starts_with(std::string(c.name))) << c.name;
        const std::string& line = commandLines[i];
        EXPECT_TRUE(line.starts_with("  " + synopsis + " ")) << line;
        const std::string keys = c.keys.empty() ? "no keys" : std::string(c.keys);
        EXPECT_NE(line.find(" " + keys + ": " + std::string(c.summary)), std::string::npos) << line;
    }
    EXPECT_TRUE(help.starts_with(std::string(kUsage) + "\n")) << help;
}

// The black-box tests cover the agent's answers; this, the fallbacks no agent gives them.
TEST(CommandOutcome, AStatusFileThatCannotBeSentIsSaidButLeavesTheExitStatus) {
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(reportOutcome({CommandResult::done(), std::nullopt}, true, out, err), kCarriedOut);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(err.str(), "lumora: no status file to print\n");

    std::ostringstream out2;
    std::ostringstream err2;
    EXPECT_EQ(reportOutcome({CommandResult::nothing("x"), "{}"}, false, out2, err2), kNothingDone);
    EXPECT_EQ(out2.str(), "");  // not asked for
    EXPECT_EQ(err2.str(), "lumora: x\n");
}

}  // namespace
}  // namespace lumora::app
