#pragma once

#include <optional>

#include "input/Shortcut.h"

namespace lumora {

// What a key-down means while a binding is being recorded.
enum class RecordOutcome {
    cancel,         // Escape: keep the old binding
    clear,          // Delete: remove the binding
    keepRecording,  // no modifier held: ignore the key, wait for another
    recorded,       // a combination: bind it
};

struct RecordResult {
    RecordOutcome outcome = RecordOutcome::keepRecording;
    std::optional<Shortcut> shortcut;  // only with recorded

    friend bool operator==(const RecordResult&, const RecordResult&) = default;
};

// Every key-down is swallowed while recording, whatever the outcome. Escape and Delete act
// even with modifiers held, so they can never be recorded themselves.
RecordResult handleRecordingKey(const KeyEvent& event);

}  // namespace lumora
