#include "Preview.h"

#include <QCoreApplication>
#include <QVBoxLayout>
#include <QWidget>
#include <utility>

#include "ui/MenuPanel.h"
#include "ui/Render.h"
#include "ui/UiContext.h"

namespace lumora::app {

namespace {

// The panel follows the model through queued updates; a few rounds let them all land.
constexpr int kSettleRounds = 3;
// Tall enough for every section, so the picture shows the whole panel without a scroll bar.
constexpr int kRenderHeight = 10'000;

void settle() {
    for (int round = 0; round < kSettleRounds; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

}  // namespace

std::unique_ptr<QWidget> openPreviewWindow(ui::UiContext context) {
    auto window = std::make_unique<QWidget>(
        nullptr, Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    window->setWindowTitle(QString::fromUtf8(kPreviewTitle));
    auto* layout = new QVBoxLayout(window.get());
    layout->setContentsMargins(0, 0, 0, 0);
    auto* panel = new ui::MenuPanel(std::move(context), window.get());
    panel->setAvailableHeight(kPreviewHeight);
    layout->addWidget(panel);
    window->setGeometry(kPreviewX, kPreviewY, kPreviewWidth, kPreviewHeight);
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}

bool renderPanelToPng(ui::UiContext context, const std::filesystem::path& file) {
    ui::MenuPanel panel(std::move(context));
    panel.setAvailableHeight(kRenderHeight);
    panel.updateFromModel();
    settle();
    return ui::renderToPng(panel, QString::fromStdString(file.string()));
}

}  // namespace lumora::app
