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
    void SetUp() override {
        start("laptopAndExternal.json");
        settle();
    }

    ui::DisplayCard& card(DisplayID id) {
        ui::DisplayCard* found = panel().card(id);
        EXPECT_NE(found, nullptr) << "no card for display " << id;
        if (!found) throw std::runtime_error("missing card");
        return *found;
    }

    static QString symbolOf(const ui::DisplayCard& c) {
        auto* icon = c.findChild<QLabel*>(QStringLiteral("displaySymbol"));
        return icon ? icon->property("symbol").toString() : QString();
    }

    QMenu& openModeMenu(DisplayID id) {
        QMenu* menu = card(id).modeMenu();
        Q_EMIT menu->aboutToShow();
        return *menu;
    }
    QMenu& openMoreMenu(DisplayID id) {
        QMenu* menu = card(id).moreMenu();
        Q_EMIT menu->aboutToShow();
        return *menu;
    }

    std::int64_t wireVcp(DisplayID id, const char* code) {
        return stateOf(id)["vcp"][code].get<std::int64_t>();
    }
};

TEST_F(DisplayCardTest, OneCardPerDisplayInListOrderWithNameSymbolAndBadges) {
    std::vector<DisplayID> ids;
    for (ui::DisplayCard* c : panel().cards())
        ids.push_back(c->displayID());
    EXPECT_EQ(ids, (std::vector<DisplayID>{1, 2, 3}));

    EXPECT_EQ(nameOf(card(1)), "Built-in Retina Display");
    EXPECT_EQ(nameOf(card(2)), "Office Monitor");
    EXPECT_EQ(nameOf(card(3)), "Projector");
    EXPECT_EQ(symbolOf(card(1)), "laptopcomputer");
    EXPECT_EQ(symbolOf(card(2)), "display");
    EXPECT_EQ(symbolOf(card(3)), "display");
    EXPECT_EQ(badgesOf(card(1)), QStringList{"главный"});
    EXPECT_EQ(badgesOf(card(2)), QStringList{});
    EXPECT_EQ(badgesOf(card(3)), QStringList{});
}

TEST_F(DisplayCardTest, ControlsFollowHowEachDisplayIsDriven) {
    // Built-in: the backlight slider only.
    EXPECT_NE(card(1).brightnessRow(), nullptr);
    EXPECT_EQ(card(1).contrastRow(), nullptr);
    EXPECT_EQ(card(1).volumeRow(), nullptr);
    EXPECT_EQ(card(1).softwareCaption(), nullptr);
    // DDC monitor: brightness, contrast and volume with their symbols, no caption.
    ASSERT_NE(card(2).contrastRow(), nullptr);
    ASSERT_NE(card(2).volumeRow(), nullptr);
    EXPECT_EQ(card(2).softwareCaption(), nullptr);
    const auto symbolIn = [](ui::SliderRow* row) {
        return row->findChild<QLabel*>(QStringLiteral("symbol"))->property("symbol").toString();
    };
    EXPECT_EQ(symbolIn(card(2).brightnessRow()), "sun.min");
    EXPECT_EQ(symbolIn(card(2).contrastRow()), "circle.lefthalf.filled");
    EXPECT_EQ(symbolIn(card(2).volumeRow()), "speaker.wave.2");
    // No DDC: software brightness with its caption.
    EXPECT_EQ(card(3).contrastRow(), nullptr);
    ASSERT_NE(card(3).softwareCaption(), nullptr);
    EXPECT_EQ(card(3).softwareCaption()->text(),
              "Яркость программно — монитор не отвечает по DDC (включите DDC/CI в его меню)");
    // Every online display offers the switch-off, the mode menu, the more menu and colour.
    for (DisplayID id : {1u, 2u, 3u}) {
        ASSERT_NE(card(id).switchOffButton(), nullptr);
        EXPECT_EQ(card(id).switchOffButton()->text(), "Отключить (без отсоединения кабеля)");
        EXPECT_EQ(card(id).modeButton()->text(), "Разрешение");
        EXPECT_NE(card(id).moreButton(), nullptr);
        EXPECT_EQ(card(id).colorToggle()->text(), "Цвет и затемнение");
    }
}

TEST_F(DisplayCardTest, SlidersStartAtTheModelsValues) {
    EXPECT_EQ(card(1).brightnessRow()->slider()->value(), 500);  // backlight 0.5
    EXPECT_EQ(card(2).brightnessRow()->slider()->value(), 500);  // 50 of 100
    EXPECT_EQ(card(2).contrastRow()->slider()->value(), 750);
    EXPECT_EQ(card(2).volumeRow()->slider()->value(), 300);
    EXPECT_EQ(card(3).brightnessRow()->slider()->value(), 1000);  // no colour stored: 1.0
}

