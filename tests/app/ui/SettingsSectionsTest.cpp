// The settings sections: brightness keys and shortcut recording, lid and sleep, virtual
// screens.
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTest>
#include <QToolButton>

#include "UiScenario.h"
#include "adaptive/AdaptiveSettings.h"
#include "input/KeyCodes.h"
#include "sim/SimInput.h"
#include "ui/AdaptiveSection.h"
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
    void SetUp() override { startOn(); }

    ui::KeysSection& keys() { return *panel().keysSection(); }
    ui::LidSection& lid() { return *panel().lidSection(); }
    ui::VirtualSection& virt() { return *panel().virtualSection(); }
    QPushButton* button(ShortcutAction action) { return keys().shortcutButton(action); }
    QStringList buttonTexts() {
        QStringList texts;
        for (ShortcutAction action : kAllShortcutActions)
            texts << button(action)->text();
        return texts;
    }
    void press(ShortcutAction action) {
        button(action)->click();
        settle();
    }
    void type(ShortcutAction action, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(button(action), key, modifiers);
        settle();
    }
    void flip(ui::ToggleRow* row) {
        row->toggle()->click();
        settle();
    }
};

TEST_F(SettingsTest, RecordingMovesBetweenActionsAndTypedCombinationsBind) {
    const QString waiting = "Нажмите сочетание…";
    EXPECT_EQ(buttonTexts(), (QStringList{"Ctrl+Alt+Super+↑", "Ctrl+Alt+Super+↓",
                                          "Ctrl+Alt+Super+B", "—", "Ctrl+Alt+Super+H", "—"}));
    press(ShortcutAction::brightnessUp);
    EXPECT_TRUE(keys().recorder()->installed());
    button(ShortcutAction::brightnessUp)->setFocus();
    type(ShortcutAction::brightnessUp, Qt::Key_Space);  // swallowed: the button does not click
    EXPECT_EQ(model->recording().get(), ShortcutAction::brightnessUp);
    press(ShortcutAction::sleepDisplays);
    EXPECT_EQ(buttonTexts(), (QStringList{"Ctrl+Alt+Super+↑", "Ctrl+Alt+Super+↓",
                                          "Ctrl+Alt+Super+B", "—", "Ctrl+Alt+Super+H", waiting}));
    press(ShortcutAction::sleepDisplays);
    EXPECT_EQ(model->recording().get(), std::nullopt);
    EXPECT_FALSE(keys().recorder()->installed());

    // A plain key is swallowed and recording goes on; Ctrl+Shift+K binds control and shift.
    press(ShortcutAction::toggleBuiltin);
    type(ShortcutAction::toggleBuiltin, Qt::Key_K);
    EXPECT_EQ(model->recording().get(), ShortcutAction::toggleBuiltin);
    type(ShortcutAction::toggleBuiltin, Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(model->recording().get(), std::nullopt);
    EXPECT_EQ(model->shortcuts()->at(ShortcutAction::toggleBuiltin),
              (Shortcut{40, kMaskControl | kMaskShift, "⌃⇧K"}));
    EXPECT_EQ(buttonTexts(),
              (QStringList{"Ctrl+Alt+Super+↑", "Ctrl+Alt+Super+↓", "Ctrl+Alt+Super+B",
                           "Ctrl+Shift+K", "Ctrl+Alt+Super+H", "—"}));
}

TEST_F(SettingsTest, BrightnessKeysPermissionRowLidTogglesAndLogin) {
    EXPECT_EQ(keys().brightnessKeysToggle()->label()->text(),
              "Клавиши яркости управляют внешним монитором под курсором");
    EXPECT_TRUE(keys().brightnessKeysToggle()->isChecked());
    EXPECT_TRUE(keys().permissionRow()->isHidden()) << "trusted: no permission row";
    flip(keys().brightnessKeysToggle());
    EXPECT_EQ(defaults.boolean("brightnessKeys"), false);

    EXPECT_FALSE(lid().disconnectBuiltinToggle()->isChecked());
    flip(lid().disconnectBuiltinToggle());
    flip(lid().dimToggle());
    LidConfig expected;
    expected.disconnectBuiltinWhenExternal = true;
    expected.dimWhenClosed = false;
    EXPECT_EQ(LidConfig::fromJson(defaults.jsonData("lidConfig").value_or(nullptr)), expected);
    flip(lid().preventSleepToggle());
    EXPECT_EQ(machine->state()["power"]["assertions"],
              nlohmann::json::array({"Lumora: external display connected"}));
    EXPECT_TRUE(lid().restoreToggle()->isChecked());
    flip(lid().restoreToggle());
    EXPECT_EQ(defaults.boolean("restoreAfterWake"), false);

    // The login switch shows what the session did, not what was asked.
    ui::ToggleRow* loginRow = lid().loginToggle();
    EXPECT_FALSE(loginRow->isChecked());
    loginRow->toggle()->click();
    EXPECT_TRUE(login.enabled);
    login.refuse = true;
    loginRow->toggle()->click();
    EXPECT_EQ(login.switches, 2);
    EXPECT_TRUE(loginRow->isChecked());
}

TEST_F(SettingsTest, SleepDelayPickerSelectsAListedDelayAndNothingElse) {
    QComboBox* picker = lid().delayPicker();
    EXPECT_EQ(picker->currentData().toDouble(), 600);  // the default
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

TEST_F(SettingsTest, AdaptiveSectionOffersWhatTheMachineHasAndAsksForThePlace) {
    ui::AdaptiveSection& section = *panel().adaptiveSection();
    QComboBox* picker = section.modePicker();
    const auto* items = qobject_cast<QStandardItemModel*>(picker->model());
    ASSERT_NE(items, nullptr);
    EXPECT_TRUE(items->item(1)->isEnabled());
    EXPECT_TRUE(items->item(2)->isEnabled());
    machine->setLightLux(std::nullopt);  // the sensor is gone: no longer offered
    model->refresh();
    settle();
    EXPECT_FALSE(items->item(2)->isEnabled());
    const auto choose = [&](int index) {
        picker->setCurrentIndex(index);
        Q_EMIT picker->activated(index);
        settle();
    };

    // The sun before a place: refused, and the place fields appear.
    choose(3);
    EXPECT_EQ(model->adaptive().mode(), AdaptiveMode::off);
    EXPECT_EQ(section.problemLabel()->text(), "Сначала укажите широту и долготу");
    EXPECT_FALSE(section.latitudeField()->isHidden());
    section.latitudeField()->setText("52,52");
    section.longitudeField()->setText("13.405");
    Q_EMIT section.longitudeField()->editingFinished();
    settle(1);
    EXPECT_EQ(model->adaptive().mode(), AdaptiveMode::schedule);
    EXPECT_EQ(loadAdaptiveLocation(defaults), (GeoLocation{52.52, 13.405}));
    EXPECT_TRUE(section.problemLabel()->isHidden());
    EXPECT_EQ(picker->currentIndex(), 3);

    flip(section.nightToggle());
    EXPECT_TRUE(loadNightColor(defaults).on);
    ASSERT_EQ(section.displayToggles().size(), 2U);
    ui::ToggleRow* monitor = section.displayToggles()[1];
    EXPECT_EQ(monitor->label()->text(), "Projector");
    EXPECT_TRUE(monitor->isChecked());
    flip(monitor);
    EXPECT_EQ(loadAdaptiveExcluded(defaults),
              std::set<std::string>{model->inventory().server().persistentKey(3)});
    EXPECT_FALSE(model->adaptive().target(3));

    choose(0);
    EXPECT_EQ(model->adaptive().mode(), AdaptiveMode::off);
    EXPECT_TRUE(monitor->isHidden());
    EXPECT_TRUE(section.nightToggle()->isHidden());
}

TEST_F(SettingsTest, VirtualScreensAreAddedSwitchedAndDeleted) {
    EXPECT_TRUE(virt().unavailableLabel()->isHidden());
    virt().addMenu()->actions().at(0)->trigger();  // 1920×1080, HiDPI as the box says
    settle(1);
    ASSERT_EQ(model->virtualScreens().configs().size(), 1u);
    const VirtualScreenConfig first = model->virtualScreens().configs()[0];
    EXPECT_EQ(first.name, "Lumora 1920×1080");
    EXPECT_TRUE(first.hiDPI);
    ASSERT_EQ(virt().rows().size(), 1u);
    EXPECT_EQ(virt().rows()[0]->findChild<QLabel*>(QStringLiteral("size"))->text(),
              "1920×1080 HiDPI");
    // Its display gets a card of its own, software-free and without DDC.
    ui::DisplayCard* card = panel().card(model->virtualScreens().displayID(first).value());
    ASSERT_NE(card, nullptr);
    EXPECT_EQ(badgesOf(*card), QStringList{"виртуальный"});
    EXPECT_EQ(card->softwareCaption(), nullptr);
    EXPECT_EQ(card->contrastRow(), nullptr);

    virt().hidpiBox()->click();
    virt().addMenu()->actions().at(5)->trigger();  // 1440×900
    settle(1);
    ASSERT_EQ(virt().rows().size(), 2u);
    EXPECT_EQ(virt().rows()[1]->findChild<QLabel*>(QStringLiteral("size"))->text(), "1440×900");
    EXPECT_EQ(panel().cards().size(), 5u);
    virt().rows()[1]->findChild<ui::Switch*>()->click();
    settle(1);
    EXPECT_FALSE(model->virtualScreens().configs()[1].enabled);
    EXPECT_FALSE(virt().rows()[1]->findChild<ui::Switch*>()->isChecked());
    EXPECT_EQ(panel().cards().size(), 4u);
    virt().rows()[0]->findChild<QToolButton*>(QStringLiteral("delete"))->click();
    settle(1);
    ASSERT_EQ(model->virtualScreens().configs().size(), 1u);
    EXPECT_EQ(model->virtualScreens().configs()[0].name, "Lumora 1440×900");
    EXPECT_EQ(virt().rows().size(), 1u);
    EXPECT_EQ(panel().cards().size(), 3u);
}

class WorldWithoutTest : public UiScenario {
  protected:
    void bootWithout(bool sim::World::*capability) {
        sim::World world = fixtureWorld("laptopAndExternal.json");
        world.*capability = false;
        startOn(std::move(world));
    }
};

TEST_F(WorldWithoutTest, AccessibilityShowsThePermissionRowWhileTheKeysAreOn) {
    bootWithout(&sim::World::accessibility);
    QWidget* row = panel().keysSection()->permissionRow();
    ASSERT_FALSE(row->isHidden());
    EXPECT_FALSE(machine->input().tapInstalled()) << "the tap waits for the permission";
    row->findChild<QPushButton*>(QStringLiteral("allow"))->click();
    EXPECT_EQ(prompts, 1);

    machine->input().setTrusted(true);
    row->findChild<QPushButton*>(QStringLiteral("check"))->click();
    settle();
    EXPECT_TRUE(model->accessibilityOK().get());
    EXPECT_TRUE(machine->input().tapInstalled());
    EXPECT_TRUE(row->isHidden());

    machine->input().setTrusted(false);
    model->setBrightnessKeys(false);
    settle();
    EXPECT_FALSE(model->accessibilityOK().get());
    EXPECT_TRUE(row->isHidden()) << "keys off: never the permission row";
}

TEST_F(WorldWithoutTest, VirtualDisplaysTheSectionSaysUnavailable) {
    bootWithout(&sim::World::virtualDisplays);
    EXPECT_FALSE(panel().virtualSection()->unavailableLabel()->isHidden());
    EXPECT_FALSE(panel().virtualSection()->addButton()->isEnabled());
}

}  // namespace
}  // namespace lumora::test
