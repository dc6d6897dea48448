#pragma once

#include <QObject>

#include "model/AppModel.h"

namespace lumora::ui {

// The application-local key monitor of shortcut recording: while the model records, every
// key-down delivered to the application goes to AppModel::recordKey and is swallowed.
// Installed on the application only while recording, so normal typing is never touched.
class ShortcutRecorder : public QObject {
  public:
    explicit ShortcutRecorder(AppModel& model, QObject* parent = nullptr);
    ~ShortcutRecorder() override;

    // Installs or removes the filter to match the model's `recording`.
    void sync();
    [[nodiscard]] bool installed() const { return installed_; }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void setInstalled(bool on);

    AppModel& model_;
    bool installed_ = false;
};

}  // namespace lumora::ui