TEST_F(DisplayCardTest, BuiltinSliderSetsTheBacklight) {
    card(1).brightnessRow()->slider()->setValue(300);
    EXPECT_DOUBLE_EQ(model->builtinBrightness().get(), 0.3);
    EXPECT_DOUBLE_EQ(stateOf(1)["backlight"].get<double>(), 0.3);
}

TEST_F(DisplayCardTest, DdcSlidersCacheAtOnceAndReachTheMonitorAfterTheDebounce) {
    card(2).brightnessRow()->slider()->setValue(700);
    EXPECT_DOUBLE_EQ(model->ddcValues()->at(2).at(0x10), 0.7);
    clock.advance(DdcControl::kDebounce / 2);
    EXPECT_EQ(wireVcp(2, "0x10"), 50);
    clock.advance(DdcControl::kDebounce);
    EXPECT_EQ(wireVcp(2, "0x10"), 70);

    card(2).contrastRow()->slider()->setValue(400);
    card(2).volumeRow()->slider()->setValue(90);
    clock.advance(0.5);
    EXPECT_EQ(wireVcp(2, "0x12"), 40);
    EXPECT_EQ(wireVcp(2, "0x62"), 9);
}

TEST_F(DisplayCardTest, SoftwareSliderDimsButNeverBelowTheFloor) {
    card(3).brightnessRow()->slider()->setValue(600);
    EXPECT_DOUBLE_EQ(model->color()->at(3).dim, 0.6);
    EXPECT_NE(stateOf(3)["gamma"], "identity");

    card(3).brightnessRow()->slider()->setValue(0);
    EXPECT_DOUBLE_EQ(model->color()->at(3).dim, 0.05);
    settle();
    // The slider follows the model to the floor.
    EXPECT_EQ(card(3).brightnessRow()->slider()->value(), 50);
}

TEST_F(DisplayCardTest, ModelChangesMoveControlsInPlaceButNotADraggedSlider) {
    ui::DisplayCard* before = panel().card(2);
    model->ddc().set(2, VCP::brightness, 0.25, 100);
    settle();
    EXPECT_EQ(panel().card(2), before);
    EXPECT_EQ(before->brightnessRow()->slider()->value(), 250);

    QSlider* slider = before->brightnessRow()->slider();
    slider->setSliderDown(true);
    model->ddc().set(2, VCP::brightness, 0.9, 100);
    settle();
    EXPECT_EQ(slider->value(), 250);
    slider->setSliderDown(false);
    model->ddc().set(2, VCP::brightness, 0.8, 100);
    settle();
    EXPECT_EQ(slider->value(), 800);
    EXPECT_EQ(panel().card(2), before);
}

TEST_F(DisplayCardTest, SwitchingADisplayOffAndBackRebuildsItsCard) {
    card(3).switchOffButton()->click();
    settle(1);
    EXPECT_FALSE(stateOf(3)["enabled"].get<bool>());
    ui::DisplayCard& off = card(3);
    EXPECT_EQ(nameOf(off), "Projector");
    EXPECT_EQ(badgesOf(off), QStringList{"отключён"});
    ASSERT_NE(off.switchOffButton(), nullptr);
    EXPECT_EQ(off.switchOffButton()->text(), "Подключить");
    EXPECT_EQ(off.brightnessRow(), nullptr);
    EXPECT_EQ(off.modeButton(), nullptr);
    EXPECT_EQ(off.colorToggle(), nullptr);

    off.switchOffButton()->click();
    settle(1);
    EXPECT_TRUE(stateOf(3)["enabled"].get<bool>());
    EXPECT_EQ(badgesOf(card(3)), QStringList{});
    EXPECT_EQ(card(3).switchOffButton()->text(), "Отключить (без отсоединения кабеля)");
    EXPECT_NE(card(3).brightnessRow(), nullptr);
}

