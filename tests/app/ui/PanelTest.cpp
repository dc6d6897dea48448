// The menu panel as a whole: header and lid text, the fits-or-scrolls rule, the footer, and a
// rendering of the default world for review.
#include <QPushButton>
#include <QScrollArea>

#include "UiScenario.h"
#include "ui/KeysSection.h"
#include "ui/LidSection.h"
#include "ui/Render.h"
#include "ui/VirtualSection.h"

namespace lumora::test {
namespace {

class PanelTest : public UiScenario {};

// A world of the default laptop and `extra` more monitors without DDC.
sim::World withMonitors(int extra) {
    sim::World world = fixtureWorld("laptopAndExternal.json");
    const sim::WorldDisplay projector = world.displays.back();
    for (int i = 0; i < extra; ++i) {
        sim::WorldDisplay more = projector;
        more.id = static_cast<DisplayID>(10 + i);
        more.name = "Monitor " + std::to_string(i + 1);
        more.serial = static_cast<std::uint32_t>(100 + i);
        more.origin.reset();
        for (auto& mode : more.modes)
            mode.id += 100 * (i + 1);
        more.mode.reset();
        world.displays.push_back(more);
    }
    return world;
}

TEST_F(PanelTest, HeaderShowsTheLidStateWithItsSymbol) {
    sim::World world = fixtureWorld("laptopAndExternal.json");
    world.lid = sim::WorldLid{true, true, 112};
    boot(std::move(world));
    model->start();
    settle(kSettle);
    ASSERT_EQ(model->lidMode().get(), LidMode::open);
    EXPECT_EQ(panel().lidLabel()->text(), "Крышка открыта · 112°");
    EXPECT_EQ(panel().lidSymbolName(), "laptopcomputer");
    EXPECT_EQ(panel().findChild<QLabel*>(QStringLiteral("title"))->text(), "Lumora");

    machine->setLidAngle(3);
    settle(5);
    ASSERT_EQ(model->lidMode().get(), LidMode::closedExternal);
    EXPECT_EQ(panel().lidLabel()->text(), "Закрыта, внешний монитор · 3°");
    EXPECT_EQ(panel().lidSymbolName(), "laptopcomputer.slash");
}

TEST_F(PanelTest, UnknownLidReadsAsQuestionWithTheCrossedOutSymbol) {
    // Before the model starts, nothing is known about the lid.
    boot(fixtureWorld("laptopAndExternal.json"));
    settle();
    ASSERT_EQ(model->lidMode().get(), LidMode::unknown);
    EXPECT_EQ(panel().lidLabel()->text(), "Крышка: ?");
    EXPECT_EQ(panel().lidSymbolName(), "laptopcomputer.slash");
}

TEST_F(PanelTest, LidTextRules) {
    EXPECT_EQ(ui::lidText(LidMode::unknown, 40), "Крышка: ?");
    EXPECT_EQ(ui::lidText(LidMode::open, std::nullopt), "Крышка открыта");
    EXPECT_EQ(ui::lidText(LidMode::open, 112), "Крышка открыта · 112°");
    EXPECT_EQ(ui::lidText(LidMode::closedExternal, 0), "Закрыта, внешний монитор · 0°");
    EXPECT_EQ(ui::lidText(LidMode::closedAlone, 2), "Закрыта · 2°");
    EXPECT_EQ(ui::lidText(LidMode::closedAlone, std::nullopt), "Закрыта");
}

TEST_F(PanelTest, SectionsFollowTheCardsInOrder) {
    start("laptopAndExternal.json");
    settle();
    const QWidget* sections = panel().findChild<QWidget*>(QStringLiteral("sections"));
    ASSERT_NE(sections, nullptr);
    QLayout* layout = sections->layout();
    ASSERT_EQ(layout->count(), 6);
    for (int i = 0; i < 3; ++i) {
        EXPECT_NE(dynamic_cast<ui::DisplayCard*>(layout->itemAt(i)->widget()), nullptr);
    }
    EXPECT_EQ(layout->itemAt(3)->widget(), panel().virtualSection());
    EXPECT_EQ(layout->itemAt(4)->widget(), panel().keysSection());
    EXPECT_EQ(layout->itemAt(5)->widget(), panel().lidSection());
    EXPECT_EQ(layout->spacing(), 10);
    EXPECT_EQ(panel().width(), 380);
}

TEST_F(PanelTest, SectionsThatFitAreShownPlainly) {
    start("laptopAndExternal.json");
    settle();
    panel().setAvailableHeight(kTallScreen);
    EXPECT_FALSE(panel().scrolling());
    EXPECT_EQ(panel().findChild<QScrollArea*>(), nullptr);
}

TEST_F(PanelTest, SectionsThatDoNotFitScrollWithinTheLimit) {
    boot(withMonitors(8));
    model->start();
    settle(kSettle);
    ASSERT_EQ(panel().cards().size(), 11u);
    ASSERT_TRUE(panel().scrolling());
    QScrollArea* scroll = panel().scrollArea();
    EXPECT_EQ(scroll->height(), ui::MenuPanel::kMaxSectionsHeight);
    EXPECT_EQ(scroll->widget(), panel().findChild<QWidget*>(QStringLiteral("sections")));
    panel().adjustSize();
    EXPECT_LE(panel().height(), ui::MenuPanel::kMaxSectionsHeight + 120);

    // Fewer displays: the same panel goes back to the plain stack.
    for (int i = 0; i < 8; ++i)
        machine->setOnline(static_cast<DisplayID>(10 + i), false);
    settle(1);
    ASSERT_EQ(panel().cards().size(), 3u);
    EXPECT_FALSE(panel().scrolling());
    EXPECT_EQ(panel().findChild<QScrollArea*>(), nullptr);
}

TEST_F(PanelTest, AShortScreenMakesEvenFewSectionsScroll) {
    start("laptopAndExternal.json");
    settle();
    panel().setAvailableHeight(700);
    ASSERT_TRUE(panel().scrolling());
    EXPECT_LE(panel().scrollArea()->height(), ui::MenuPanel::kMaxSectionsHeight);
}

TEST_F(PanelTest, FooterButtonsOpenTheLogAndQuit) {
    start("laptopAndExternal.json");
    settle();
    EXPECT_EQ(panel().logButton()->text(), "Лог");
    EXPECT_EQ(panel().refreshButton()->text(), "Обновить");
    EXPECT_EQ(panel().quitButton()->text(), "Выйти");

    panel().logButton()->click();
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened[0],
              QUrl::fromLocalFile(QString::fromStdString((dir / "Lumora.log").string())));
    EXPECT_EQ(quits, 0);
    panel().quitButton()->click();
    EXPECT_EQ(quits, 1);
}

TEST_F(PanelTest, RefreshButtonRereadsTheDisplaysAndRescansDdc) {
    // Hardware events do not reach the model here, so only the button can tell it.
    start("laptopAndExternal.json", /*events=*/true);
    settle();
    ASSERT_EQ(panel().cards().size(), 3u);
    machine->setOnline(3, false);
    settle(1);
    EXPECT_EQ(panel().cards().size(), 3u);

    const auto rescans = [this] {
        auto lines = logged();
        return std::count(lines.begin(), lines.end(),
                          "DDC: 1 external display(s) with a DDC channel, 1 answering");
    };
    const auto before = rescans();
    panel().refreshButton()->click();
    settle(1);
    EXPECT_EQ(panel().cards().size(), 2u);
    EXPECT_EQ(panel().card(3), nullptr);
    EXPECT_EQ(rescans(), before + 1);
}

TEST_F(PanelTest, RendersTheDefaultWorldToPng) {
    start("laptopAndExternal.json");
    settle();
    const char* keep = std::getenv("LUMORA_UI_SCREENSHOT");
    const std::filesystem::path file = keep ? std::filesystem::path(keep) : dir / "panel.png";
    panel().card(3)->colorToggle()->click();
    settle();
    ASSERT_TRUE(ui::renderToPng(panel(), QString::fromStdString(file.string())));
    QImage image(QString::fromStdString(file.string()));
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.width(), 2 * 380);
    EXPECT_EQ(panel().height(), panel().heightForWidth(380)) << "wrapped texts get their lines";
    EXPECT_EQ(image.height(), 2 * panel().height());
}

}  // namespace
}  // namespace lumora::test
