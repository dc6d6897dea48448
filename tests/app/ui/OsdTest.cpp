// The on-screen display: its geometry, what it shows, where it goes and when it leaves; and
// the bundled symbols it and the panel draw.
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

TEST(OsdGeometry, FrameTextAndSegments) {
    // Centred on its screen, its bottom 14 % of the height above the screen's bottom:
    // 100 + 1440 - 201.6 - 64.
    EXPECT_EQ(ui::osdFrame(QRect(1512, 100, 2560, 1440)), QRect(2682, 1274, 220, 64));

    // Level, text (none where only the bar is of interest), lit segments.
    const std::tuple<double, const char*, int> levels[] = {
        {0, "0 %", 0},    {0.0625, "6 %", 1}, {0.5, "50 %", 8},   {0.515625, "52 %", 8},
        {1, "100 %", 16}, {1.7, nullptr, 16}, {-0.2, nullptr, 0}, {std::nan(""), nullptr, 0}};
    for (const auto& [level, text, segments] : levels) {
        if (text) {
            EXPECT_EQ(ui::osdText(level, std::nullopt), text) << level;
        }
        EXPECT_EQ(ui::osdSegments(level), segments) << level;
    }
    EXPECT_EQ(ui::osdText(0, std::string("1×")), "1×");
}

TEST_F(OsdTest, ShowsOnTheDisplaysScreenUpdatesInPlaceAndFallsBackToThePrimary) {
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
    const auto flags =
        Qt::WindowTransparentForInput | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus;
    EXPECT_EQ(panel->windowFlags() & flags, flags);

    osd.show(77, 1, "textformat.size", std::string("HiDPI"));
    EXPECT_EQ(osd.panel(), panel) << "one panel, reused";
    EXPECT_EQ(panel->geometry(), ui::osdFrame(QGuiApplication::primaryScreen()->geometry()));
    EXPECT_EQ(osd.text(), "HiDPI");
    EXPECT_EQ(asked, (std::vector<DisplayID>{2, 77}));

    // Frames from the display server: an unknown display gets the main display's screen.
    sim::VirtualScheduler clock;
    sim::SimMachine machine(fixtureWorld("laptopAndExternal.json"), clock);
    const ui::QtOsd::ScreenFrame frames = ui::QtOsd::framesOf(machine.displayServer());
    EXPECT_EQ(frames(2), QRect(1512, 0, 2560, 1440));
    EXPECT_EQ(frames(999), QRect(0, 0, 1512, 982));
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

TEST_F(OsdTest, EveryNamedSymbolIsBundledAndTakesTheTint) {
    for (const char* name :
         {"display", "laptopcomputer", "laptopcomputer.slash", "rectangle.dashed", "sun.min",
          "sun.min.fill", "sun.max.fill", "moon.fill", "textformat.size", "circle.lefthalf.filled",
          "speaker.wave.2", "ellipsis.circle", "trash", "plus"}) {
        const QPixmap pixmap = ui::symbolPixmap(name, QSize(24, 24), Qt::black);
        EXPECT_EQ(pixmap.size(), QSize(48, 48)) << name;
        EXPECT_EQ(pixmap.deviceIndependentSize(), QSizeF(24, 24)) << name;
    }
    for (const char* unknown : {"no.such.symbol", "", "../symbols/trash"}) {
        EXPECT_FALSE(ui::hasSymbol(unknown)) << unknown;
        EXPECT_TRUE(ui::symbolPixmap(unknown, QSize(24, 24), Qt::black).isNull()) << unknown;
    }

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
