// The settings sections: brightness keys and shortcut recording, lid and sleep, virtual
// screens.
#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

#include "UiScenario.h"
#include "sim/SimInput.h"
#include "ui/KeysSection.h"
#include "ui/LidSection.h"
#include "ui/ShortcutRecorder.h"
#include "ui/Switch.h"
#include "ui/ToggleRow.h"
#include "ui/VirtualSection.h"

namespace lumora::test {
namespace {

class SettingsTest : public UiScenario {
  protected:
    void SetUp() override {
        start("laptopAndExternal.json");
        settle();
    }

    ui::KeysSection& keys() { return *panel().keysSection(); }
    ui::LidSection& lid() { return *panel().lidSection(); }
    ui::VirtualSection& virt() { return *panel().virtualSection(); }
    QString buttonText(ShortcutAction action) { return keys().shortcutButton(action)->text(); }
    void press(ShortcutAction action) {
        keys().shortcutButton(action)->click();
        settle();
    }
};

TEST_F(SettingsTest, ShortcutButtonsShowLabelsOrADash) {
    EXPECT_EQ(buttonText(ShortcutAction::brightnessUp), "⌃⌥⌘↑");
    EXPECT_EQ(buttonText(ShortcutAction::brightnessDown), "⌃⌥⌘↓");
    EXPECT_EQ(buttonText(ShortcutAction::dimToBlack), "⌃⌥⌘B");
    EXPECT_EQ(buttonText(ShortcutAction::toggleBuiltin), "—");
    EXPECT_EQ(buttonText(ShortcutAction::toggleHiDPI), "⌃⌥⌘H");
    EXPECT_EQ(buttonText(ShortcutAction::sleepDisplays), "—");
}

TEST_F(SettingsTest, ActionRowsFollowDeclarationOrderWithTheirTitles) {
    QStringList titles;
    const auto* layout = keys().layout();
    for (int i = 0; i < layout->count(); ++i) {
        QLayout* row = layout->itemAt(i)->layout();
        if (!row) continue;
        titles << qobject_cast<QLabel*>(row->itemAt(0)->widget())->text();
    }
    EXPECT_EQ(titles,
              (QStringList{"Ярче (монитор под курсором)", "Темнее (монитор под курсором)",
                           "Погасить / вернуть монитор под курсором", "Встроенный экран вкл/выкл",
                           "HiDPI вкл/выкл (монитор под курсором)", "Усыпить все экраны"}));
}

TEST_F(SettingsTest, RecordingStartsMovesToAnotherActionAndCancels) {
    press(ShortcutAction::brightnessUp);
    EXPECT_EQ(model->recording().get(), ShortcutAction::brightnessUp);
    EXPECT_EQ(buttonText(ShortcutAction::brightnessUp), "Нажмите сочетание…");
    EXPECT_TRUE(keys().recorder()->installed());

    press(ShortcutAction::sleepDisplays);
    EXPECT_EQ(model->recording().get(), ShortcutAction::sleepDisplays);
    EXPECT_EQ(buttonText(ShortcutAction::brightnessUp), "⌃⌥⌘↑");
    EXPECT_EQ(buttonText(ShortcutAction::sleepDisplays), "Нажмите сочетание…");

    press(ShortcutAction::sleepDisplays);
    EXPECT_EQ(model->recording().get(), std::nullopt);
    EXPECT_EQ(buttonText(ShortcutAction::sleepDisplays), "—");
    EXPECT_FALSE(keys().recorder()->installed());
}

TEST_F(SettingsTest, KeysTypedWhileRecordingBindTheAction) {
    press(ShortcutAction::toggleBuiltin);
    QWidget* target = keys().shortcutButton(ShortcutAction::toggleBuiltin);

    // A plain key is swallowed and recording goes on.
    QTest::keyClick(target, Qt::Key_K);
    settle();
    EXPECT_EQ(model->recording().get(), ShortcutAction::toggleBuiltin);

    // Ctrl+Shift+K: control and shift on this platform.
    QTest::keyClick(target, Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier);
    settle();
    EXPECT_EQ(model->recording().get(), std::nullopt);
    const Shortcut bound = model->shortcuts()->at(ShortcutAction::toggleBuiltin);
    EXPECT_EQ(bound.keyCode, 40u);
    EXPECT_EQ(bound.modifiers, 0x1200u);
    EXPECT_EQ(bound.label, "⌃⇧K");
    EXPECT_EQ(buttonText(ShortcutAction::toggleBuiltin), "⌃⇧K");
    EXPECT_FALSE(keys().recorder()->installed());
}

TEST_F(SettingsTest, EscapeKeepsAndBackspaceClearsTheBinding) {
    press(ShortcutAction::dimToBlack);
    QTest::keyClick(keys().shortcutButton(ShortcutAction::dimToBlack), Qt::Key_Escape);
    settle();
    EXPECT_EQ(model->recording().get(), std::nullopt);
    EXPECT_EQ(buttonText(ShortcutAction::dimToBlack), "⌃⌥⌘B");

    press(ShortcutAction::dimToBlack);
    QTest::keyClick(keys().shortcutButton(ShortcutAction::dimToBlack), Qt::Key_Backspace);
    settle();
    EXPECT_FALSE(model->shortcuts()->contains(ShortcutAction::dimToBlack));
    EXPECT_EQ(buttonText(ShortcutAction::dimToBlack), "—");
}

TEST_F(SettingsTest, KeysReachWidgetsAgainOnceRecordingEnds) {
    QPushButton* button = keys().shortcutButton(ShortcutAction::brightnessUp);
    int clicks = 0;
    QObject::connect(button, &QPushButton::clicked, [&clicks] { ++clicks; });
    button->setFocus();
    QTest::keyClick(button, Qt::Key_Space);  // a focused button clicks on Space
    settle();
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(model->recording().get(), ShortcutAction::brightnessUp);
    QTest::keyClick(button, Qt::Key_Space);  // swallowed while recording
    settle();
    EXPECT_EQ(clicks, 1);
}

TEST_F(SettingsTest, BrightnessKeysToggleAndThePermissionRow) {
    ui::ToggleRow* toggle = keys().brightnessKeysToggle();
    EXPECT_EQ(toggle->label()->text(),
              "Клавиши яркости Mac управляют внешним монитором под курсором");
    EXPECT_TRUE(toggle->isChecked());
    EXPECT_TRUE(keys().permissionRow()->isHidden()) << "trusted: no permission row";

    toggle->toggle()->click();
    settle();
    EXPECT_FALSE(model->brightnessKeys().get());
    EXPECT_EQ(defaults.boolean("brightnessKeys"), false);
}

class PermissionTest : public UiScenario {};

TEST_F(PermissionTest, RowShowsOnlyWhileKeysAreOnAndAccessIsMissing) {
    sim::World world = fixtureWorld("laptopAndExternal.json");
    world.accessibility = false;
    boot(std::move(world));
    model->start();
    settle(kSettle);
    ui::KeysSection& keys = *panel().keysSection();
    ASSERT_FALSE(keys.permissionRow()->isHidden());
    EXPECT_NE(keys.permissionRow()->findChild<QLabel*>(), nullptr);
    EXPECT_EQ(keys.permissionRow()->findChild<QLabel*>()->text(),
              "Нужен доступ «Универсальный доступ»");

    keys.permissionRow()->findChild<QPushButton*>(QStringLiteral("allow"))->click();
    EXPECT_EQ(prompts, 1);

    machine->input().setTrusted(true);
    keys.permissionRow()->findChild<QPushButton*>(QStringLiteral("check"))->click();
    settle();
    EXPECT_TRUE(model->accessibilityOK().get());
    EXPECT_TRUE(keys.permissionRow()->isHidden());

    machine->input().setTrusted(false);
    model->setBrightnessKeys(false);
    settle();
    EXPECT_FALSE(model->accessibilityOK().get());
    EXPECT_TRUE(keys.permissionRow()->isHidden()) << "keys off: never the permission row";
}

TEST_F(SettingsTest, LidTogglesGoThroughTheModelsSetter) {
    EXPECT_EQ(lid().turnOffPanelToggle()->label()->text(),
              "Закрыта + внешний монитор: выключать встроенный экран");
    EXPECT_EQ(lid().disconnectBuiltinToggle()->label()->text(),
              "Открыта + внешний монитор: тоже выключать встроенный");
    EXPECT_EQ(lid().dimToggle()->label()->text(),
              "Закрыта: подсветку в 0 (защита от «тиков» тачпада/BT)");
    EXPECT_EQ(lid().preventSleepToggle()->label()->text(),
              "Не засыпать, пока подключён внешний монитор");
    EXPECT_TRUE(lid().turnOffPanelToggle()->isChecked());
    EXPECT_FALSE(lid().disconnectBuiltinToggle()->isChecked());
    EXPECT_TRUE(lid().dimToggle()->isChecked());

    lid().disconnectBuiltinToggle()->toggle()->click();
    lid().dimToggle()->toggle()->click();
    settle();
    LidConfig expected;
    expected.disconnectBuiltinWhenExternal = true;
    expected.dimWhenClosed = false;
    EXPECT_EQ(model->lidConfig().get(), expected);
    EXPECT_EQ(LidConfig::fromJson(defaults.jsonData("lidConfig").value_or(nullptr)), expected);

    lid().preventSleepToggle()->toggle()->click();
    settle();
    EXPECT_TRUE(model->preventSleepWithExternal().get());
    EXPECT_EQ(machine->state()["power"]["assertions"],
              nlohmann::json::array({"Lumora: external display connected"}));
}

TEST_F(SettingsTest, SleepDelayPickerOffersFiveDelaysAndSelectsNothingElse) {
    QComboBox* picker = lid().delayPicker();
    QStringList titles;
    std::vector<double> seconds;
    for (int i = 0; i < picker->count(); ++i) {
        titles << picker->itemText(i);
        seconds.push_back(picker->itemData(i).toDouble());
    }
    EXPECT_EQ(titles, (QStringList{"Никогда", "1 мин", "5 мин", "10 мин", "30 мин"}));
    EXPECT_EQ(seconds, (std::vector<double>{0, 60, 300, 600, 1800}));
    EXPECT_EQ(picker->currentText(), "10 мин");  // the default 600 s

    picker->setCurrentIndex(1);
    Q_EMIT picker->activated(1);
    settle();
    EXPECT_EQ(model->lidConfig()->sleepDelay, 60);

    LidConfig odd = model->lidConfig().get();
    odd.sleepDelay = 90;
    model->setLidConfig(odd);
    settle();
    EXPECT_EQ(picker->currentIndex(), -1);
}

TEST_F(SettingsTest, LoginToggleShowsWhatTheSessionDid) {
    ui::ToggleRow* toggle = lid().loginToggle();
    EXPECT_EQ(toggle->label()->text(), "Запускать при входе в систему");
    EXPECT_FALSE(toggle->isChecked());
    toggle->toggle()->click();
    EXPECT_TRUE(login.enabled);
    EXPECT_TRUE(toggle->isChecked());

    login.refuse = true;
    toggle->toggle()->click();
    EXPECT_EQ(login.switches, 2);
    EXPECT_TRUE(login.enabled);
    EXPECT_TRUE(toggle->isChecked()) << "refused: the switch stays on";
}

TEST_F(SettingsTest, AddingAVirtualScreenFromThePresets) {
    QStringList presets;
    for (QAction* action : virt().addMenu()->actions())
        presets << action->text();
    EXPECT_EQ(presets, (QStringList{"1920×1080 (16:9)", "2560×1440 (16:9)", "3840×2160 (16:9)",
                                    "2560×1600 (16:10)", "3440×1440 (21:9)", "1440×900 (16:10)",
                                    "1080×1920 (portrait)"}));
    EXPECT_TRUE(virt().hidpiBox()->isChecked());
    EXPECT_TRUE(virt().unavailableLabel()->isHidden());
    EXPECT_TRUE(virt().rows().empty());

    virt().addMenu()->actions().at(0)->trigger();
    settle(1);
    ASSERT_EQ(model->virtualScreens().configs().size(), 1u);
    const VirtualScreenConfig& config = model->virtualScreens().configs()[0];
    EXPECT_EQ(config.name, "Lumora 1920×1080");
    EXPECT_TRUE(config.hiDPI);
    EXPECT_EQ(config.refresh, 60);
    ASSERT_EQ(virt().rows().size(), 1u);
    QWidget* row = virt().rows()[0];
    EXPECT_EQ(row->findChild<QLabel*>(QStringLiteral("size"))->text(), "1920×1080 HiDPI");
    EXPECT_TRUE(row->findChild<ui::Switch*>()->isChecked());

    // Its display gets a card of its own.
    const DisplayID id = model->virtualScreens().displayID(config).value();
    ui::DisplayCard* card = panel().card(id);
    ASSERT_NE(card, nullptr);
    EXPECT_EQ(nameOf(*card), "Lumora 1920×1080");
    EXPECT_EQ(badgesOf(*card), QStringList{"виртуальный"});
    EXPECT_EQ(card->findChild<QLabel*>(QStringLiteral("displaySymbol"))->property("symbol"),
              "rectangle.dashed");
    EXPECT_EQ(card->softwareCaption(), nullptr);
    EXPECT_EQ(card->contrastRow(), nullptr);
}

TEST_F(SettingsTest, VirtualScreenSwitchAndDelete) {
    virt().hidpiBox()->click();
    settle();
    EXPECT_FALSE(model->virtualHiDPI().get());
    virt().addMenu()->actions().at(5)->trigger();  // 1440×900
    settle(1);
    ASSERT_EQ(virt().rows().size(), 1u);
    EXPECT_EQ(virt().rows()[0]->findChild<QLabel*>(QStringLiteral("size"))->text(), "1440×900");
    const std::uint32_t id = model->virtualScreens().configs()[0].id;
    EXPECT_EQ(panel().cards().size(), 4u);

    virt().rows()[0]->findChild<ui::Switch*>()->click();
    settle(1);
    EXPECT_FALSE(model->virtualScreens().configs()[0].enabled);
    EXPECT_FALSE(virt().rows()[0]->findChild<ui::Switch*>()->isChecked());
    EXPECT_EQ(panel().cards().size(), 3u);
    EXPECT_TRUE(wasLogged("virtual screen 'Lumora 1440×900' off"));

    virt().rows()[0]->findChild<QToolButton*>(QStringLiteral("delete"))->click();
    settle(1);
    EXPECT_TRUE(model->virtualScreens().configs().empty());
    EXPECT_TRUE(virt().rows().empty());
    (void)id;
}

class UnavailableVirtualTest : public UiScenario {};

TEST_F(UnavailableVirtualTest, SectionSaysUnavailable) {
    sim::World world = fixtureWorld("laptopAndExternal.json");
    world.virtualDisplays = false;
    boot(std::move(world));
    model->start();
    settle(kSettle);
    ui::VirtualSection& section = *panel().virtualSection();
    EXPECT_FALSE(section.unavailableLabel()->isHidden());
    EXPECT_EQ(section.unavailableLabel()->text(), "недоступно");
    EXPECT_FALSE(section.addButton()->isEnabled());
}

}  // namespace
}  // namespace lumora::test
