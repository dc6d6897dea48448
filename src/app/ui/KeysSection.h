#pragma once

#include <QFrame>
#include <map>

#include "UiContext.h"

class QLabel;
class QPushButton;

namespace lumora::ui {

class ShortcutRecorder;
class ToggleRow;

// "Клавиши": the brightness-key switch, the accessibility row while it is needed, one
// shortcut button per action and the recording footnote.
class KeysSection : public QFrame {
  public:
    explicit KeysSection(UiContext& context, QWidget* parent = nullptr);

    void updateValues();

    [[nodiscard]] ToggleRow* brightnessKeysToggle() const { return brightnessKeys_; }
    [[nodiscard]] QWidget* permissionRow() const { return permission_; }
    [[nodiscard]] QPushButton* shortcutButton(ShortcutAction action) const {
        return buttons_.at(action);
    }
    [[nodiscard]] ShortcutRecorder* recorder() const { return recorder_; }
    [[nodiscard]] QLabel* footnote() const { return footnote_; }

  private:
    UiContext& context_;
    ToggleRow* brightnessKeys_ = nullptr;
    QWidget* permission_ = nullptr;
    std::map<ShortcutAction, QPushButton*> buttons_;
    ShortcutRecorder* recorder_ = nullptr;
    QLabel* footnote_ = nullptr;
};

}  // namespace lumora::ui
