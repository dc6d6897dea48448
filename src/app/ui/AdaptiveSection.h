#pragma once

#include <QFrame>
#include <QString>
#include <array>
#include <vector>

#include "UiContext.h"
#include "adaptive/AdaptiveMode.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QVBoxLayout;
class QWidget;

namespace lumora::ui {

class ToggleRow;

// "Адаптивная яркость": what the monitors follow, the location for the sun, the warm colour
// at night, and which displays take part.
class AdaptiveSection : public QFrame {
  public:
    struct Choice {
        AdaptiveMode mode;
        const char* title;
        const char* refusal;  // shown when the machine cannot follow this
    };
    static constexpr std::array<Choice, 4> kChoices{{
        {AdaptiveMode::off, "Выключена", ""},
        {AdaptiveMode::sync, "За встроенным экраном", "Нет встроенного экрана с яркостью"},
        {AdaptiveMode::sensor, "По датчику освещённости", "Нет датчика освещённости"},
        {AdaptiveMode::schedule, "По солнцу", "Сначала укажите широту и долготу"},
    }};

    explicit AdaptiveSection(UiContext& context, QWidget* parent = nullptr);

    void updateValues();

    [[nodiscard]] QComboBox* modePicker() const { return mode_; }
    [[nodiscard]] QLineEdit* latitudeField() const { return latitude_; }
    [[nodiscard]] QLineEdit* longitudeField() const { return longitude_; }
    [[nodiscard]] QLabel* problemLabel() const { return problem_; }
    [[nodiscard]] ToggleRow* nightToggle() const { return night_; }
    [[nodiscard]] const std::vector<ToggleRow*>& displayToggles() const { return displayRows_; }

  private:
    void choose(int index);
    void takeLocation();
    void rebuildDisplayRows();

    UiContext& context_;
    QComboBox* mode_ = nullptr;
    QLabel* problem_ = nullptr;
    QWidget* place_ = nullptr;
    QLineEdit* latitude_ = nullptr;
    QLineEdit* longitude_ = nullptr;
    ToggleRow* night_ = nullptr;
    QVBoxLayout* displaysLayout_ = nullptr;
    std::vector<ToggleRow*> displayRows_;
    std::vector<DisplayID> rowDisplays_;
    bool wantsSun_ = false;  // the sun was chosen before a location was given
};

}  // namespace lumora::ui
