#include "PanelWindow.h"

#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>
#include <QWidget>

#include "ui/MenuPanel.h"

namespace lumora::app {

PanelWindow::PanelWindow(ui::UiContext context) : context_(std::move(context)) {}

PanelWindow::~PanelWindow() = default;

bool PanelWindow::visible() const {
    return window_ && window_->isVisible();
}

void PanelWindow::show(std::optional<bool> on) {
    const bool wanted = on.value_or(!visible());
    if (!wanted) {
        if (window_) window_->hide();
        return;
    }
    QScreen* screen = QGuiApplication::primaryScreen();
    const QRect area = screen ? screen->availableGeometry() : QRect();
    if (!window_) {
        window_ = std::make_unique<QWidget>();
        window_->setWindowTitle(QString::fromUtf8(kTitle));
        auto* layout = new QVBoxLayout(window_.get());
        layout->setContentsMargins(0, 0, 0, 0);
        auto* panel = new ui::MenuPanel(context_, window_.get());
        if (!area.isEmpty()) panel->setAvailableHeight(area.height());
        layout->addWidget(panel);
        window_->adjustSize();
        if (!area.isEmpty()) window_->move(area.center() - window_->rect().center());
    }
    window_->show();
    window_->raise();
    window_->activateWindow();
}

}  // namespace lumora::app
