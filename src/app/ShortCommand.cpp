#include "ShortCommand.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "model/CommandTable.h"

namespace lumora::app {

namespace {

using Place = CommandWord::Place;

// The multiplication sign reads as well as an "x" between the sides.
constexpr std::string_view kTimes = "\u00D7";

using Items = std::vector<std::pair<std::string, std::string>>;

bool knowsKey(const CommandSpec& entry, std::string_view key) {
    for (const auto& slot : entry.words) {
        if (!slot) continue;
        switch (slot->place) {
            case Place::item:
            case Place::density:
                if (slot->key == key) return true;
                break;
            case Place::sizeRate:
                if (key == "hz") return true;
                [[fallthrough]];
            case Place::size:
                if (key == "width" || key == "height") return true;
                break;
        }
    }
    return false;
}

// A text the agent would refuse stays as it is, so that its answer names what was wrong.
void addSize(Items& items, std::string_view word, bool withRate) {
    std::size_t cut = word.find('x');
    std::size_t skip = 1;
    if (cut == std::string_view::npos) cut = word.find('X');
    if (cut == std::string_view::npos) {
        cut = word.find(kTimes);
        skip = kTimes.size();
    }
    if (cut == std::string_view::npos) {
        items.emplace_back("width", std::string(word));
        return;
    }
    items.emplace_back("width", std::string(word.substr(0, cut)));
    std::string_view rest = word.substr(cut + skip);
    const std::size_t at = withRate ? rest.find('@') : std::string_view::npos;
    items.emplace_back("height", std::string(rest.substr(0, at)));
    if (at != std::string_view::npos) items.emplace_back("hz", std::string(rest.substr(at + 1)));
}

void addSlot(Items& items, const CommandWord& slot, const std::string& word) {
    switch (slot.place) {
        case Place::item:
            items.emplace_back(slot.key, word);
            break;
        case Place::size:
        case Place::sizeRate:
            addSize(items, word, slot.place == Place::sizeRate);
            break;
        case Place::density:
            items.emplace_back(slot.key, word == "hidpi" ? "1" : word == "lodpi" ? "0" : word);
            break;
    }
}

// Everything but the unreserved characters, so any display name survives the URL.
std::string percentEncoded(std::string_view text) {
    constexpr std::string_view kHex = "0123456789ABCDEF";
    std::string out;
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const bool plain = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                           (byte >= '0' && byte <= '9') || c == '-' || c == '.' || c == '_' ||
                           c == '~';
        if (plain) {
            out += c;
        } else {
            out += '%';
            out += kHex[byte >> 4];
            out += kHex[byte & 0x0F];
        }
    }
    return out;
}

}  // namespace

ShortCommand shortCommandUrl(const std::vector<std::string>& words) {
    ShortCommand out;
    if (words.empty() || words.front().empty()) {
        out.error = "no command";
        return out;
    }
    const std::string& command = words.front();
    out.url = "lumora://" + percentEncoded(command);
    const CommandSpec* entry = findCommand(command);
    if (!entry) return out;  // the agent refuses it and logs the name

    Items items;
    std::size_t next = 0;
    for (auto word = words.begin() + 1; word != words.end(); ++word) {
        const std::size_t equals = word->find('=');
        if (equals != std::string::npos &&
            knowsKey(*entry, std::string_view(*word).substr(0, equals))) {
            items.emplace_back(word->substr(0, equals), word->substr(equals + 1));
            continue;
        }
        if (next == CommandSpec::kMostWords || !entry->words[next]) {
            out.error = "too many words for " + command + ": " + *word;
            return out;
        }
        addSlot(items, *entry->words[next++], *word);
    }
    char separator = '?';
    for (const auto& [key, value] : items) {
        out.url += separator + percentEncoded(key) + "=" + percentEncoded(value);
        separator = '&';
    }
    return out;
}

std::string shortCommandSynopsis(std::string_view command) {
    const CommandSpec* entry = findCommand(command);
    if (!entry) return {};
    std::string out(command);
    for (const auto& slot : entry->words) {
        if (slot) out += " " + std::string(slot->shown);
    }
    return out;
}

}  // namespace lumora::app
