#pragma once

#include <QWidget>
#include <functional>

class QLabel;

namespace lumora::ui {

class Switch;

// A setting: its text on the left (wrapping onto a second line when long) and a switch on the
// right. Only the user's clicks reach `onToggled`; setChecked() from an update does not.
class ToggleRow : public QWidget {
  public:
    explicit ToggleRow(const QString& text, QWidget* parent = nullptr);

    void setChecked(bool on);
    [[nodiscard]] bool isChecked() const;
    void setOnToggled(std::function<void(bool)> onToggled) { onToggled_ = std::move(onToggled); }

    [[nodiscard]] QLabel* label() const { return label_; }
    [[nodiscard]] Switch* toggle() const { return switch_; }

  private:
    QLabel* label_;
    Switch* switch_;
    std::function<void(bool)> onToggled_;
};

}  // namespace lumora::ui
