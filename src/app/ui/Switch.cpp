#include "Switch.h"

#include <QPainter>

#include "UiStyle.h"

namespace lumora::ui {

namespace {

constexpr int kWidth = 32;
constexpr int kHeight = 18;
constexpr int kKnobInset = 2;

}  // namespace

Switch::Switch(QWidget* parent) : QAbstractButton(parent) {
    setCheckable(true);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize Switch::sizeHint() const {
    return {kWidth, kHeight};
}

void Switch::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF track = QRectF(0, 0, kWidth, kHeight).translated(0, (height() - kHeight) / 2.0);
    QColor fill = isChecked() ? style::accentColor() : QColor(0, 0, 0, 40);
    if (!isEnabled()) fill.setAlphaF(fill.alphaF() * 0.45f);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(track, kHeight / 2.0, kHeight / 2.0);

    const qreal knob = kHeight - 2 * kKnobInset;
    const qreal x = isChecked() ? track.right() - kKnobInset - knob : track.left() + kKnobInset;
    painter.setBrush(Qt::white);
    painter.setPen(QPen(QColor(0, 0, 0, 30), 0.5));
    painter.drawEllipse(QRectF(x, track.top() + kKnobInset, knob, knob));
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(style::accentColor(), 1.5));
        painter.drawRoundedRect(track.adjusted(-1, -1, 1, 1), kHeight / 2.0 + 1, kHeight / 2.0 + 1);
    }
}

}  // namespace lumora::ui
