#include "QtOsd.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPropertyAnimation>
#include <QScreen>
#include <QTimer>
#include <QWidget>

#include "OsdGeometry.h"
#include "Symbols.h"
#include "UiStyle.h"

namespace lumora::ui {

namespace {

// The heads-up material: near-black, slightly see-through.
const QColor kBackground(28, 28, 30, 218);
const QColor kForeground(255, 255, 255, 235);
const QColor kSegmentOff(255, 255, 255, 60);
constexpr double kSegmentGap = 2.0;
constexpr double kSegmentRadius = 1.5;
constexpr int kTextPixels = 12;

QRect toQRect(const Rect& rect) {
    return QRectF(rect.origin.x, rect.origin.y, rect.size.width, rect.size.height).toRect();
}

}  // namespace

// The panel itself: everything is painted, so it needs no child widgets.
class OsdPanel : public QWidget {
  public:
    OsdPanel()
        : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                               Qt::WindowDoesNotAcceptFocus | Qt::WindowTransparentForInput |
                               Qt::X11BypassWindowManagerHint) {
        setObjectName(QStringLiteral("osd"));
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setFixedSize(osd::kWidth, osd::kHeight);
        font_ = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        font_.setPixelSize(kTextPixels);
        font_.setWeight(QFont::Medium);
    }

    void set(double level, const QString& symbol, const QString& text) {
        segments_ = osdSegments(level);
        text_ = text;
        if (symbol != symbol_) {
            symbol_ = symbol;
            // An unknown name leaves the image empty.
            image_ = symbolPixmap(symbol, osd::symbolRect().size(), kForeground);
        }
        update();
    }

    [[nodiscard]] int segments() const { return segments_; }
    [[nodiscard]] const QString& text() const { return text_; }
    [[nodiscard]] const QString& symbol() const { return symbol_; }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(kBackground);
        painter.drawRoundedRect(QRectF(rect()), osd::kCornerRadius, osd::kCornerRadius);

        if (!image_.isNull()) painter.drawPixmap(osd::symbolRect(), image_);

        const QRectF bar = osd::barRect();
        const double width = (bar.width() - kSegmentGap * (osd::kSegments - 1)) / osd::kSegments;
        for (int i = 0; i < osd::kSegments; ++i) {
            painter.setBrush(i < segments_ ? kForeground : kSegmentOff);
            const QRectF segment(bar.left() + i * (width + kSegmentGap), bar.top(), width,
                                 bar.height());
            painter.drawRoundedRect(segment, kSegmentRadius, kSegmentRadius);
        }

        painter.setPen(kForeground);
        painter.setFont(font_);
        painter.drawText(osd::labelRect(), Qt::AlignRight | Qt::AlignVCenter, text_);
    }

  private:
    int segments_ = 0;
    QString text_;
    QString symbol_;
    QPixmap image_;
    QFont font_;
};

QtOsd::QtOsd(ScreenFrame screenFrame, Timings timings)
    : screenFrame_(std::move(screenFrame)), timings_(timings) {}

QtOsd::~QtOsd() = default;

QtOsd::ScreenFrame QtOsd::framesOf(const DisplayServer& server) {
    return [&server](DisplayID display) -> std::optional<QRect> {
        const std::vector<Screen> screens = server.screens();
        const auto frameOf = [&screens](DisplayID id) -> std::optional<QRect> {
            for (const Screen& screen : screens) {
                if (screen.displayID == id) return toQRect(screen.frame);
            }
            return std::nullopt;
        };
        if (auto frame = frameOf(display)) return frame;
        return frameOf(server.mainDisplay());
    };
}

void QtOsd::show(DisplayID display, double level, const std::string& symbol,
                 const std::optional<std::string>& text) {
    std::optional<QRect> frame = screenFrame_ ? screenFrame_(display) : std::nullopt;
    if (!frame) {
        QScreen* primary = QGuiApplication::primaryScreen();
        if (!primary) return;
        frame = primary->geometry();
    }

    if (!panel_) {
        panel_ = std::make_unique<OsdPanel>();
        fade_ = new QPropertyAnimation(panel_.get(), "windowOpacity", panel_.get());
        fade_->setStartValue(1.0);
        fade_->setEndValue(0.0);
        QObject::connect(fade_, &QPropertyAnimation::finished, panel_.get(),
                         [panel = panel_.get()] { panel->hide(); });
        hide_ = std::make_unique<QTimer>();
        hide_->setSingleShot(true);
        QObject::connect(hide_.get(), &QTimer::timeout, panel_.get(), [this] {
            fade_->setDuration(timings_.fadeMs);
            fade_->start();
        });
    }

    panel_->set(level, QString::fromStdString(symbol), osdText(level, text));
    panel_->setGeometry(osdFrame(*frame));
    // A show during the fade makes the panel fully visible again at once.
    fade_->stop();
    panel_->setWindowOpacity(1.0);
    panel_->show();
    panel_->raise();
    hide_->start(timings_.hideAfterMs);
}

QWidget* QtOsd::panel() const {
    return panel_.get();
}
QString QtOsd::text() const {
    return panel_ ? panel_->text() : QString();
}
int QtOsd::segments() const {
    return panel_ ? panel_->segments() : 0;
}
QString QtOsd::symbol() const {
    return panel_ ? panel_->symbol() : QString();
}

}  // namespace lumora::ui
