#include "ToggleRow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>

#include "Switch.h"
#include "UiStyle.h"

namespace lumora::ui {

ToggleRow::ToggleRow(const QString& text, QWidget* parent) : QWidget(parent) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(style::kRowSpacing * 2);
    label_ = style::makeLabel(text, style::bodyFont(), this, /*wrap=*/true);
    switch_ = new Switch(this);
    switch_->setAccessibleName(text);
    row->addWidget(label_, 1);
    row->addWidget(switch_, 0, Qt::AlignVCenter);
    connect(switch_, &QAbstractButton::clicked, this, [this](bool on) {
        if (onToggled_) onToggled_(on);
    });
}

void ToggleRow::setChecked(bool on) {
    const QSignalBlocker blocker(switch_);
    switch_->setChecked(on);
}

bool ToggleRow::isChecked() const {
    return switch_->isChecked();
}

}  // namespace lumora::ui
