#include "ColorControls.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>
#include <cmath>

#include "SliderRow.h"
#include "UiStyle.h"

namespace lumora::ui {

namespace {

double& fieldOf(ColorAdjust& adjust, ColorControls::Field field) {
    switch (field) {
        case ColorControls::dim:
            return adjust.dim;
        case ColorControls::contrast:
            return adjust.contrast;
        case ColorControls::temperature:
            return adjust.temperature;
        case ColorControls::red:
            return adjust.red;
        case ColorControls::green:
            return adjust.green;
        case ColorControls::blue:
            return adjust.blue;
        case ColorControls::gamma:
        case ColorControls::fieldCount:
            break;
    }
    return adjust.gamma;
}

QString percent(double value) {
    return QString::number(static_cast<int>(std::lround(value * 100))) + QStringLiteral(" %");
}
QString plain(double value) {
    return QString::number(value, 'f', 2);
}
QString signedValue(double value) {
    // Rounded first, so that a value just below zero does not show as "-0.00".
    const double shown = std::round(value * 100) / 100;
    return (shown > 0 ? QStringLiteral("+") : QString()) +
           QString::number(shown == 0 ? 0.0 : shown, 'f', 2);
}

}  // namespace

ColorControls::ColorControls(AppModel& model, DisplayID display, QWidget* parent)
    : QWidget(parent), model_(model), display_(display) {
    setObjectName(QStringLiteral("colorControls"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 2, 0, 0);
    layout->setSpacing(2);

    struct RowDefinition {
        Field field;
        const char* caption;
        SliderRow::Format format;
    };
    const std::array<RowDefinition, fieldCount> definitions{{
        {dim, "Затемнение", percent},
        {contrast, "Контраст", plain},
        {temperature, "Температура", signedValue},
        {red, "Красный", percent},
        {green, "Зелёный", percent},
        {blue, "Синий", percent},
        {gamma, "Гамма", plain},
    }};
    for (const RowDefinition& definition : definitions) {
        const Range range = kRanges[definition.field];
        SliderRow* row =
            SliderRow::withCaption(QString::fromUtf8(definition.caption), range.minimum,
                                   range.maximum, definition.format, this);
        row->setOnChanged([this, field = definition.field](double value) { change(field, value); });
        rows_[definition.field] = row;
        layout->addWidget(row);
    }

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    reset_ = new QPushButton(QStringLiteral("Сбросить"), this);
    reset_->setObjectName(QStringLiteral("reset"));
    reset_->setFont(style::captionFont());
    connect(reset_, &QPushButton::clicked, this,
            [this] { model_.brightness().setColor(display_, ColorAdjust{}); });
    buttons->addWidget(reset_);
    layout->addLayout(buttons);
    updateValues();
}

void ColorControls::updateValues() {
    ColorAdjust adjust = current();
    for (int field = 0; field < fieldCount; ++field) {
        rows_[field]->setValue(fieldOf(adjust, static_cast<Field>(field)));
    }
    reset_->setEnabled(!adjust.isIdentity());
}

ColorAdjust ColorControls::current() const {
    auto found = model_.color()->find(display_);
    return found == model_.color()->end() ? ColorAdjust{} : found->second;
}

void ColorControls::change(Field field, double value) {
    ColorAdjust adjust = current();
    fieldOf(adjust, field) = value;
    model_.brightness().setColor(display_, adjust);
}

}  // namespace lumora::ui
