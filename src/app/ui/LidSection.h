#pragma once

#include <QFrame>
#include <QString>
#include <array>

#include "UiContext.h"

class QComboBox;

namespace lumora::ui {

class ToggleRow;

// "Крышка и сон": the lid settings, the closed-lid sleep delay, staying awake with a monitor,
// restoring brightness after sleep, and starting at login.
class LidSection : public QFrame {
  public:
    struct Delay {
        const char* title;
        double seconds;
    };
    // The sleep delays offered, in this order; "Никогда" switches the sleep off.
    static constexpr std::array<Delay, 5> kDelays{{
        {"Никогда", 0},
        {"1 мин", 60},
        {"5 мин", 300},
        {"10 мин", 600},
        {"30 мин", 1800},
    }};

    explicit LidSection(UiContext& context, QWidget* parent = nullptr);

    void updateValues();

    [[nodiscard]] ToggleRow* turnOffPanelToggle() const { return turnOffPanel_; }
    [[nodiscard]] ToggleRow* disconnectBuiltinToggle() const { return disconnectBuiltin_; }
    [[nodiscard]] ToggleRow* dimToggle() const { return dim_; }
    [[nodiscard]] QComboBox* delayPicker() const { return delay_; }
    [[nodiscard]] ToggleRow* preventSleepToggle() const { return preventSleep_; }
    [[nodiscard]] ToggleRow* restoreToggle() const { return restore_; }
    [[nodiscard]] ToggleRow* loginToggle() const { return login_; }

  private:
    template <class Change>
    void changeConfig(Change change);

    UiContext& context_;
    ToggleRow* turnOffPanel_ = nullptr;
    ToggleRow* disconnectBuiltin_ = nullptr;
    ToggleRow* dim_ = nullptr;
    QComboBox* delay_ = nullptr;
    ToggleRow* preventSleep_ = nullptr;
    ToggleRow* restore_ = nullptr;
    ToggleRow* login_ = nullptr;
};

}  // namespace lumora::ui
