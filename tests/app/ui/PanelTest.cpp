// The menu panel as a whole: header and lid text, the fits-or-scrolls rule, the footer, and a
// rendering of the default world for review.
#include <QPushButton>
#include <QScrollArea>

#include "UiScenario.h"
#include "ui/AdaptiveSection.h"
#include "ui/KeysSection.h"
#include "ui/LidSection.h"
#include "ui/Render.h"
#include "ui/VirtualSection.h"

namespace lumora::test {
namespace {

class PanelTest : public UiScenario {};

// Without an angle sensor the header names the mode alone.
TEST(LidText, ModeAloneWithoutAnAngle) {
    EXPECT_EQ(ui::lidText(LidMode::closedAlone, std::nullopt), "Закрыта");
}

TEST_F(PanelTest, HeaderAndBuiltinCardFollowTheLid) {
    boot(fixtureWorld("laptopAndExternal.json"));
    settle();
    EXPECT_EQ(panel().lidLabel()->text(), "Крышка: ?") << "before the model starts";
    EXPECT_EQ(panel().lidSymbolName(), "laptopcomputer.slash");
    model->start();
    settle(kSettle);
    EXPECT_EQ(panel().lidLabel()->text(), "Крышка открыта · 110°");
    EXPECT_EQ(panel().lidSymbolName(), "laptopcomputer");

    machine->setLidAngle(3);
    settle(5);
    ASSERT_EQ(model->lidMode().get(), LidMode::closedExternal);
    EXPECT_EQ(panel().lidLabel()->text(), "Закрыта, внешний монитор · 3°");
    EXPECT_EQ(panel().lidSymbolName(), "laptopcomputer.slash");
    // The built-in panel's card says why it is off, and offers nothing to change.
    ui::DisplayCard* builtin = panel().card(1);
    ASSERT_NE(builtin, nullptr);
    EXPECT_EQ(builtin->findChild<QLabel*>(QStringLiteral("status"))->text(),
              "Выключен: крышка закрыта");
    EXPECT_FALSE(badgesOf(*builtin).contains("отключён"));
    EXPECT_EQ(builtin->switchOffButton(), nullptr);
    EXPECT_EQ(builtin->brightnessRow(), nullptr);
}

TEST_F(PanelTest, SectionsFollowTheCardsInOrderAndScrollOnlyWhenTheyDoNotFit) {
    startOn();
    QLayout* layout = panel().findChild<QWidget*>(QStringLiteral("sections"))->layout();
    ASSERT_EQ(layout->count(), 7);
    for (int i = 0; i < 3; ++i)
        EXPECT_NE(dynamic_cast<ui::DisplayCard*>(layout->itemAt(i)->widget()), nullptr);
    EXPECT_EQ(layout->itemAt(3)->widget(), panel().virtualSection());
    EXPECT_EQ(layout->itemAt(4)->widget(), panel().adaptiveSection());
    EXPECT_EQ(layout->itemAt(5)->widget(), panel().keysSection());
    EXPECT_EQ(layout->itemAt(6)->widget(), panel().lidSection());
    EXPECT_FALSE(panel().scrolling());
    EXPECT_EQ(panel().findChild<QScrollArea*>(), nullptr);

    // A short screen makes even a few sections scroll, never taller than the limit; a tall one
    // gives the plain stack back.
    panel().setAvailableHeight(700);
    ASSERT_TRUE(panel().scrolling());
    EXPECT_EQ(panel().scrollArea()->height(), ui::MenuPanel::kMaxSectionsHeight);
    panel().setAvailableHeight(kTallScreen);
    EXPECT_FALSE(panel().scrolling());
    EXPECT_EQ(panel().findChild<QScrollArea*>(), nullptr);
}

TEST_F(PanelTest, FooterOpensTheLogQuitsAndRefreshes) {
    // Hardware events do not reach the model here, so only the button can tell it.
    startOn(fixtureWorld("laptopAndExternal.json"), /*events=*/true);
    panel().logButton()->click();
    EXPECT_EQ(opened, std::vector<QUrl>{QUrl::fromLocalFile(
                          QString::fromStdString((dir / "Lumora.log").string()))});
    EXPECT_EQ(quits, 0);
    panel().quitButton()->click();
    EXPECT_EQ(quits, 1);

    machine->setOnline(3, false);
    settle(1);
    EXPECT_EQ(panel().cards().size(), 3u);
    const auto rescans = [this] {
        auto lines = logged();
        return std::count_if(lines.begin(), lines.end(),
                             [](const std::string& l) { return l.starts_with("DDC: "); });
    };
    const auto before = rescans();
    panel().refreshButton()->click();
    settle(1);
    EXPECT_EQ(panel().cards().size(), 2u);
    EXPECT_EQ(panel().card(3), nullptr);
    EXPECT_EQ(rescans(), before + 1);
}

TEST_F(PanelTest, RendersTheDefaultWorldToPng) {
    startOn();
    const char* keep = std::getenv("LUMORA_UI_SCREENSHOT");
    const std::filesystem::path file = keep ? std::filesystem::path(keep) : dir / "panel.png";
    panel().card(3)->colorToggle()->click();
    settle();
    ASSERT_TRUE(ui::renderToPng(panel(), QString::fromStdString(file.string())));
    QImage image(QString::fromStdString(file.string()));
    EXPECT_EQ(image.width(), 2 * 380);
    EXPECT_EQ(panel().height(), panel().heightForWidth(380)) << "wrapped texts get their lines";
    EXPECT_EQ(image.height(), 2 * panel().height());
}

}  // namespace
}  // namespace lumora::test
