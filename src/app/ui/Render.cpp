#include "Render.h"

#include <QLayout>
#include <QPixmap>
#include <QWidget>

namespace lumora::ui {

namespace {

constexpr qreal kRenderScale = 2.0;

}  // namespace

bool renderToPng(QWidget& widget, const QString& path) {
    widget.ensurePolished();
    if (QLayout* layout = widget.layout()) layout->activate();
    if (!widget.isVisible()) {
        // Wrapped texts need the height that belongs to the width, which adjustSize() ignores.
        QSize size = widget.sizeHint().expandedTo(widget.minimumSize());
        if (widget.hasHeightForWidth()) size.setHeight(widget.heightForWidth(size.width()));
        widget.resize(size);
        if (QLayout* layout = widget.layout()) layout->activate();
    }
    const QSize size = widget.size();
    if (size.isEmpty()) return false;

    QPixmap pixmap(size * kRenderScale);
    pixmap.setDevicePixelRatio(kRenderScale);
    pixmap.fill(widget.palette().color(widget.backgroundRole()));
    widget.render(&pixmap);
    return pixmap.save(path, "PNG");
}

}  // namespace lumora::ui
