// Command URLs as text: parsing, the one-line log form of a query, argument readers, and the
// case folding used to find displays by name.
#include <gtest/gtest.h>

#include <clocale>
#include <locale>

#include "display/DisplayMode.h"
#include "lid/LidConfig.h"
#include "model/CaseFold.h"
#include "model/CommandArguments.h"
#include "model/UrlCommand.h"

namespace lumora {
namespace {

TEST(UrlParsing, HostIsTheCommandAndQueryItemsLaterWin) {
    EXPECT_EQ(parseCommandUrl("lumora://brightness?display=main&value=70"),
              (UrlCommand{"brightness", {{"display", "main"}, {"value", "70"}}}));
    // Later items win, a missing value is empty, empty items are skipped, "+" stays.
    EXPECT_EQ(parseCommandUrl("lumora://x?a=1&flag&&a=2&b=c+d&e="),
              (UrlCommand{"x", {{"a", "2"}, {"flag", ""}, {"b", "c+d"}, {"e", ""}}}));
    // Names and values are percent-decoded; "=" in a value is kept.
    EXPECT_EQ(parseCommandUrl("lumora://virtual?na%6De=My%20Screen%3D1&k=a=b"),
              (UrlCommand{"virtual", {{"name", "My Screen=1"}, {"k", "a=b"}}}));
    // User, port, path and fragment do not disturb host or query; case is kept.
    EXPECT_EQ(parseCommandUrl("lumora://me@Status:12/some/path?x=1#frag"),
              (UrlCommand{"Status", {{"x", "1"}}}));
    EXPECT_EQ(parseCommandUrl("other+scheme.1://dim"), (UrlCommand{"dim", {}}));
    EXPECT_EQ(parseCommandUrl("lumora://virtual?name=Экран"),
              (UrlCommand{"virtual", {{"name", "Экран"}}}));

    // One row per way to fail: scheme, "//", host, port, empty command, escapes in each part,
    // and bytes no URL holds.
    for (const char* text :
         {"", "1ab://x", "brightness?value=70", "lumora:status", "lumora://?value=1",
          "lumora://a:b", "lumora://[::1", "lumora://x?a=%4", "lumora://x?a=%G0", "lumora://x/%zz",
          "lumora://x#%", "lumora://x?a=1 2", "lumora://x\t", "lumora://x?a=\x7F"}) {
        EXPECT_EQ(parseCommandUrl(text), std::nullopt) << text;
    }
}

TEST(UrlParsing, PrintedQueryIsOneQuotedLine) {
    EXPECT_EQ(printQuery({}), "[:]");
    EXPECT_EQ(printQuery({{"value", "70"}, {"display", "main"}}),
              R"(["display": "main", "value": "70"])");
    EXPECT_EQ(printQuery({{"a\"b", std::string("c\\d\n\r\t\0"
                                               "5\x1b\x7f",
                                               10)}}),
              R"(["a\"b": "c\\d\n\r\t\05\u{1b}\u{7f}"])");
    // C1 controls, the Unicode separators and stray bytes; other text as it is.
    EXPECT_EQ(escapeForLog("\xC2\x85|\xE2\x80\xA8|\xE2\x80\xA9|\xFF|\xC3|Экран ×"),
              R"(\u{85}|\u{2028}|\u{2029}|\x{ff}|\x{c3}|Экран ×)");
}

TEST(CommandArguments, ExactNumbersOnly) {
    EXPECT_EQ(parseUnsigned("+12", 100), 12u);
    EXPECT_EQ(parseUnsigned("4294967295", 0xFFFFFFFF), 0xFFFFFFFFu);
    for (const char* bad : {"", "+", "-1", "4294967296", " 1", "1 ", "1x", "++1", "0x10"})
        EXPECT_EQ(parseUnsigned(bad, 0xFFFFFFFF), std::nullopt) << bad;
    EXPECT_EQ(parseInteger("-9223372036854775808"), INT64_MIN);
    EXPECT_EQ(parseInteger("+1920"), 1920);
    for (const char* bad : {"9223372036854775808", "19.0", "+-1", "-", "1 "})
        EXPECT_EQ(parseInteger(bad), std::nullopt) << bad;
    const std::pair<const char*, double> numbers[] = {
        {"59.94", 59.94}, {"+.5", 0.5}, {"5e1", 50}, {"-2.E-1", -0.2}, {"1e-320", 1e-320}};
    for (const auto& [text, value] : numbers)
        EXPECT_EQ(parseNumber(text), value) << text;
    for (const char* bad : {"", ".", "nan", "inf", "-inf", "1e999", "1e-400", "+-1", "1,5", "0x10",
                            " 1", "1e", "1e+", "--1", ".e1"}) {
        EXPECT_EQ(parseNumber(bad), std::nullopt) << bad;
    }
    EXPECT_EQ(parseHexByte("10"), 0x10);
    EXPECT_EQ(parseHexByte("0XD6"), 0xD6);
    EXPECT_EQ(parseHexByte("00ff"), 0xFF);
    for (const char* bad : {"", "0x", "100", "0x0x10", "g", "-1", "1 "})
        EXPECT_EQ(parseHexByte(bad), std::nullopt) << bad;
}

TEST(CommandArguments, OnIsTrueOnlyForItsThreeWordsAndValueOverOneIsAPercentage) {
    EXPECT_EQ(onArgument({}), std::nullopt);
    for (const char* yes : {"1", "true", "on"})
        EXPECT_EQ(onArgument({{"on", yes}}), true);
    for (const char* no : {"yes", "0", "", "TRUE", "On"})
        EXPECT_EQ(onArgument({{"on", no}}), false);
    const std::pair<const char*, std::optional<double>> levels[] = {
        {"70", 0.7}, {"0.7", 0.7}, {"1", 1.0}, {"1.5", 0.015}, {"-3", -3.0}, {"bright", {}}};
    for (const auto& [text, level] : levels)
        EXPECT_EQ(levelArgument({{"value", text}}), level) << text;
    EXPECT_EQ(levelArgument({}), std::nullopt);
}

// A user locale that writes "1,5" must change neither what is parsed nor what is written.
TEST(NumberText, TheUserLocaleChangesNothing) {
    const std::string previous = std::setlocale(LC_ALL, nullptr);
    const std::locale previousGlobal;
    bool commaLocale = false;
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "ru_RU.UTF-8"})
        commaLocale = commaLocale || std::setlocale(LC_ALL, name) != nullptr;
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    std::locale::global(std::locale(std::locale::classic(), new Comma));

    EXPECT_EQ(parseNumber("59.94"), 59.94);
    EXPECT_EQ(parseNumber("1,5"), std::nullopt);
    LidConfig config;
    config.sleepDelay = 30.5;
    EXPECT_NE(config.describe().find("closeDebounce=1.5 sleepDelay=30.5 "), std::string::npos);
    EXPECT_EQ((DisplayMode{1, 1920, 1080, 1920, 1080, 59.94}).label(), "1920×1080 · 60 Hz");

    std::locale::global(previousGlobal);
    std::setlocale(LC_ALL, previous.c_str());
    if (!commaLocale) GTEST_SKIP() << "no C locale with a decimal comma is installed";
}

TEST(CaseFold, LatinGreekAndCyrillicCapitalsMatchSmallLetters) {
    EXPECT_EQ(foldCase("Office MONITOR 😀"), "office monitor 😀");
    EXPECT_EQ(foldCase("ÀÉÖØÞ×ŸĲĹŇŹŽİ"), "àéöøþ×ÿĳĺňźži");
    EXPECT_EQ(foldCase("ΑΩΆΏ"), "αωάώ");
    EXPECT_EQ(foldCase("МОНИТОР Ёж ЀЏ Ѣ Ґ Ӂ Ӏ"), "монитор ёж ѐџ ѣ ґ ӂ ӏ");
    EXPECT_EQ(foldCase("\xFF\xC3Z"), "\xFF\xC3z");  // not UTF-8: kept
    EXPECT_TRUE(containsIgnoringCase("Рабочий Монитор", "монитор"));
    EXPECT_TRUE(containsIgnoringCase("Dell U2720Q", "u27"));
    EXPECT_FALSE(containsIgnoringCase("Dell", "Delll"));
    EXPECT_FALSE(containsIgnoringCase("Dell", ""));
}

}  // namespace
}  // namespace lumora
