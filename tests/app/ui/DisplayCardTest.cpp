// The display cards on the default world (built-in panel 1, DDC monitor 2, projector 3 without
// DDC): what each card shows, which controls it has, and where its controls reach.
#include <QPushButton>
#include <QSlider>
#include <QToolButton>

#include "UiScenario.h"
#include "ui/ColorControls.h"
#include "ui/SliderRow.h"

namespace lumora::test {
namespace {

class DisplayCardTest : public UiScenario {
  protected:
    void SetUp() override { startOn(); }

    ui::DisplayCard& card(DisplayID id) {
        ui::DisplayCard* found = panel().card(id);
        if (!found) throw std::runtime_error("no card for display " + std::to_string(id));
        return *found;
    }
    QSlider* slider(DisplayID id, ui::SliderRow* (ui::DisplayCard::*row)() const) {
        return (card(id).*row)()->slider();
    }
    static QMenu& open(QMenu* menu) {
        Q_EMIT menu->aboutToShow();
        return *menu;
    }
    QMenu& moreMenu(DisplayID id) { return open(card(id).moreMenu()); }
    QMenu& modeMenu(DisplayID id) { return open(card(id).modeMenu()); }
    std::int64_t wireVcp(DisplayID id, const char* code) {
        return stateOf(id)["vcp"][code].get<std::int64_t>();
    }
};

TEST_F(DisplayCardTest, EachCardShowsItsDisplayAndTheControlsItIsDrivenBy) {
    struct Expected {
        DisplayID id;
        const char* name;
        const char* symbol;
        QStringList badges;
        bool ddc;       // contrast and volume rows
        bool software;  // the caption that brightness is done in software
        int brightness;
    };
    const Expected expected[] = {
        {1, "Built-in Retina Display", "laptopcomputer", {"главный"}, false, false, 500},
        {2, "Office Monitor", "display", {}, true, false, 500},  // 50 of 100
        {3, "Projector", "display", {}, false, true, 1000},      // no colour stored: 1.0
    };
    ASSERT_EQ(panel().cards().size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) {
        const Expected& e = expected[i];
        ui::DisplayCard& c = *panel().cards()[i];
        SCOPED_TRACE(e.name);
        EXPECT_EQ(c.displayID(), e.id);
        EXPECT_EQ(nameOf(c), e.name);
        EXPECT_EQ(c.findChild<QLabel*>(QStringLiteral("displaySymbol"))->property("symbol"),
                  e.symbol);
        EXPECT_EQ(badgesOf(c), e.badges);
        EXPECT_EQ(c.contrastRow() != nullptr, e.ddc);
        EXPECT_EQ(c.volumeRow() != nullptr, e.ddc);
        EXPECT_EQ(c.softwareCaption() != nullptr, e.software);
        EXPECT_EQ(c.brightnessRow()->slider()->value(), e.brightness);
    }
    EXPECT_EQ(slider(2, &ui::DisplayCard::contrastRow)->value(), 750);
    EXPECT_EQ(slider(2, &ui::DisplayCard::volumeRow)->value(), 300);
}

TEST_F(DisplayCardTest, SlidersReachTheBacklightTheMonitorAndTheGamma) {
    slider(1, &ui::DisplayCard::brightnessRow)->setValue(300);
    EXPECT_DOUBLE_EQ(stateOf(1)["backlight"].get<double>(), 0.3);

    // DDC: cached at once; the model's debounce takes it to the monitor.
    slider(2, &ui::DisplayCard::brightnessRow)->setValue(700);
    slider(2, &ui::DisplayCard::contrastRow)->setValue(400);
    slider(2, &ui::DisplayCard::volumeRow)->setValue(90);
    EXPECT_DOUBLE_EQ(model->ddcValues()->at(2).at(0x10), 0.7);
    EXPECT_DOUBLE_EQ(model->ddcValues()->at(2).at(0x12), 0.4);
    clock.advance(0.5);
    EXPECT_EQ(wireVcp(2, "0x62"), 9);

    // Software: dims, never below the floor, and the slider follows the model there.
    slider(3, &ui::DisplayCard::brightnessRow)->setValue(600);
    EXPECT_DOUBLE_EQ(model->color()->at(3).dim, 0.6);
    EXPECT_NE(stateOf(3)["gamma"], "identity");
    slider(3, &ui::DisplayCard::brightnessRow)->setValue(0);
    EXPECT_DOUBLE_EQ(model->color()->at(3).dim, 0.05);
    settle();
    EXPECT_EQ(slider(3, &ui::DisplayCard::brightnessRow)->value(), 50);
    // The dim row of the colour controls shares the floor.
    card(3).colorControls()->row(ui::ColorControls::dim)->slider()->setValue(600);
    card(3).colorControls()->row(ui::ColorControls::dim)->slider()->setValue(0);
    EXPECT_DOUBLE_EQ(model->color()->at(3).dim, 0.05);
}

TEST_F(DisplayCardTest, ModelChangesMoveControlsInPlaceButNotADraggedSlider) {
    ui::DisplayCard* before = panel().card(2);
    QSlider* brightness = before->brightnessRow()->slider();
    brightness->setSliderDown(true);
    model->ddc().set(2, VCP::brightness, 0.9, 100);
    settle();
    EXPECT_EQ(brightness->value(), 500);
    brightness->setSliderDown(false);
    model->ddc().set(2, VCP::brightness, 0.8, 100);
    settle();
    EXPECT_EQ(brightness->value(), 800);
    EXPECT_EQ(panel().card(2), before);
}

TEST_F(DisplayCardTest, SwitchingADisplayOffAndBackRebuildsItsCard) {
    card(3).switchOffButton()->click();
    settle(1);
    EXPECT_FALSE(stateOf(3)["enabled"].get<bool>());
    ui::DisplayCard& off = card(3);
    EXPECT_EQ(nameOf(off), "Projector");
    EXPECT_EQ(badgesOf(off), QStringList{"отключён"});
    EXPECT_EQ(off.brightnessRow(), nullptr);
    EXPECT_EQ(off.modeButton(), nullptr);
    EXPECT_EQ(off.colorToggle(), nullptr);

    off.switchOffButton()->click();
    settle(1);
    EXPECT_TRUE(stateOf(3)["enabled"].get<bool>());
    EXPECT_EQ(badgesOf(card(3)), QStringList{});
    EXPECT_NE(card(3).brightnessRow(), nullptr);
}

TEST_F(DisplayCardTest, ModeMenuListsHiDPIAndPlainModesAndMarksTheCurrentOne) {
    EXPECT_EQ(entries(modeMenu(2)),
              (QStringList{"HiDPI", "1280×720 HiDPI · 60 Hz", "Обычные", "✓ 2560×1440 · 60 Hz",
                           "2560×1440 · 60 Hz", "1920×1080 · 60 Hz"}))
        << "59.94 Hz is labelled 60 Hz like the 60 Hz mode beside it";

    entry(modeMenu(3), "1280×720 · 60 Hz")->trigger();
    EXPECT_EQ(stateOf(3)["mode"], 31);
    EXPECT_EQ(entries(modeMenu(3)),
              (QStringList{"Обычные", "1920×1080 · 60 Hz", "✓ 1280×720 · 60 Hz"}));
}

TEST_F(DisplayCardTest, MoreMenuCommandsReachTheDisplays) {
    QMenu& ddc = moreMenu(2);
    EXPECT_EQ(entries(ddc),
              (QStringList{"HiDPI (чёткий Retina-режим)", "Сделать главным", "Зеркалировать на",
                           "Вход", "Питание (DDC)", "ID 2 · вендор 4268 · модель 41234"}));
    EXPECT_FALSE(entry(ddc, "ID 2 · вендор 4268 · модель 41234")->isEnabled());
    EXPECT_EQ(entries(*submenu(ddc, "Зеркалировать на")),
              (QStringList{"Built-in Retina Display", "Projector", "Не зеркалировать"}));
    // The inputs its capabilities string names, by their MCCS names.
    EXPECT_EQ(entries(*submenu(ddc, "Вход")), (QStringList{"DisplayPort 1", "HDMI 1", "HDMI 2"}));
    entry(*submenu(ddc, "Вход"), "HDMI 1")->trigger();
    entry(*submenu(ddc, "Питание (DDC)"), "Режим ожидания")->trigger();
    clock.advance(0.5);
    EXPECT_EQ(wireVcp(2, "0x60"), 0x11);
    EXPECT_EQ(wireVcp(2, "0xd6"), 4);
    EXPECT_EQ(submenu(moreMenu(3), "Вход"), nullptr) << "DDC only for DDC monitors";

    entry(moreMenu(2), "Сделать главным")->trigger();
    settle();
    EXPECT_TRUE(stateOf(2)["main"].get<bool>());
    EXPECT_EQ(badgesOf(card(2)), QStringList{"главный"});
    EXPECT_EQ(badgesOf(card(1)), QStringList{});

    entry(*submenu(moreMenu(3), "Зеркалировать на"), "Office Monitor")->trigger();
    EXPECT_EQ(stateOf(3)["mirrorOf"], 2);
    entry(*submenu(moreMenu(3), "Зеркалировать на"), "Не зеркалировать")->trigger();
    EXPECT_EQ(stateOf(3)["mirrorOf"], 0);
}

TEST_F(DisplayCardTest, HiDPISessionShowsItsBadgeAndTheVirtualDisplaysModes) {
    QAction* toggle = entry(moreMenu(3), "HiDPI (чёткий Retina-режим)");
    EXPECT_FALSE(toggle->isChecked());
    toggle->trigger();
    settle(AppModel::kHiDPISecondRefresh + 0.5);

    EXPECT_EQ(badgesOf(card(3)), QStringList{"HiDPI"});
    EXPECT_EQ(panel().cards().size(), 3u) << "the backing virtual display gets no card";
    EXPECT_TRUE(entry(moreMenu(3), "HiDPI (чёткий Retina-режим)")->isChecked());
    const DisplayID backing = model->hidpi().virtualFor(3).value();
    const QStringList modes = entries(modeMenu(3));
    EXPECT_EQ(modes.front(), "HiDPI");
    EXPECT_TRUE(
        modes.contains("✓ " + QString::fromStdString(displays->currentMode(backing)->label())));
    EXPECT_EQ(modes.count(), static_cast<int>(displays->modes(backing).size()) + 1);
}

TEST_F(DisplayCardTest, ColourToggleUnfoldsControlsThatEditTheAdjustment) {
    ui::DisplayCard& c = card(3);
    ui::ColorControls* colour = c.colorControls();
    EXPECT_TRUE(colour->isHidden());
    c.colorToggle()->click();
    settle();
    EXPECT_EQ(model->expandedColor().get(), (std::set<DisplayID>{3}));
    EXPECT_FALSE(colour->isHidden());
    EXPECT_FALSE(colour->resetButton()->isEnabled()) << "nothing to reset yet";

    colour->row(ui::ColorControls::temperature)->slider()->setValue(750);  // -1…1
    colour->row(ui::ColorControls::gamma)->slider()->setValue(0);          // 0.5…2
    EXPECT_DOUBLE_EQ(model->color()->at(3).temperature, 0.5);
    EXPECT_DOUBLE_EQ(model->color()->at(3).gamma, 0.5);
    settle();
    EXPECT_EQ(colour->row(ui::ColorControls::temperature)->valueLabel()->text(), "+0.50");
    colour->resetButton()->click();
    EXPECT_TRUE(model->color()->at(3).isIdentity());
    settle();
    EXPECT_EQ(colour->row(ui::ColorControls::temperature)->slider()->value(), 500);

    c.colorToggle()->click();
    settle();
    EXPECT_TRUE(model->expandedColor()->empty());
    EXPECT_TRUE(colour->isHidden());
}

class DisplayCardWorldTest : public UiScenario {};

TEST_F(DisplayCardWorldTest, SilentDdcMeansSoftwareAndNoDisconnectMeansNoSwitchOff) {
    sim::World world = fixtureWorld("brokenDdc.json");
    world.disconnect = false;
    startOn(std::move(world));
    for (ui::DisplayCard* c : panel().cards())
        EXPECT_EQ(c->switchOffButton(), nullptr);
    ui::DisplayCard* silent = panel().card(2);  // DDC/CI switched off in its menu
    ASSERT_NE(silent, nullptr);
    EXPECT_NE(silent->softwareCaption(), nullptr);
    EXPECT_EQ(silent->contrastRow(), nullptr);
    Q_EMIT silent->moreMenu()->aboutToShow();
    EXPECT_EQ(submenu(*silent->moreMenu(), "Вход"), nullptr);
}

TEST_F(DisplayCardWorldTest, AMonitorThatListsItsCodesGetsOnlyThoseControls) {
    sim::World world = fixtureWorld("laptopAndExternal.json");
    world.displays[1].ddc->capabilities = "(prot(monitor)model(Lean)vcp(10 12 60(11 12 1B)))";
    startOn(std::move(world));
    ui::DisplayCard* lean = panel().card(2);
    ASSERT_NE(lean, nullptr);
    EXPECT_NE(lean->contrastRow(), nullptr);
    EXPECT_EQ(lean->volumeRow(), nullptr) << "no 62 in its list";
    Q_EMIT lean->moreMenu()->aboutToShow();
    EXPECT_EQ(submenu(*lean->moreMenu(), "Питание (DDC)"), nullptr) << "no D6 in its list";
    EXPECT_EQ(entries(*submenu(*lean->moreMenu(), "Вход")),
              (QStringList{"HDMI 1", "HDMI 2", "0x1b"}));
}

}  // namespace
}  // namespace lumora::test
