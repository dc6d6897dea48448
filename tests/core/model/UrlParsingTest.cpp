// Command URLs as text: parsing, the one-line log form of a query, argument readers, and the
// case folding used to find displays by name.
#include <gtest/gtest.h>

#include "model/CaseFold.h"
#include "model/CommandArguments.h"
#include "model/UrlCommand.h"

namespace lumora {
namespace {

TEST(UrlParsing, HostIsTheCommandAndQueryItemsLaterWin) {
    EXPECT_EQ(parseCommandUrl("lumora://brightness?display=main&value=70"),
              (UrlCommand{"brightness", {{"display", "main"}, {"value", "70"}}}));
    EXPECT_EQ(parseCommandUrl("lumora://status"), (UrlCommand{"status", {}}));
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
}

TEST(UrlParsing, TextWithoutHostOrMalformedIsNothing) {
    for (const char* text : {"",
                             "lumora:",
                             "lumora:/status",
                             "lumora:status",
                             "lumora://",
                             "lumora://?value=1",
                             "lumora://:80",
                             "lumora://a:b",
                             "brightness?value=70",
                             "1ab://x",
                             "lumora://[::1",
                             "lumora://x?a=%",
                             "lumora://x?a=%4",
                             "lumora://x?a=%G0",
                             "lumora://x/%zz",
                             "lumora://x#%",
                             "lumora://x?a=1 2",
                             "lumora://x?a=\n",
                             "lumora://x\t",
                             "lumora://x?a=\x7F"}) {
        EXPECT_EQ(parseCommandUrl(text), std::nullopt) << text;
    }
    EXPECT_EQ(parseCommandUrl(std::string_view("lumora://x\0y", 11)), std::nullopt);
}

TEST(UrlParsing, PrintedQueryIsOneQuotedLine) {
    EXPECT_EQ(printQuery({}), "[:]");
    EXPECT_EQ(printQuery({{"value", "70"}, {"display", "main"}}),
              R"(["display": "main", "value": "70"])");
    EXPECT_EQ(printQuery({{"a\"b", "c\\d"}}), R"(["a\"b": "c\\d"])");
    EXPECT_EQ(printQuery({{"v", std::string("1\n2\r3\t4\0"
                                            "5\x1b\x7f",
                                            11)}}),
              R"(["v": "1\n2\r3\t4\05\u{1b}\u{7f}"])");
    // C1 controls, the Unicode separators and stray bytes; other text as it is.
    EXPECT_EQ(escapeForLog("\xC2\x85|\xE2\x80\xA8|\xE2\x80\xA9|\xFF|\xC3|Экран ×"),
              R"(\u{85}|\u{2028}|\u{2029}|\x{ff}|\x{c3}|Экран ×)");
    auto parsed = parseCommandUrl("lumora://x?v=%0Aurl:%20fake%22");
    ASSERT_TRUE(parsed);
    EXPECT_EQ(printQuery(parsed->query), R"(["v": "\nurl: fake\""])");
}

TEST(CommandArguments, ExactNumbersOnly) {
    EXPECT_EQ(parseUnsigned("+12", 100), 12u);
    EXPECT_EQ(parseUnsigned("4294967295", 0xFFFFFFFF), 0xFFFFFFFFu);
    for (const char* bad : {"", "+", "-1", "4294967296", " 1", "1 ", "1x", "++1", "0x10"}) {
        EXPECT_EQ(parseUnsigned(bad, 0xFFFFFFFF), std::nullopt) << bad;
    }
    EXPECT_EQ(parseInteger("-9223372036854775808"), INT64_MIN);
    EXPECT_EQ(parseInteger("+1920"), 1920);
    EXPECT_EQ(parseInteger("9223372036854775808"), std::nullopt);
    EXPECT_EQ(parseInteger("19.0"), std::nullopt);
    EXPECT_EQ(parseNumber("59.94"), 59.94);
    EXPECT_EQ(parseNumber("+.5"), 0.5);
    EXPECT_EQ(parseNumber("5e1"), 50.0);
    for (const char* bad : {"", "nan", "inf", "-inf", "1e999", "+-1", "1,5", "0x10", " 1"}) {
        EXPECT_EQ(parseNumber(bad), std::nullopt) << bad;
    }
    EXPECT_EQ(parseHexByte("10"), 0x10);
    EXPECT_EQ(parseHexByte("0x60"), 0x60);
    EXPECT_EQ(parseHexByte("0XD6"), 0xD6);
    EXPECT_EQ(parseHexByte("00ff"), 0xFF);
    for (const char* bad : {"", "0x", "100", "0x0x10", "g", "-1", "1 "}) {
        EXPECT_EQ(parseHexByte(bad), std::nullopt) << bad;
    }
}

TEST(CommandArguments, OnIsTrueOnlyForItsThreeWordsAndValueOverOneIsAPercentage) {
    EXPECT_EQ(onArgument({}), std::nullopt);
    for (const char* yes : {"1", "true", "on"})
        EXPECT_EQ(onArgument({{"on", yes}}), true);
    for (const char* no : {"yes", "0", "", "TRUE", "On"})
        EXPECT_EQ(onArgument({{"on", no}}), false);
    EXPECT_EQ(levelArgument({{"value", "70"}}), 0.7);
    EXPECT_EQ(levelArgument({{"value", "0.7"}}), 0.7);
    EXPECT_EQ(levelArgument({{"value", "1"}}), 1.0);
    EXPECT_EQ(levelArgument({{"value", "1.5"}}), 0.015);
    EXPECT_EQ(levelArgument({{"value", "-3"}}), -3.0);
    EXPECT_EQ(levelArgument({{"value", "bright"}}), std::nullopt);
    EXPECT_EQ(levelArgument({}), std::nullopt);
}

TEST(CaseFold, LatinGreekAndCyrillicCapitalsMatchSmallLetters) {
    EXPECT_EQ(foldCase("Office MONITOR"), "office monitor");
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
