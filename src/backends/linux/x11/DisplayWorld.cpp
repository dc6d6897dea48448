#include "x11/DisplayWorld.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "edid/StableDisplayID.h"

namespace lumora::lx {

namespace {

PlatformMode platformMode(const ModeTiming& m) {
    const auto width = static_cast<std::int64_t>(m.width);
    const auto height = static_cast<std::int64_t>(m.height);
    // X has no points: a mode's logical size is its pixel size.
    return PlatformMode{
        static_cast<std::int32_t>(m.id), width, height, width, height, refreshRate(m), true};
}

Size physicalSize(const OutputState& output) {
    if (output.mmWidth != 0 && output.mmHeight != 0)
        return {static_cast<double>(output.mmWidth), static_cast<double>(output.mmHeight)};
    if (output.edid) {
        return {static_cast<double>(output.edid->widthMM),
                static_cast<double>(output.edid->heightMM)};
    }
    return {};
}

DisplayFacts factsOf(const RandrWorld& randr, const OutputState& output, DisplayID id) {
    DisplayFacts f;
    f.id = id;
    f.output = output.id;
    f.connector = output.name;
    f.edid = output.edid;
    f.builtin = isBuiltinConnector(output.name);
    f.primary = output.id == randr.primary;
    f.physicalSize = physicalSize(output);
    for (XId m : output.modes) {
        if (const ModeTiming* timing = randr.mode(m)) f.modes.push_back(platformMode(*timing));
    }
    const CrtcState* crtc = randr.crtc(output.crtc);
    if (!crtc || crtc->mode == 0) return f;
    f.crtc = crtc->id;
    f.bounds = Rect{{static_cast<double>(crtc->x), static_cast<double>(crtc->y)},
                    {static_cast<double>(crtc->width), static_cast<double>(crtc->height)}};
    f.rotation = crtc->rotation;
    if (const ModeTiming* timing = randr.mode(crtc->mode)) f.mode = platformMode(*timing);
    f.gammaSize = crtc->gammaSize;
    return f;
}

// Displays showing the same part of the screen mirror one another. The source of each set is
// the one Lumora moved the others onto; failing that the primary, failing that the first
// in the server's order.
void assignMirrors(std::vector<DisplayFacts>& displays, MirrorMemory& memory) {
    MirrorMemory kept;
    std::vector<bool> done(displays.size(), false);
    for (std::size_t i = 0; i < displays.size(); ++i) {
        if (done[i] || !displays[i].online()) continue;
        std::vector<DisplayFacts*> set;
        for (std::size_t j = i; j < displays.size(); ++j) {
            if (displays[j].online() && displays[j].bounds == displays[i].bounds) {
                set.push_back(&displays[j]);
                done[j] = true;
            }
        }
        if (set.size() < 2) continue;
        auto inSet = [&](DisplayID id) {
            return std::any_of(set.begin(), set.end(), [id](auto* d) { return d->id == id; });
        };
        std::vector<DisplayFacts*> candidates;
        for (DisplayFacts* d : set) {
            auto remembered = memory.find(d->id);
            if (remembered != memory.end() && inSet(remembered->second))
                kept.insert(*remembered);
            else
                candidates.push_back(d);
        }
        if (candidates.empty()) candidates = set;
        auto primary =
            std::find_if(candidates.begin(), candidates.end(), [](auto* d) { return d->primary; });
        const DisplayID source = (primary != candidates.end() ? *primary : candidates[0])->id;
        for (DisplayFacts* d : set) {
            if (d->id != source) d->mirrorOf = source;
        }
    }
    memory = std::move(kept);
}

}  // namespace

std::string DisplayFacts::name() const {
    if (edid && edid->name) return *edid->name;
    return connector;
}

const DisplayFacts* DisplayWorld::find(DisplayID id) const {
    auto found = std::find_if(displays.begin(), displays.end(),
                              [id](const DisplayFacts& d) { return d.id == id; });
    return found == displays.end() ? nullptr : &*found;
}

const DisplayFacts* DisplayWorld::findOnline(DisplayID id) const {
    const DisplayFacts* d = find(id);
    return d && d->online() ? d : nullptr;
}

DisplayWorld describeDisplays(RandrWorld randr, MirrorMemory& memory) {
    DisplayWorld world;
    std::vector<const OutputState*> outputs;
    std::vector<OutputIdentity> identities;
    for (const OutputState& output : randr.outputs) {
        if (!output.connected && output.crtc == 0) continue;
        outputs.push_back(&output);
        identities.push_back({output.name, output.edid});
    }
    const std::vector<DisplayID> ids = stableDisplayIDs(identities);
    for (std::size_t i = 0; i < outputs.size(); ++i)
        world.displays.push_back(factsOf(randr, *outputs[i], ids[i]));
    assignMirrors(world.displays, memory);

    const DisplayFacts* main = nullptr;
    for (const DisplayFacts& d : world.displays) {
        if (!d.online()) continue;
        if (!main || d.primary) main = &d;
        if (d.primary) break;
    }
    if (main) world.main = main->id;
    world.randr = std::move(randr);
    return world;
}

std::vector<std::pair<DisplayID, DisplayChange>> diffDisplays(const DisplayWorld& before,
                                                              const DisplayWorld& after) {
    std::vector<std::pair<DisplayID, DisplayChange>> changes;
    for (const DisplayFacts& now : after.displays) {
        if (!now.online()) continue;
        const DisplayFacts* was = before.findOnline(now.id);
        if (!was) {
            changes.emplace_back(now.id, DisplayChange::added);
        } else if (*was != now || (before.main == now.id) != (after.main == now.id)) {
            changes.emplace_back(now.id, DisplayChange::changed);
        }
    }
    for (const DisplayFacts& was : before.displays) {
        if (was.online() && !after.findOnline(was.id))
            changes.emplace_back(was.id, DisplayChange::removed);
    }
    return changes;
}

bool isBuiltinConnector(const std::string& connector) {
    constexpr std::array<std::string_view, 3> kPanels = {"edp", "lvds", "dsi"};
    std::string lower;
    for (char c : connector)
        lower.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
    return std::any_of(kPanels.begin(), kPanels.end(),
                       [&](std::string_view p) { return lower.starts_with(p); });
}

}  // namespace lumora::lx
