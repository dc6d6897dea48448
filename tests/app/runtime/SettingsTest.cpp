#include <gtest/gtest.h>

#include <QSettings>
#include <QString>
#include <thread>
#include <vector>

#include "RuntimeTestSupport.h"
#include "runtime/SettingsCodec.h"
#include "runtime/SettingsDefaults.h"
#include "support/TestSupport.h"

namespace lumora::app {
namespace {

using json = nlohmann::json;

class SettingsTest : public test::QtAppTest {
  protected:
    test::TempDir dir;
    std::filesystem::path file = dir / "Lumora.conf";

    // What a plain QSettings finds under the key, as text.
    [[nodiscard]] std::string rawText(const char* key) const {
        QSettings raw(QString::fromStdString(file.string()), QSettings::IniFormat);
        return raw.value(key).toString().toStdString();
    }
};

TEST_F(SettingsTest, EveryValueTypeComesBackExactlyFromAFreshStoreOnTheSameFile) {
    const std::map<std::string, json> values{
        {"brightnessKeys", true},
        {"builtinDisplayID", 69734662},
        {"large", std::int64_t{9'007'199'254'740'993}},
        {"lid.savedBrightness", 0.35},
        {"wholeDouble", 2.0},
        {"text", "Монитор, \"офис\" @ 100% \\ ;#="},
        {"empty", ""},
        {"looksLikeBool", "true"},
        {"bytes", json::binary({0x00, 0xFF, 0x10, 0x0A})},
        {"noBytes", json::binary({})},
        {"hidpi.enabled", json::array({"4268:41234:12345", "9999:7:0"})},
        {"disconnectedDisplays", json{{"2", "Office Monitor"}, {"3", "Projector"}}},
        {"nested", json::array({json::binary({1, 2, 3}), json{{"inner", json::binary({4})}},
                                json{{"d", 0.5}, {"list", json::array({1, "x", nullptr})}}})},
    };
    {
        SettingsDefaults store(file);
        for (const auto& [key, value] : values)
            store.set(key, value);
        store.setJsonData("lidConfig", json{{"mode", "auto"}, {"threshold", 30}});
        store.setInteger("overwritten", 3);
        store.setString("overwritten", "replaced");
        store.setBoolean("gone", true);
        store.remove("gone");
        store.remove("");  // never means "everything"
    }

    SettingsDefaults fresh(file);
    for (const auto& [key, value] : values) {
        auto read = fresh.object(key);
        ASSERT_TRUE(read) << key;
        EXPECT_EQ(*read, value) << key;
        EXPECT_EQ(read->type(), value.type()) << key;
    }
    EXPECT_EQ(fresh.integer("large"), 9'007'199'254'740'993);
    EXPECT_EQ(fresh.boolean("looksLikeBool"), std::nullopt);
    EXPECT_EQ(fresh.data("bytes"), (Defaults::Bytes{0x00, 0xFF, 0x10, 0x0A}));
    EXPECT_EQ(fresh.jsonData("lidConfig"), (json{{"mode", "auto"}, {"threshold", 30}}));
    EXPECT_EQ(fresh.object("overwritten"), json("replaced"));
    EXPECT_FALSE(fresh.contains("gone"));

    // On disk each value is its JSON text, bytes as base64.
    EXPECT_EQ(rawText("brightnessKeys"), "true");
    EXPECT_EQ(rawText("looksLikeBool"), "\"true\"");
    EXPECT_EQ(rawText("bytes"), R"({"$data":"AP8QCg=="})");
}

TEST_F(SettingsTest, HandEditedAndCorruptEntriesReadAsPlainStringsWithoutCrashing) {
    test::writeFile(file,
                    "[General]\n"
                    "plain=hello world\n"
                    "number=42\n"
                    "truncated={\"a\": [1\n"
                    "list=a, b\n"
                    "badBytes=\"{\\\"$data\\\":\\\"*not base64*\\\"}\"\n"
                    "colorAdjust=\"{\\\"$data\\\":\\\"bm90IGpzb24=\\\"}\"\n"
                    "\x01\xff\xfe garbage line without equals\n");
    SettingsDefaults store(file);
    EXPECT_EQ(store.object("plain"), json("hello world"));
    EXPECT_EQ(store.object("number"), json(42));  // JSON text after all
    EXPECT_EQ(store.object("truncated"), json(rawText("truncated")));
    EXPECT_EQ(store.integer("truncated"), std::nullopt);
    // The INI reader splits an unquoted comma list; the store keeps the pieces.
    EXPECT_EQ(store.object("list"), json::array({"a", "b"}));
    // Not base64: an ordinary dictionary, and no data.
    EXPECT_EQ(store.object("badBytes"), (json{{"$data", "*not base64*"}}));
    EXPECT_EQ(store.data("badBytes"), std::nullopt);
    // Bytes that are not JSON: the structured reader falls back to nothing.
    EXPECT_EQ(store.data("colorAdjust"), (Defaults::Bytes{'n', 'o', 't', ' ', 'j', 's', 'o', 'n'}));
    EXPECT_EQ(store.jsonData("colorAdjust"), std::nullopt);

    // A file that is not INI at all.
    const char junk[] = "\0\x01\x02[[[=\xff\n=\n";
    test::writeFile(file, std::string(junk, sizeof junk - 1));
    SettingsDefaults garbage(file);
    EXPECT_FALSE(garbage.contains("plain"));
    garbage.setBoolean("brightnessKeys", false);
    EXPECT_EQ(SettingsDefaults(file).boolean("brightnessKeys"), false);
}

TEST_F(SettingsTest, WritersOnManyThreadsLoseNothing) {
    constexpr int kThreads = 4;
    constexpr int kKeys = 10;
    SettingsDefaults store(file);
    std::vector<std::thread> writers;
    for (int t = 0; t < kThreads; ++t) {
        writers.emplace_back([&store, t] {
            for (int k = 0; k < kKeys; ++k)
                store.setInteger("t" + std::to_string(t * 100 + k), t * 100 + k);
        });
    }
    for (auto& writer : writers)
        writer.join();
    SettingsDefaults fresh(file);
    for (int t = 0; t < kThreads; ++t) {
        for (int k = 0; k < kKeys; ++k)
            EXPECT_EQ(fresh.integer("t" + std::to_string(t * 100 + k)), t * 100 + k);
    }
}

// The native store's variants and the text form each keep every type.
TEST(SettingsCodec, VariantsAndTextKeepEveryType) {
    const json value{{"b", true},
                     {"i", -7},
                     {"d", 0.25},
                     {"s", "текст"},
                     {"data", json::binary({0, 1, 254})},
                     {"list", json::array({1, "two", json::array({false})})}};
    const json back = settingFromVariant(settingToVariant(value));
    EXPECT_EQ(back, value);
    EXPECT_TRUE(back["i"].is_number_integer());
    EXPECT_TRUE(back["d"].is_number_float());
    EXPECT_TRUE(back["data"].is_binary());

    // A stray byte that is not UTF-8 is replaced rather than losing the value.
    EXPECT_EQ(encodeSettingText(json("a\xff")), "\"a\xEF\xBF\xBD\"");
    EXPECT_EQ(decodeSettingText(""), json(""));
}

}  // namespace
}  // namespace lumora::app
