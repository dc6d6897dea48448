// The stored "shortcuts" setting and the tapped brightness-key events come from outside the
// program: any bytes must load as some map (or the defaults) and any event must decode or be
// passed, without reading out of bounds or throwing.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>

#include "base/Check.h"
#include "base/Utf8.h"
#include "input/ShortcutMap.h"
#include "platform/Defaults.h"

namespace {

// A minimal in-memory store: the fuzz targets link the core only, not the sim backend.
class FuzzDefaults final : public lumora::Defaults {
  public:
    [[nodiscard]] std::optional<Value> object(std::string_view key) const override {
        auto it = values_.find(std::string(key));
        if (it == values_.end()) return std::nullopt;
        return it->second;
    }
    void set(std::string_view key, Value value) override {
        values_[std::string(key)] = std::move(value);
    }
    void remove(std::string_view key) override { values_.erase(std::string(key)); }

  private:
    std::map<std::string, Value> values_;
};

template <typename T>
T readAt(const std::uint8_t* data, std::size_t size, std::size_t offset) {
    T value{};
    if (offset < size) std::memcpy(&value, data + offset, std::min(sizeof(T), size - offset));
    return value;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace lumora;

    FuzzDefaults stored;
    stored.setData(kShortcutsKey, Defaults::Bytes(data, data + size));
    const ShortcutMap loaded = loadShortcuts(stored);
    // Whatever loaded must survive a save and a load unchanged.
    FuzzDefaults again;
    saveShortcuts(again, loaded);
    check(loadShortcuts(again) == loaded, "a loaded shortcut map did not round-trip");

    // Labels built from typed text stay UTF-8 when the text was.
    std::string typed(reinterpret_cast<const char*>(data), size);
    KeyEvent keyEvent{readAt<std::uint8_t>(data, size, 0), ModifierFlags{Modifier::control}, typed};
    auto shortcut = Shortcut::from(keyEvent);
    check(shortcut.has_value(), "control held but no shortcut");
    check(!isValidUtf8(typed) || isValidUtf8(shortcut->label), "label broke valid UTF-8");
    return 0;
}