TEST_F(DisplayCardTest, ModeMenuListsHiDPIAndPlainModesAndMarksTheCurrentOne) {
    EXPECT_EQ(entries(openModeMenu(2)),
              (QStringList{"HiDPI", "1280×720 HiDPI · 60 Hz", "Обычные", "✓ 2560×1440 · 60 Hz",
                           "2560×1440 · 60 Hz", "1920×1080 · 60 Hz"}))
        << "59.94 Hz is labelled 60 Hz like the 60 Hz mode beside it";
    EXPECT_EQ(entries(openModeMenu(3)),
              (QStringList{"Обычные", "✓ 1920×1080 · 60 Hz", "1280×720 · 60 Hz"}));

    entry(openModeMenu(3), "1280×720 · 60 Hz")->trigger();
    EXPECT_EQ(stateOf(3)["mode"], 31);
    EXPECT_EQ(entries(openModeMenu(3)),
              (QStringList{"Обычные", "1920×1080 · 60 Hz", "✓ 1280×720 · 60 Hz"}));
}

TEST_F(DisplayCardTest, MoreMenuHoldsTheCommandsInOrderAndDdcOnlyForDdcMonitors) {
    QMenu& ddc = openMoreMenu(2);
    EXPECT_EQ(entries(ddc),
              (QStringList{"HiDPI (чёткий Retina-режим)", "Сделать главным", "Зеркалировать на",
                           "Вход (DDC)", "Питание (DDC)", "ID 2 · вендор 4268 · модель 41234"}));
    EXPECT_EQ(entries(*submenu(ddc, "Зеркалировать на")),
              (QStringList{"Built-in Retina Display", "Projector", "Не зеркалировать"}));
    EXPECT_EQ(entries(*submenu(ddc, "Вход (DDC)")),
              (QStringList{"DisplayPort 1", "DisplayPort 2", "HDMI 1", "HDMI 2", "USB-C", "DVI 1",
                           "VGA 1"}));
    EXPECT_EQ(entries(*submenu(ddc, "Питание (DDC)")), (QStringList{"Включить", "Режим ожидания"}));
    EXPECT_FALSE(entry(ddc, "ID 2 · вендор 4268 · модель 41234")->isEnabled());

    EXPECT_EQ(entries(openMoreMenu(3)),
              (QStringList{"HiDPI (чёткий Retina-режим)", "Сделать главным", "Зеркалировать на",
                           "ID 3 · вендор 9999 · модель 7"}));
}

TEST_F(DisplayCardTest, DdcSubmenusSendRawValues) {
    QMenu& more = openMoreMenu(2);
    entry(*submenu(more, "Вход (DDC)"), "HDMI 1")->trigger();
    entry(*submenu(more, "Питание (DDC)"), "Режим ожидания")->trigger();
    clock.advance(0.5);
    EXPECT_TRUE(wasLogged("DDC display 2: VCP 0x60 = 17"));
    EXPECT_TRUE(wasLogged("DDC display 2: VCP 0xd6 = 4"));
    EXPECT_EQ(wireVcp(2, "0x60"), 0x11);
    EXPECT_EQ(wireVcp(2, "0xd6"), 4);
}

TEST_F(DisplayCardTest, MakeMainAndMirrorReconfigureAndRefresh) {
    entry(openMoreMenu(2), "Сделать главным")->trigger();
    settle();
    EXPECT_TRUE(stateOf(2)["main"].get<bool>());
    EXPECT_EQ(badgesOf(card(2)), QStringList{"главный"});
    EXPECT_EQ(badgesOf(card(1)), QStringList{});

    entry(*submenu(openMoreMenu(3), "Зеркалировать на"), "Office Monitor")->trigger();
    EXPECT_EQ(stateOf(3)["mirrorOf"], 2);
    entry(*submenu(openMoreMenu(3), "Зеркалировать на"), "Не зеркалировать")->trigger();
    EXPECT_EQ(stateOf(3)["mirrorOf"], 0);
}

TEST_F(DisplayCardTest, HiDPISessionShowsItsBadgeAndTheVirtualDisplaysModes) {
    QAction* toggle = entry(openMoreMenu(3), "HiDPI (чёткий Retina-режим)");
    ASSERT_TRUE(toggle->isCheckable());
    EXPECT_FALSE(toggle->isChecked());
    toggle->trigger();
    settle(AppModel::kHiDPISecondRefresh + 0.5);

    ASSERT_TRUE(model->hidpiOn()->contains(3));
    EXPECT_EQ(badgesOf(card(3)), QStringList{"HiDPI"});
    EXPECT_EQ(panel().cards().size(), 3u) << "the backing virtual display gets no card";
    EXPECT_TRUE(entry(openMoreMenu(3), "HiDPI (чёткий Retina-режим)")->isChecked());

    const DisplayID backing = model->hidpi().virtualFor(3).value();
    const QStringList modes = entries(openModeMenu(3));
    ASSERT_FALSE(modes.isEmpty());
    EXPECT_EQ(modes.front(), "HiDPI");
    const auto current = displays->currentMode(backing);
    ASSERT_TRUE(current.has_value());
    EXPECT_TRUE(modes.contains("✓ " + QString::fromStdString(current->label())));
    EXPECT_EQ(modes.count(), static_cast<int>(displays->modes(backing).size()) + 1);
}

