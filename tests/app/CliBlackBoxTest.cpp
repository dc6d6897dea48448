// The command line as people and scripts meet it: help and version, short commands and their
// exit status, --print-status, the man page and the shell completions.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "AgentHarness.h"
#include "CommandLine.h"
#include "ShortCommand.h"
#include "model/CommandTable.h"

namespace lumora::test {
namespace {

namespace fs = std::filesystem;

const fs::path kSourceRoot = LUMORA_SOURCE_DIR;

// A run with standard output and standard error apart.
Finished runSplit(const Home& home, const std::vector<std::string>& arguments,
                  const std::string& program = LUMORA_BINARY) {
    return runToEnd(home, arguments, {}, /*errorsApart=*/true, program);
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        out.push_back(line);
    return out;
}

// Runs of blanks and line breaks as one space: a rendered page wraps where it likes.
std::string squeezed(const std::string& text) {
    return std::regex_replace(text, std::regex("\\s+"), " ");
}

// The completions for the words after "lumora", one a line.
Finished complete(const Home& home, const std::string& shell,
                  const std::vector<std::string>& words) {
    std::string quoted;
    for (const auto& w : words)
        quoted += " '" + w + "'";
    std::string script;
    if (shell == "bash") {
        script = "source '" + (kSourceRoot / "packaging/completion/lumora.bash").string() +
                 "'\nCOMP_WORDS=(lumora" + quoted +
                 ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_lumora\n"
                 "((${#COMPREPLY[@]})) && printf '%s\\n' \"${COMPREPLY[@]}\"\n";
    } else {
        // zsh's completion system needs a terminal; these stand-ins print what would be offered.
        script =
            "compadd() { while [[ $1 == -* && $1 != -- ]]; do [[ $1 == -S ]] && shift; shift; "
            "done; [[ $1 == -- ]] && shift; print -l -- \"$@\"; }\n"
            "_describe() { print -l -- ${${(P)2}%%:*}; }\n"
            "_files() { print FILES; }\n"
            "source '" +
            (kSourceRoot / "packaging/completion/_lumora").string() +
            "' >/dev/null\n"
            "words=(lumora" +
            quoted + ")\nCURRENT=$#words\nPREFIX=$words[CURRENT]\n_lumora\n";
    }
    writeFile(home / "complete.sh", script);
    return runSplit(home, {(home / "complete.sh").string()}, "/usr/bin/" + shell);
}

TEST(CliBlackBox, HelpVersionAndUnusableWordsNeedNoAgent) {
    Home home;
    auto help = runSplit(home, {"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.output, app::helpText());
    EXPECT_EQ(help.error, "");

    auto version = runSplit(home, {"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_TRUE(std::regex_match(version.output, std::regex("Lumora [0-9]+\\.[0-9]+\\.[0-9]+\n")))
        << version.output;

    auto extra = runSplit(home, {"brightness", "office", "70", "80"});
    EXPECT_EQ(extra.status, 2);
    EXPECT_EQ(extra.output, "");
    EXPECT_EQ(extra.error,
              "lumora: too many words for brightness: 80\n" + std::string(app::kUsage) + "\n");
    // None of it looked for an agent or started one.
    EXPECT_FALSE(fs::exists(home.statusFile()));
    EXPECT_FALSE(fs::exists(home.logFile()));
}

TEST(CliBlackBox, OneAgentServesShortCommandsStatusAndCompletionsAndRefusesASecond) {
    Home home;
    Agent agent(home);
    ASSERT_TRUE(agent.ready()) << agent.process().output();
    ASSERT_TRUE(agent.ddcScanned()) << readFile(home.logFile());

    const struct {
        std::vector<std::string> arguments;
        int status;
        std::string error;
    } cases[] = {
        {{"brightness", "office", "70"}, 0, ""},
        {{"brightness", "nosuch", "70"}, 1, "lumora: display not found: nosuch\n"},
        {{"dim", "3"}, 0, ""},
        {{"mode", "office", "1920x1080@60"}, 0, ""},
        {{"mode", "office", "abc"}, 1, "lumora: mode needs a whole width and height\n"},
        {{"ddc", "office", "0x60", "15"}, 0, ""},
        {{"frobnicate"}, 1, "lumora: unknown command: frobnicate\n"},
        {{"status"}, 0, ""},
    };
    for (const auto& c : cases) {
        auto run = runSplit(home, c.arguments);
        EXPECT_EQ(run.status, c.status) << c.arguments.front() << "\n" << run.error;
        EXPECT_EQ(run.error, c.error) << c.arguments.front();
        EXPECT_EQ(run.output, "") << c.arguments.front();
    }

    auto status = readJson(home.statusFile());
    ASSERT_TRUE(status);
    EXPECT_DOUBLE_EQ(displayWithId(*status, 2).value("brightness", -1.0), 0.7);
    EXPECT_EQ(displayWithId(*status, 2).value("mode", ""), "1920×1080 · 60 Hz");
    // "dim 3" is display 3 turned black, in software.
    EXPECT_TRUE(eventually([&] {
        auto state = agent.state();
        if (!state) return false;
        const nlohmann::json black = {0.0, 0.0, 0.0};
        const nlohmann::json gamma = displayWithId(*state, 3).value("gamma", nlohmann::json());
        return gamma == nlohmann::json{{"red", black}, {"green", black}, {"blue", black}} &&
               displayWithId(*state, 2)["vcp"].value("0x60", -1) == 15;
    })) << readFile(agent.stateFile());
    // --print-status prints the status file whatever became of the command.
    auto done = runSplit(home, {"--print-status", "brightness", "office", "40"});
    EXPECT_EQ(done.status, 0) << done.error;
    EXPECT_EQ(done.error, "");
    // The file as it is, ended by a line break for the terminal.
    const auto printedFile = [&] {
        std::string text = readFile(home.statusFile());
        return text.ends_with('\n') ? text : text + "\n";
    };
    EXPECT_EQ(done.output, printedFile());
    auto printed = nlohmann::json::parse(done.output, nullptr, false);
    ASSERT_FALSE(printed.is_discarded()) << done.output;
    EXPECT_DOUBLE_EQ(displayWithId(printed, 2).value("brightness", -1.0), 0.4);

    auto nothing = runSplit(home, {"brightness", "nosuch", "1", "--print-status"});
    EXPECT_EQ(nothing.status, 1);
    EXPECT_EQ(nothing.error, "lumora: display not found: nosuch\n");
    EXPECT_EQ(nothing.output, printedFile());

    // A second plain start is refused without starting anything, and the first stays.
    auto second = runToEnd(home, {"--simulate", "--headless"});
    EXPECT_EQ(second.status, 0) << second.output;
    EXPECT_TRUE(contains(second.output, "another Lumora is running; exiting")) << second.output;
    EXPECT_FALSE(contains(second.output, "lid: start")) << second.output;
    EXPECT_TRUE(contains(readFile(home.logFile()), "another Lumora is running; exiting"));
    EXPECT_TRUE(agent.send("lumora://status"));
    EXPECT_TRUE(agent.process().alive());

    // Each shell's completions with this agent's status file in place.
    for (const std::string shell : {"bash", "zsh"}) {
        SCOPED_TRACE(shell);
        if (!fs::exists("/usr/bin/" + shell)) {
            RecordProperty(shell, "not installed");
            continue;
        }

        auto commands = complete(home, shell, {""});
        std::vector<std::string> known;
        for (const CommandSpec& c : commandTable())
            known.emplace_back(c.name);
        EXPECT_EQ(lines(commands.output), known) << commands.error;

        std::vector<std::string> displays = {
            "main", "builtin",        "cursor", "1",        "Built-in Retina Display",
            "2",    "Office Monitor", "3",      "Projector"};
        // bash is handed the words quoted for its command line; zsh quotes them itself.
        if (shell == "bash") {
            displays[4] = "Built-in\\ Retina\\ Display";
            displays[6] = "Office\\ Monitor";
        }
        auto names = complete(home, shell, {"--headless", "dim", ""});
        EXPECT_EQ(lines(names.output), displays) << names.error;
        EXPECT_EQ(lines(complete(home, shell, {"hidpi", "2", ""}).output),
                  (std::vector<std::string>{"on", "off"}));
        EXPECT_EQ(lines(complete(home, shell, {"mode", "2", "1920x1080", ""}).output),
                  (std::vector<std::string>{"hidpi", "lodpi"}));
        EXPECT_EQ(lines(complete(home, shell, {"status", ""}).output), std::vector<std::string>{});

        // Every option of the help text is offered.
        const auto options = lines(complete(home, shell, {"--"}).output);
        for (const char* option :
             {"--simulate", "--sim-state=", "--headless", "--preview", "--render-panel=", "--list",
              "--json", "--print-status", "--help", "--version"}) {
            EXPECT_NE(std::find(options.begin(), options.end(), option), options.end()) << option;
        }
        if (shell == "bash") {
            // bash filters by what is typed (zsh does it itself).
            EXPECT_EQ(lines(complete(home, shell, {"brightness", "Off"}).output),
                      std::vector<std::string>{"Office\\ Monitor"});
        }
    }
}

TEST(CliBlackBox, ManPageHasTheHelpTextsOptionsAndCommands) {
    const fs::path page = kSourceRoot / "packaging/linux/lumora.1";
    Home home;
    // Wide lines and no hyphenation; plain text without overstriking.
    auto rendered = runSplit(
        home, {"-man", "-Tascii", "-P-cbou", "-rLL=200n", "-ww", page.string()}, "/usr/bin/groff");
    if (!rendered.status || *rendered.status != 0) {
        GTEST_SKIP() << "groff is not installed (Debian: groff-base)";
    }
    EXPECT_EQ(rendered.error, "");
    const std::string text = squeezed(rendered.output);
    for (const std::string& line : lines(app::helpText())) {
        // The option and command lines of the help text, as the page sets them.
        if (!line.starts_with("  ")) continue;
        const std::string item = squeezed(line.substr(2));
        const std::size_t split = line.find("  ", 2);
        ASSERT_NE(split, std::string::npos) << line;
        const std::string tag = squeezed(line.substr(2, split - 2));
        const std::string body = squeezed(line.substr(line.find_first_not_of(' ', split)));
        EXPECT_NE(text.find(" " + tag + " " + body + " "), std::string::npos)
            << "the man page lacks: " << item;
    }
}

}  // namespace
}  // namespace lumora::test
