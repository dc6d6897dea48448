#include "ShortcutRecorder.h"

#include <QCoreApplication>
#include <QKeyEvent>

#include "KeyTranslation.h"

namespace lumora::ui {

ShortcutRecorder::ShortcutRecorder(AppModel& model, QObject* parent)
    : QObject(parent), model_(model) {}

ShortcutRecorder::~ShortcutRecorder() {
    setInstalled(false);
}

void ShortcutRecorder::sync() {
    setInstalled(model_.recording()->has_value());
}

void ShortcutRecorder::setInstalled(bool on) {
    if (on == installed_) return;
    QCoreApplication* app = QCoreApplication::instance();
    if (!app) return;
    if (on) {
        app->installEventFilter(this);
    } else {
        app->removeEventFilter(this);
    }
    installed_ = on;
}

bool ShortcutRecorder::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride && model_.recording()->has_value()) {
        // Accepting it keeps menus and shortcuts from taking the key; the key-down follows.
        event->accept();
        return true;
    }
    if (event->type() != QEvent::KeyPress) return QObject::eventFilter(watched, event);
    // The recording may have ended since the last update; then the key is the user's again.
    if (!model_.recording()->has_value()) return false;
    if (auto key = keyEventFrom(*static_cast<QKeyEvent*>(event))) model_.recordKey(*key);
    return true;
}

}  // namespace lumora::ui
