#pragma once

#include <QAbstractButton>

namespace lumora::ui {

// An on/off switch: a rounded track with a knob, checkable, no text of its own.
class Switch : public QAbstractButton {
  public:
    explicit Switch(QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace lumora::ui
