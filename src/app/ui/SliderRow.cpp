#include "SliderRow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <algorithm>
#include <cmath>

#include "Symbols.h"
#include "UiStyle.h"

namespace lumora::ui {

namespace {

// Captions of the colour rows line up in a column of this width.
constexpr int kCaptionWidth = 92;
// Wide enough for "100 %" and "+1.00" in the caption font.
constexpr int kValueWidth = 42;

}  // namespace

SliderRow::SliderRow(double minimum, double maximum, Format format, QWidget* parent)
    : QWidget(parent), minimum_(minimum), maximum_(maximum), format_(std::move(format)) {
    slider_ = new QSlider(Qt::Horizontal, this);
    slider_->setRange(0, kSteps);
    slider_->setPageStep(kSteps / 20);
    connect(slider_, &QSlider::valueChanged, this, [this](int position) {
        const double value = toValue(position);
        showText(value);
        if (onChanged_) onChanged_(value);
    });
}

SliderRow* SliderRow::withSymbol(const QString& symbol, double minimum, double maximum,
                                 QWidget* parent) {
    auto* row = new SliderRow(minimum, maximum, {}, parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(style::kRowSpacing + 2);
    auto* icon = new QLabel(row);
    icon->setObjectName(QStringLiteral("symbol"));
    icon->setProperty("symbol", symbol);
    icon->setPixmap(symbolPixmap(symbol, QSize(style::kRowIconSize, style::kRowIconSize),
                                 style::secondaryLabelColor()));
    icon->setFixedSize(style::kRowIconSize, style::kRowIconSize);
    layout->addWidget(icon);
    layout->addWidget(row->slider_, 1);
    return row;
}

SliderRow* SliderRow::withCaption(const QString& caption, double minimum, double maximum,
                                  Format format, QWidget* parent) {
    auto* row = new SliderRow(minimum, maximum, std::move(format), parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(style::kRowSpacing);
    auto* label = style::makeLabel(caption, style::captionFont(), row);
    label->setObjectName(QStringLiteral("caption"));
    label->setFixedWidth(kCaptionWidth);
    layout->addWidget(label);
    layout->addWidget(row->slider_, 1);
    if (row->format_) {
        row->valueLabel_ = style::makeLabel({}, style::monospacedCaptionFont(), row);
        row->valueLabel_->setObjectName(QStringLiteral("value"));
        row->valueLabel_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        row->valueLabel_->setFixedWidth(kValueWidth);
        style::setTextColor(row->valueLabel_, style::secondaryLabelColor());
        layout->addWidget(row->valueLabel_);
    }
    return row;
}

void SliderRow::setValue(double value) {
    // The user's hand wins over the model while dragging; the next update after release
    // brings the two together again.
    if (slider_->isSliderDown()) return;
    const QSignalBlocker blocker(slider_);
    slider_->setValue(toPosition(value));
    showText(std::clamp(value, std::min(minimum_, maximum_), std::max(minimum_, maximum_)));
}

double SliderRow::value() const {
    return toValue(slider_->value());
}

double SliderRow::toValue(int position) const {
    return minimum_ + (maximum_ - minimum_) * position / kSteps;
}

int SliderRow::toPosition(double value) const {
    if (!std::isfinite(value) || maximum_ == minimum_) return 0;
    const double fraction = std::clamp((value - minimum_) / (maximum_ - minimum_), 0.0, 1.0);
    return static_cast<int>(std::lround(fraction * kSteps));
}

void SliderRow::showText(double value) {
    if (valueLabel_ && format_) valueLabel_->setText(format_(value));
}

}  // namespace lumora::ui