TEST_F(DisplayCardTest, ColourTogglesUnfoldControlsThatEditTheAdjustment) {
    ui::DisplayCard& c = card(3);
    EXPECT_TRUE(c.colorControls()->isHidden());
    c.colorToggle()->click();
    settle();
    EXPECT_EQ(model->expandedColor().get(), (std::set<DisplayID>{3}));
    EXPECT_FALSE(c.colorControls()->isHidden());
    EXPECT_TRUE(c.colorToggle()->isChecked());

    ui::ColorControls* colour = c.colorControls();
    EXPECT_FALSE(colour->resetButton()->isEnabled()) << "nothing to reset yet";
    colour->row(ui::ColorControls::temperature)->slider()->setValue(750);  // -1…1
    colour->row(ui::ColorControls::gamma)->slider()->setValue(0);          // 0.5…2
    EXPECT_DOUBLE_EQ(model->color()->at(3).temperature, 0.5);
    EXPECT_DOUBLE_EQ(model->color()->at(3).gamma, 0.5);
    settle();
    EXPECT_EQ(colour->row(ui::ColorControls::temperature)->valueLabel()->text(), "+0.50");
    EXPECT_EQ(colour->row(ui::ColorControls::dim)->valueLabel()->text(), "100 %");
    EXPECT_TRUE(colour->resetButton()->isEnabled());

    colour->resetButton()->click();
    EXPECT_TRUE(model->color()->at(3).isIdentity());
    settle();
    EXPECT_EQ(colour->row(ui::ColorControls::temperature)->slider()->value(), 500);

    c.colorToggle()->click();
    settle();
    EXPECT_TRUE(model->expandedColor()->empty());
    EXPECT_TRUE(c.colorControls()->isHidden());
}

TEST_F(DisplayCardTest, DimRowOfTheColourControlsSharesTheBrightnessFloor) {
    card(3).colorToggle()->click();
    settle();
    card(3).colorControls()->row(ui::ColorControls::dim)->slider()->setValue(0);
    EXPECT_DOUBLE_EQ(model->color()->at(3).dim, 0.05);
}

class DisplayCardWorldTest : public UiScenario {};

TEST_F(DisplayCardWorldTest, NoSwitchOffButtonWhereDisplaysCannotBeSwitchedOff) {
    sim::World world = fixtureWorld("laptopAndExternal.json");
    world.disconnect = false;
    boot(std::move(world));
    model->start();
    settle(kSettle);
    for (ui::DisplayCard* c : panel().cards())
        EXPECT_EQ(c->switchOffButton(), nullptr);
}

TEST_F(DisplayCardWorldTest, MonitorWhoseDdcIsSwitchedOffIsDimmedInSoftware) {
    start("brokenDdc.json");
    settle();
    ui::DisplayCard* silent = panel().card(2);
    ASSERT_NE(silent, nullptr);
    EXPECT_NE(silent->softwareCaption(), nullptr);
    EXPECT_EQ(silent->contrastRow(), nullptr);
    Q_EMIT silent->moreMenu()->aboutToShow();
    EXPECT_EQ(submenu(*silent->moreMenu(), "Вход (DDC)"), nullptr);
}

TEST_F(DisplayCardWorldTest, BuiltinPanelSwitchedOffByTheClosedLidSaysSo) {
    start("laptopAndExternal.json");
    machine->setLidAngle(0);
    settle(5);
    ASSERT_EQ(model->lidMode().get(), LidMode::closedExternal);
    ui::DisplayCard* builtin = panel().card(1);
    ASSERT_NE(builtin, nullptr);
    ASSERT_FALSE(builtin->shape().display.isOnline);
    auto* status = builtin->findChild<QLabel*>(QStringLiteral("status"));
    ASSERT_NE(status, nullptr);
    EXPECT_EQ(status->text(), "Выключен: крышка закрыта");
    EXPECT_FALSE(badgesOf(*builtin).contains("отключён"));
    EXPECT_EQ(builtin->switchOffButton(), nullptr);
    EXPECT_EQ(builtin->brightnessRow(), nullptr);
}

}  // namespace
}  // namespace lumora::test
