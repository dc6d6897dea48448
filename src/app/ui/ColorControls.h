#pragma once

#include <QWidget>
#include <array>

#include "display/ColorAdjust.h"
#include "model/AppModel.h"

class QPushButton;

namespace lumora::ui {

class SliderRow;

// The fold-out colour controls of a display card: one slider per field of the display's
// ColorAdjust, each showing its value, and "Сбросить" back to the neutral settings. Every
// change goes through AppModel::setColor.
//
// Ranges: dim 0.05…1 (the same floor as the brightness slider), contrast 0.5…1.5 around the
// neutral 1, temperature −1…1 (cool to warm), the channel gains 0…1, gamma 0.5…2 around 1.
class ColorControls : public QWidget {
  public:
    enum Field { dim, contrast, temperature, red, green, blue, gamma, fieldCount };

    struct Range {
        double minimum;
        double maximum;
    };
    static constexpr std::array<Range, fieldCount> kRanges{{
        {BrightnessControl::kSliderSoftwareFloor, 1.0},
        {0.5, 1.5},
        {-1.0, 1.0},
        {0.0, 1.0},
        {0.0, 1.0},
        {0.0, 1.0},
        {0.5, 2.0},
    }};

    ColorControls(AppModel& model, DisplayID display, QWidget* parent = nullptr);

    // Shows the display's stored adjustment, or the neutral one.
    void updateValues();

    [[nodiscard]] SliderRow* row(Field field) const { return rows_[field]; }
    [[nodiscard]] QPushButton* resetButton() const { return reset_; }

  private:
    [[nodiscard]] ColorAdjust current() const;
    void change(Field field, double value);

    AppModel& model_;
    DisplayID display_;
    std::array<SliderRow*, fieldCount> rows_{};
    QPushButton* reset_ = nullptr;
};

}  // namespace lumora::ui
