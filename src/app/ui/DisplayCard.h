#pragma once

#include <QFrame>

#include "CardShape.h"
#include "UiContext.h"

class QLabel;
class QMenu;
class QPushButton;
class QToolButton;

namespace lumora::ui {

class ColorControls;
class SliderRow;

// The block of one display: what it is, its badges, the switch-off button, the brightness,
// contrast and volume sliders, the mode and more menus and the fold-out colour controls.
// Built for one CardShape; updateValues() moves its controls to the model's current values.
class DisplayCard : public QFrame {
  public:
    DisplayCard(UiContext& context, CardShape shape, QWidget* parent = nullptr);

    [[nodiscard]] const CardShape& shape() const { return shape_; }
    [[nodiscard]] DisplayID displayID() const { return shape_.display.id; }
    void updateValues();

    // Null when the card has no such control.
    [[nodiscard]] SliderRow* brightnessRow() const { return brightness_; }
    [[nodiscard]] SliderRow* contrastRow() const { return contrast_; }
    [[nodiscard]] SliderRow* volumeRow() const { return volume_; }
    [[nodiscard]] QPushButton* switchOffButton() const { return switchOff_; }
    [[nodiscard]] QPushButton* modeButton() const { return modeButton_; }
    [[nodiscard]] QToolButton* moreButton() const { return moreButton_; }
    [[nodiscard]] QPushButton* colorToggle() const { return colorToggle_; }
    [[nodiscard]] ColorControls* colorControls() const { return colorControls_; }
    [[nodiscard]] QLabel* softwareCaption() const { return softwareCaption_; }
    // The menus as they are filled when opened.
    [[nodiscard]] QMenu* modeMenu() const { return modeMenu_; }
    [[nodiscard]] QMenu* moreMenu() const { return moreMenu_; }

  private:
    void buildHeader();
    void buildSwitchOff();
    void buildSliders();
    void buildControls();
    [[nodiscard]] double ddcValue(VCP vcp) const;
    void toggleExpanded(bool expanded);

    UiContext& context_;
    CardShape shape_;
    SliderRow* brightness_ = nullptr;
    SliderRow* contrast_ = nullptr;
    SliderRow* volume_ = nullptr;
    QPushButton* switchOff_ = nullptr;
    QPushButton* modeButton_ = nullptr;
    QToolButton* moreButton_ = nullptr;
    QPushButton* colorToggle_ = nullptr;
    ColorControls* colorControls_ = nullptr;
    QLabel* softwareCaption_ = nullptr;
    QMenu* modeMenu_ = nullptr;
    QMenu* moreMenu_ = nullptr;
};

}  // namespace lumora::ui
