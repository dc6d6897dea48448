// What the global shortcuts and the brightness keys do, and how a shortcut is recorded.
#include "input/Recording.h"
#include "model/AppModel.h"

namespace lumora {

void AppModel::perform(ShortcutAction action) {
    // Deliberately nothing when the pointer is on no display, whatever the action.
    const auto display = actionDisplay();
    if (!display) return;
    const bool stepsBrightness =
        action == ShortcutAction::brightnessUp || action == ShortcutAction::brightnessDown;
    if (!stepsBrightness) {
        performNow(action, *display);
        return;
    }
    ddc_->whenScanned(*display, [weak = weak_from_this(), action, id = *display] {
        if (auto self = weak.lock()) self->performNow(action, id);
    });
}

void AppModel::performNow(ShortcutAction action, DisplayID display) {
    switch (action) {
        case ShortcutAction::brightnessUp:
        case ShortcutAction::brightnessDown:
            brightness_.step(display, action == ShortcutAction::brightnessUp, /*fine=*/false);
            break;
        case ShortcutAction::dimToBlack:
            brightness_.dimToBlack(display);
            break;
        case ShortcutAction::toggleBuiltin:
            for (const DisplayInfo& d : displays_.get()) {
                if (!d.isBuiltin) continue;
                setEnabled(d.id, !d.isOnline);
                break;
            }
            break;
        case ShortcutAction::toggleHiDPI: {
            if (ports_.platform.displayServer().isBuiltin(display)) break;
            const bool wasOn = hidpi_.isOn(display);
            setHiDPI(display, !wasOn);
            ports_.osd.show(display, wasOn ? 0.0 : 1.0, "textformat.size",
                            wasOn ? "1\u00D7" : "HiDPI");
            break;
        }
        case ShortcutAction::sleepDisplays: {
            // Nothing waits for it; a failure is only logged.
            const PowerRequest request = ports_.platform.power().sleepDisplays();
            if (!request.started) ports_.log.write("sleep displays: " + request.error);
            break;
        }
    }
}

void AppModel::startRecording(ShortcutAction action) {
    if (shortcutsByDesktop()) return;  // the desktop's settings change them
    stopRecording();
    recording_.set(action);
    // No global hotkey may fire, or steal the keys, while the user types the new one.
    hotkeys_.registerShortcuts({});
}

bool AppModel::recordKey(const KeyEvent& event) {
    if (!recording_.get()) return false;
    const ShortcutAction action = *recording_.get();
    const RecordResult result = handleRecordingKey(event);
    switch (result.outcome) {
        case RecordOutcome::cancel:
            stopRecording();
            break;
        case RecordOutcome::clear:
            shortcuts_.modify([&](ShortcutMap& map) { map.erase(action); });
            stopRecording();
            break;
        case RecordOutcome::keepRecording:
            break;
        case RecordOutcome::recorded:
            shortcuts_.modify([&](ShortcutMap& map) { map[action] = *result.shortcut; });
            stopRecording();
            break;
    }
    return true;
}

void AppModel::stopRecording() {
    // All steps every time: harmless when nothing was being recorded.
    recording_.set(std::nullopt);
    saveShortcuts(ports_.defaults, shortcuts_.get());
    if (capabilities().globalKeys) hotkeys_.registerShortcuts(shortcuts_.get());
}

bool AppModel::brightnessKeyPressed(bool up, bool fine) {
    if (!brightnessKeys_.get()) return false;
    const auto display = actionDisplay();
    // The built-in panel keeps the system's own brightness behaviour.
    if (!display || ports_.platform.displayServer().isBuiltin(*display)) return false;
    // Swallowed now; a monitor still in its first scan is stepped once the scan is done.
    ddc_->whenScanned(*display, [weak = weak_from_this(), up, fine, id = *display] {
        if (auto self = weak.lock()) self->brightness_.step(id, up, fine);
    });
    return true;
}

}  // namespace lumora
