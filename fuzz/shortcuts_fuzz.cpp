// The stored "shortcuts" setting and typed keys come from outside the program: any bytes must
// load as some map (or the defaults), and any key held with control must make a shortcut whose
// label stays UTF-8, without reading out of bounds or throwing.
#include <cstddef>
#include <cstdint>
#include <string>

#include "base/Check.h"
#include "base/Utf8.h"
#include "input/ShortcutMap.h"
#include "platform/MemoryDefaults.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace lumora;

    MemoryDefaults stored;
    stored.setData(kShortcutsKey, Defaults::Bytes(data, data + size));
    const ShortcutMap loaded = loadShortcuts(stored);
    // Whatever loaded must survive a save and a load unchanged.
    MemoryDefaults again;
    saveShortcuts(again, loaded);
    check(loadShortcuts(again) == loaded, "a loaded shortcut map did not round-trip");

    // Labels built from typed text stay UTF-8 when the text was.
    std::string typed(reinterpret_cast<const char*>(data), size);
    KeyEvent keyEvent{size > 0 ? data[0] : std::uint8_t{0}, ModifierFlags{Modifier::control},
                      typed};
    auto shortcut = Shortcut::from(keyEvent);
    check(shortcut.has_value(), "control held but no shortcut");
    check(!isValidUtf8(typed) || isValidUtf8(shortcut->label), "label broke valid UTF-8");
    return 0;
}
