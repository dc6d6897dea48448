// The on-screen display: its fixed geometry, what it shows, where it goes and when it leaves;
// and the bundled symbols it and the panel draw.
#include <QGuiApplication>
#include <QImage>
#include <QScreen>
#include <QTest>

#include "UiScenario.h"
#include "ui/OsdGeometry.h"
#include "ui/QtOsd.h"
#include "ui/Symbols.h"

namespace lumora::test {
namespace {

class OsdTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { (void)qtApp(); }
};

TEST_F(OsdTest, LayoutIsDrawnUpFromTheBottomLeft) {
    EXPECT_EQ(ui::osd::symbolRect(), QRect(14, 20, 24, 24));  // 64 - 20 - 24 = 20 from the top
    EXPECT_EQ(ui::osd::barRect(), QRect(48, 26, 120, 12));
    EXPECT_EQ(ui::osd::labelRect(), QRect(170, 23, 44, 18));
    EXPECT_EQ(ui::osd::fromBottomLeft(0, 0, 10, 4), QRect(0, 60, 10, 4));
}

TEST_F(OsdTest, FrameIsCentredWithItsBottom14PercentAboveTheScreensBottom) {
    // 1512 wide: centre 756; bottom edge at 982 - 137.48, top 64 above it.
    EXPECT_EQ(ui::osdFrame(QRect(0, 0, 1512, 982)), QRect(646, 781, 220, 64));
    // A screen to the right and lower down, in global coordinates.
    EXPECT_EQ(ui::osdFrame(QRect(1512, 100, 2560, 1440)), QRect(2682, 1274, 220, 64));
    const QRect frame = ui::osdFrame(QRect(0, 0, 1000, 1000));
    EXPECT_EQ(frame.y() + frame.height(), 1000 - 140);
}

TEST_F(OsdTest, TextIsTheGivenWordOrTheRoundedPercentage) {
    EXPECT_EQ(ui::osdText(0.5, std::nullopt), "50 %");
    EXPECT_EQ(ui::osdText(0, std::nullopt), "0 %");
    EXPECT_EQ(ui::osdText(1, std::nullopt), "100 %");
    EXPECT_EQ(ui::osdText(0.0625, std::nullopt), "6 %");
    EXPECT_EQ(ui::osdText(0.515625, std::nullopt), "52 %");
    EXPECT_EQ(ui::osdText(1, std::string("HiDPI")), "HiDPI");
    EXPECT_EQ(ui::osdText(0, std::string("1×")), "1×");
}

TEST_F(OsdTest, BarLightsSixteenSegmentsAtMost) {
    EXPECT_EQ(ui::osdSegments(0), 0);
    EXPECT_EQ(ui::osdSegments(0.5), 8);
    EXPECT_EQ(ui::osdSegments(1), 16);
    EXPECT_EQ(ui::osdSegments(0.0625), 1);
    EXPECT_EQ(ui::osdSegments(1.7), 16);
    EXPECT_EQ(ui::osdSegments(-0.2), 0);
    EXPECT_EQ(ui::osdSegments(std::nan("")), 0);
}

TEST_F(OsdTest, ShowsOnTheDisplaysScreenAndUpdatesInPlace) {
    std::vector<DisplayID> asked;
    ui::QtOsd osd([&asked](DisplayID id) -> std::optional<QRect> {
        asked.push_back(id);
        if (id == 2) return QRect(1512, 0, 2560, 1440);
        return std::nullopt;
    });
    EXPECT_EQ(osd.panel(), nullptr);

    osd.show(2, 0.5, "sun.max.fill", std::nullopt);
    QWidget* panel = osd.panel();
    ASSERT_NE(panel, nullptr);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_EQ(panel->geometry(), ui::osdFrame(QRect(1512, 0, 2560, 1440)));
    EXPECT_EQ(osd.text(), "50 %");
    EXPECT_EQ(osd.segments(), 8);
    EXPECT_EQ(osd.symbol(), "sun.max.fill");
    EXPECT_TRUE(panel->windowFlags() & Qt::WindowTransparentForInput);
    EXPECT_TRUE(panel->windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_TRUE(panel->windowFlags() & Qt::WindowDoesNotAcceptFocus);

    osd.show(2, 1, "textformat.size", std::string("HiDPI"));
    EXPECT_EQ(osd.panel(), panel) << "one panel, reused";
    EXPECT_EQ(osd.text(), "HiDPI");
    EXPECT_EQ(osd.segments(), 16);
    EXPECT_EQ(osd.symbol(), "textformat.size");
    EXPECT_EQ(asked, (std::vector<DisplayID>{2, 2}));
}

TEST_F(OsdTest, DisplayWithoutAScreenUsesThePrimaryScreen) {
    ui::QtOsd osd([](DisplayID) { return std::nullopt; });
    osd.show(77, 0, "moon.fill", std::nullopt);
    ASSERT_NE(osd.panel(), nullptr);
    EXPECT_EQ(osd.panel()->geometry(), ui::osdFrame(QGuiApplication::primaryScreen()->geometry()));
    EXPECT_EQ(osd.text(), "0 %");
    EXPECT_EQ(osd.segments(), 0);
}

TEST_F(OsdTest, FramesOfTheDisplayServerFallBackToTheMainDisplay) {
    sim::VirtualScheduler clock;
    sim::SimMachine machine(fixtureWorld("laptopAndExternal.json"), clock);
    const ui::QtOsd::ScreenFrame frames = ui::QtOsd::framesOf(machine.displayServer());
    EXPECT_EQ(frames(2), QRect(1512, 0, 2560, 1440));
    EXPECT_EQ(frames(999), QRect(0, 0, 1512, 982)) << "the main display's screen";
}

TEST_F(OsdTest, FadesAfterTheLastShowAndComesBackAtOnce) {
    ui::QtOsd osd([](DisplayID) { return QRect(0, 0, 800, 600); }, {/*hideAfterMs=*/150,
                                                                    /*fadeMs=*/50});
    osd.show(1, 0.3, "sun.min.fill", std::nullopt);
    QWidget* panel = osd.panel();
    QTest::qWait(100);
    osd.show(1, 0.4, "sun.min.fill", std::nullopt);  // restarts the wait
    QTest::qWait(100);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_DOUBLE_EQ(panel->windowOpacity(), 1.0);
    EXPECT_TRUE(QTest::qWaitFor([panel] { return !panel->isVisible(); }, 2000));

    osd.show(1, 0.5, "sun.max.fill", std::nullopt);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_DOUBLE_EQ(panel->windowOpacity(), 1.0);
}

TEST_F(OsdTest, EverySymbolTheInterfaceNamesIsBundled) {
    for (const char* name :
         {"display", "laptopcomputer", "laptopcomputer.slash", "rectangle.dashed", "sun.min",
          "sun.min.fill", "sun.max.fill", "moon.fill", "textformat.size", "circle.lefthalf.filled",
          "speaker.wave.2", "ellipsis.circle", "trash", "plus"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(ui::hasSymbol(name));
        EXPECT_FALSE(ui::symbolIcon(name, Qt::black).isNull());
        const QPixmap pixmap = ui::symbolPixmap(name, QSize(24, 24), Qt::black);
        EXPECT_EQ(pixmap.size(), QSize(48, 48));
        EXPECT_EQ(pixmap.deviceIndependentSize(), QSizeF(24, 24));
    }
}

TEST_F(OsdTest, UnknownSymbolGivesNothing) {
    EXPECT_FALSE(ui::hasSymbol("no.such.symbol"));
    EXPECT_FALSE(ui::hasSymbol(""));
    EXPECT_FALSE(ui::hasSymbol("../symbols/trash"));
    EXPECT_TRUE(ui::symbolIcon("no.such.symbol", Qt::black).isNull());
    EXPECT_TRUE(ui::symbolPixmap("no.such.symbol", QSize(24, 24), Qt::black).isNull());
}

TEST_F(OsdTest, SymbolsTakeTheTintAndKeepTheirShape) {
    const QColor tint(200, 40, 10);
    const QImage image = ui::symbolPixmap("moon.fill", QSize(24, 24), tint, 1.0)
                             .toImage()
                             .convertToFormat(QImage::Format_ARGB32);
    int painted = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (pixel.alpha() < 255) continue;
            ++painted;
            EXPECT_EQ(pixel.rgb(), tint.rgb()) << "at " << x << "," << y;
        }
    }
    EXPECT_GT(painted, 60) << "the crescent covers a good part of the grid";
    EXPECT_EQ(image.pixelColor(23, 0).alpha(), 0) << "the corner stays clear";
}

}  // namespace
}  // namespace lumora::test
