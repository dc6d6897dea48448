#pragma once

#include <QString>
#include <QWidget>
#include <functional>

class QLabel;
class QSlider;

namespace lumora::ui {

// One slider over a range of doubles: a symbol or a short caption on the left, the slider, and
// optionally the value as text on the right. Only the user's moves reach `onChanged`; values
// from the model are shown under a signal blocker, and never while the user holds the slider.
class SliderRow : public QWidget {
  public:
    // Slider positions between minimum and maximum; fine enough that one step is invisible.
    static constexpr int kSteps = 1000;

    using Format = std::function<QString(double)>;

    // With a symbol name the row shows that symbol; otherwise `caption` as text.
    static SliderRow* withSymbol(const QString& symbol, double minimum, double maximum,
                                 QWidget* parent);
    static SliderRow* withCaption(const QString& caption, double minimum, double maximum,
                                  Format format, QWidget* parent);

    // Shows `value` (clamped to the range) unless the user is dragging the slider.
    void setValue(double value);
    [[nodiscard]] double value() const;
    void setOnChanged(std::function<void(double)> onChanged) { onChanged_ = std::move(onChanged); }

    [[nodiscard]] QSlider* slider() const { return slider_; }
    // The value text; null without a format.
    [[nodiscard]] QLabel* valueLabel() const { return valueLabel_; }
    [[nodiscard]] double minimum() const { return minimum_; }
    [[nodiscard]] double maximum() const { return maximum_; }

  private:
    SliderRow(double minimum, double maximum, Format format, QWidget* parent);
    [[nodiscard]] double toValue(int position) const;
    [[nodiscard]] int toPosition(double value) const;
    void showText(double value);

    double minimum_;
    double maximum_;
    Format format_;
    QSlider* slider_ = nullptr;
    QLabel* valueLabel_ = nullptr;
    std::function<void(double)> onChanged_;
};

}  // namespace lumora::ui
