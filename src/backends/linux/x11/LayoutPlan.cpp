#include "x11/LayoutPlan.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace lumora::lx {

namespace {

// X coordinates are 16-bit on the wire; anything far beyond is a mistake, not a layout.
constexpr std::int32_t kMaxCoordinate = 1 << 20;

bool offers(const OutputState& output, XId mode) {
    return std::find(output.modes.begin(), output.modes.end(), mode) != output.modes.end();
}

// Carries out the changes one by one on a copy of the layout.
class Planner {
  public:
    Planner(const DisplayWorld& world, LayoutMemory memory)
        : world_(world),
          randr_(world.randr),
          memory_(std::move(memory)),
          layout_(currentLayout(world.randr)),
          primary_(world.randr.primary) {
        for (const DisplayFacts& d : world.displays) {
            if (d.mirrorOf != 0) mirrorOf_[d.id] = d.mirrorOf;
        }
    }

    bool apply(const SetModeChange& c) {
        if (auto* p = placementOf(c.id)) p->mode = c.mode;
        return true;
    }

    bool apply(const SetOriginChange& c) {
        arranged_ = true;
        Placement* p = placementOf(c.id);
        if (!p) return true;
        if (std::abs(std::int64_t{c.x}) > kMaxCoordinate ||
            std::abs(std::int64_t{c.y}) > kMaxCoordinate) {
            return false;
        }
        p->x = c.x;
        p->y = c.y;
        return true;
    }

    bool apply(const SetMainChange& c) {
        if (const DisplayFacts* d = world_.find(c.id)) primary_ = d->output;
        return true;
    }

    bool apply(const SetMirrorChange& c) {
        const DisplayFacts* d = world_.find(c.id);
        Placement* p = placementOf(c.id);
        if (!d || !p) return true;
        if (c.target == 0) {
            if (mirrorOf_.erase(c.id) == 0) return true;
            memory_.mirrors.erase(c.id);
            *p = Placement{p->mode, rightEdgeWithout(d->output), 0, p->rotation};
            return true;
        }
        auto sourceOfTarget = mirrorOf_.find(c.target);
        const DisplayID source =
            sourceOfTarget != mirrorOf_.end() ? sourceOfTarget->second : c.target;
        const DisplayFacts* s = world_.find(source);
        Placement* sp = placementOf(source);
        if (source == c.id || !s || !sp) return true;
        const auto modes =
            commonModes(*randr_.output(d->output), *randr_.output(s->output), sp->mode);
        if (!modes) return false;
        sp->mode = modes->second;
        *p = Placement{modes->first, sp->x, sp->y, sp->rotation};
        for (auto& [mirror, of] : mirrorOf_) {
            if (of == c.id) of = source;
        }
        mirrorOf_[c.id] = source;
        memory_.mirrors[c.id] = source;
        return true;
    }

    bool apply(const SetEnabledChange& c) {
        const DisplayFacts* d = world_.find(c.id);
        if (!d) return true;
        const OutputState* output = randr_.output(d->output);
        auto lit = layout_.find(d->output);
        if (!c.enabled) {
            if (lit == layout_.end()) return true;
            memory_.switchedOff[c.id] = lit->second;
            layout_.erase(lit);
            mirrorOf_.erase(c.id);
            memory_.mirrors.erase(c.id);
            return true;
        }
        if (lit != layout_.end()) return true;
        auto remembered = memory_.switchedOff.find(c.id);
        if (remembered != memory_.switchedOff.end() && offers(*output, remembered->second.mode)) {
            layout_[d->output] = remembered->second;
        } else if (!output->modes.empty()) {
            // Never switched off by Lumora: its preferred mode, to the right of the others.
            layout_[d->output] = Placement{output->modes.front(), rightEdgeWithout(d->output), 0};
        } else {
            return false;
        }
        memory_.switchedOff.erase(c.id);
        return true;
    }

    PlannedLayout finish(LayoutMemory& memory) {
        // A mirroring display shows its source, so it sits where the source sits.
        for (const auto& [mirror, source] : mirrorOf_) {
            Placement* p = placementOf(mirror);
            const Placement* sp = placementOf(source);
            if (p && sp) {
                p->x = sp->x;
                p->y = sp->y;
            }
        }
        // The screen starts at 0,0, so a display moved above or left of it moves everything.
        // A new arrangement of origins goes to the screen's top-left corner, as xrandr puts it.
        const bool toCorner = arranged_ && !layout_.empty();
        std::int32_t minX = toCorner ? kMaxCoordinate : 0;
        std::int32_t minY = minX;
        for (const auto& [output, p] : layout_) {
            minX = std::min(minX, p.x);
            minY = std::min(minY, p.y);
        }
        PlannedLayout plan{layout_, primary_};
        for (auto& [output, p] : plan.layout) {
            p.x -= minX;
            p.y -= minY;
            const auto [w, h] = sizeOf(p);
            plan.width = std::max(plan.width, static_cast<std::uint32_t>(p.x) + w);
            plan.height = std::max(plan.height, static_cast<std::uint32_t>(p.y) + h);
        }
        memory = std::move(memory_);
        return plan;
    }

  private:
    Placement* placementOf(DisplayID id) {
        const DisplayFacts* d = world_.find(id);
        if (!d) return nullptr;
        auto found = layout_.find(d->output);
        return found == layout_.end() ? nullptr : &found->second;
    }

