#include "Tray.h"

#include <QCursor>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QVBoxLayout>
#include <QWidget>
#include <functional>
#include <utility>

#include "PopupPlacement.h"
#include "ui/MenuPanel.h"
#include "ui/Symbols.h"

namespace lumora::app {

namespace {

const char* const kTraySymbol = "display";
const char* const kToolTip = "Lumora";

// Tells when a widget is hidden.
class HideWatcher final : public QObject {
  public:
    explicit HideWatcher(std::function<void()> hidden) : hidden_(std::move(hidden)) {}
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Hide) hidden_();
        return QObject::eventFilter(watched, event);
    }

  private:
    std::function<void()> hidden_;
};

// The screen a point lies on, else the primary one.
QScreen* screenAt(const QPoint& point) {
    if (QScreen* screen = QGuiApplication::screenAt(point)) return screen;
    return QGuiApplication::primaryScreen();
}

}  // namespace

std::unique_ptr<TrayIcon> TrayIcon::create(ui::UiContext context) {
    if (!QSystemTrayIcon::isSystemTrayAvailable()) return nullptr;
    return std::unique_ptr<TrayIcon>(new TrayIcon(std::move(context)));
}

TrayIcon::TrayIcon(ui::UiContext context)
    : context_(std::move(context)), icon_(std::make_unique<QSystemTrayIcon>()) {
    // Tray hosts show light and dark panels; a mid grey reads on both.
    QIcon icon = ui::symbolIcon(QString::fromUtf8(kTraySymbol), QColor(Qt::gray));
#if defined(__APPLE__)
    // A template image: the menu bar draws it in its own colour, light or dark, and inverted
    // while the panel is open.
    icon.setIsMask(true);
#endif
    icon_->setIcon(icon);
    icon_->setToolTip(QString::fromUtf8(kToolTip));
    QObject::connect(
        icon_.get(), &QSystemTrayIcon::activated, icon_.get(),
        [this](QSystemTrayIcon::ActivationReason reason) {
            // There is no separate context menu: every click opens the panel.
            if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::Context) {
                toggle();
            }
        });
    icon_->show();
}

TrayIcon::~TrayIcon() {
    popup_.reset();
    hideWatcher_.reset();
    icon_.reset();
}

void TrayIcon::toggle() {
    if (popup_ && popup_->isVisible()) {
        popup_->hide();
        return;
    }
    if (sinceHidden_.isValid() && sinceHidden_.elapsed() < kSameClickMilliseconds) return;
    open();
}

void TrayIcon::open() {
    // Some trays do not tell where the icon is; the click happened under the pointer then.
    QRect icon = icon_->geometry();
    if (icon.isEmpty()) icon = QRect(QCursor::pos(), QSize());
    QScreen* screen = screenAt(icon.center());
    const QRect area = screen ? screen->availableGeometry() : QRect();

    if (!popup_) {
        popup_ = std::make_unique<QWidget>(nullptr, Qt::Popup | Qt::FramelessWindowHint);
        auto* layout = new QVBoxLayout(popup_.get());
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(new ui::MenuPanel(context_, popup_.get()));
        hideWatcher_ = std::make_unique<HideWatcher>([this] { sinceHidden_.start(); });
        popup_->installEventFilter(hideWatcher_.get());
    }
    auto* panel = popup_->findChild<ui::MenuPanel*>();
    if (panel && !area.isEmpty()) panel->setAvailableHeight(area.height() - 2 * kPopupGap);
    popup_->adjustSize();
    const QSize size = popup_->size();
    popup_->move(area.isEmpty() ? icon.topLeft() : popupPosition(icon, size, area));
    popup_->show();
    popup_->raise();
    popup_->activateWindow();
}

}  // namespace lumora::app
