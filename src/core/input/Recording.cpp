#include "input/Recording.h"

#include <utility>

#include "input/KeyCodes.h"

namespace lumora {

RecordResult handleRecordingKey(const KeyEvent& event) {
    if (event.keyCode == kKeyEscape) return {RecordOutcome::cancel, std::nullopt};
    if (event.keyCode == kKeyDelete) return {RecordOutcome::clear, std::nullopt};
    auto shortcut = Shortcut::from(event);
    if (!shortcut) return {RecordOutcome::keepRecording, std::nullopt};
    return {RecordOutcome::recorded, std::move(shortcut)};
}

}  // namespace lumora