    std::pair<std::uint32_t, std::uint32_t> sizeOf(const Placement& p) const {
        const ModeTiming* m = randr_.mode(p.mode);
        return m ? rotatedSize(m->width, m->height, p.rotation) : std::pair{0u, 0u};
    }

    std::int32_t rightEdgeWithout(XId output) const {
        std::int32_t edge = 0;
        for (const auto& [o, p] : layout_) {
            if (o != output)
                edge = std::max(edge, p.x + static_cast<std::int32_t>(sizeOf(p).first));
        }
        return edge;
    }

    // (mirror's mode, source's mode) of one size: the source's own mode when the mirror has it,
    // else the shared size nearest to the source's, each side at the rate nearest the source's.
    std::optional<std::pair<XId, XId>> commonModes(const OutputState& mirror,
                                                   const OutputState& source,
                                                   XId sourceMode) const {
        if (offers(mirror, sourceMode)) return std::pair{sourceMode, sourceMode};
        const ModeTiming* current = randr_.mode(sourceMode);
        if (!current) return std::nullopt;
        const double rate = refreshRate(*current);
        const auto area = [](const ModeTiming& m) {
            return static_cast<std::int64_t>(m.width) * static_cast<std::int64_t>(m.height);
        };
        // Of the modes of one output with the size of `like`, the one nearest `rate`.
        const auto nearestRate = [&](const OutputState& o, const ModeTiming& like) {
            const ModeTiming* best = nullptr;
            for (XId id : o.modes) {
                const ModeTiming* m = randr_.mode(id);
                if (!m || m->width != like.width || m->height != like.height) continue;
                if (!best || std::abs(refreshRate(*m) - rate) < std::abs(refreshRate(*best) - rate))
                    best = m;
            }
            return best;
        };
        std::optional<std::pair<XId, XId>> best;
        std::int64_t bestDistance = std::numeric_limits<std::int64_t>::max();
        for (XId id : mirror.modes) {
            const ModeTiming* m = randr_.mode(id);
            const ModeTiming* s = m ? nearestRate(source, *m) : nullptr;
            if (!s) continue;
            const std::int64_t distance = std::abs(area(*m) - area(*current));
            if (distance < bestDistance) {
                bestDistance = distance;
                const ModeTiming* sourceSide =
                    (current->width == m->width && current->height == m->height) ? current : s;
                best = std::pair{nearestRate(mirror, *m)->id, sourceSide->id};
            }
        }
        return best;
    }

    const DisplayWorld& world_;
    const RandrWorld& randr_;
    LayoutMemory memory_;
    Layout layout_;
    XId primary_;
    std::map<DisplayID, DisplayID> mirrorOf_;
    bool arranged_ = false;
};

}  // namespace

Layout currentLayout(const RandrWorld& randr) {
    Layout layout;
    for (const OutputState& o : randr.outputs) {
        const CrtcState* c = randr.crtc(o.crtc);
        if (c && c->mode != 0) layout[o.id] = Placement{c->mode, c->x, c->y, c->rotation};
    }
    return layout;
}

std::optional<PlannedLayout> planLayout(const DisplayWorld& world,
                                        std::span<const ConfigChange> changes,
                                        LayoutMemory& memory) {
    Planner planner(world, memory);
    for (const ConfigChange& change : changes) {
        if (!std::visit([&](const auto& c) { return planner.apply(c); }, change))
            return std::nullopt;
    }
    return planner.finish(memory);
}

std::vector<CrtcSetting> currentCrtcs(const RandrWorld& randr) {
    std::vector<CrtcSetting> settings;
    for (const CrtcState& c : randr.crtcs) {
        CrtcSetting s{c.id};
        if (c.mode != 0) {
            s.placement = Placement{c.mode, c.x, c.y, c.rotation};
            s.outputs = c.outputs;
        }
        settings.push_back(std::move(s));
    }
    return settings;
}

std::optional<std::vector<CrtcSetting>> assignCrtcs(const RandrWorld& randr, const Layout& layout) {
    std::map<XId, CrtcSetting> taken;
    std::vector<const OutputState*> homeless;
    for (const OutputState& o : randr.outputs) {
        auto lit = layout.find(o.id);
        if (lit == layout.end()) continue;
        auto used = taken.find(o.crtc);
        if (o.crtc != 0 && used == taken.end()) {
            taken[o.crtc] = CrtcSetting{o.crtc, lit->second, {o.id}};
        } else if (o.crtc != 0 && used->second.placement == lit->second) {
            used->second.outputs.push_back(o.id);  // clones that stay together
        } else {
            homeless.push_back(&o);
        }
    }
    for (const OutputState* o : homeless) {
        const Placement& p = layout.at(o->id);
        auto free = std::find_if(o->crtcs.begin(), o->crtcs.end(),
                                 [&](XId c) { return !taken.contains(c); });
        if (free == o->crtcs.end()) return std::nullopt;
        taken[*free] = CrtcSetting{*free, p, {o->id}};
    }
    std::vector<CrtcSetting> settings;
    std::size_t placed = 0;
    for (const CrtcState& c : randr.crtcs) {
        auto found = taken.find(c.id);
        if (found != taken.end()) ++placed;
        settings.push_back(found != taken.end() ? found->second : CrtcSetting{c.id});
    }
    // An output's CRTC list may name a CRTC that vanished since it was read.
    if (placed != taken.size()) return std::nullopt;
    return settings;
}

}  // namespace lumora::lx
