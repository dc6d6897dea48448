#include "ddc/DdcTiming.h"

#include <algorithm>

namespace lumora {

DdcTimingLearner::DdcTimingLearner(DdcTiming learned)
    : timing_(learned), lastGood_(learned), settled_(true) {}

DdcTimingLearner::Change DdcTimingLearner::succeeded() {
    if (++streak_ < kLearnAfter || settled_) return Change::none;
    streak_ = 0;
    const DdcTiming shorter{std::max(floor_.quiet, timing_.quiet * kStep),
                            std::max(floor_.replyWait, timing_.replyWait * kStep)};
    if (shorter == timing_) {
        settled_ = true;
        // Nothing learned beyond the defaults: nothing to tell.
        return timing_ == DdcTiming{} ? Change::none : Change::settled;
    }
    lastGood_ = timing_;
    timing_ = shorter;
    if (timing_ == floor_) {
        settled_ = true;
        return Change::settled;
    }
    return Change::shortened;
}

DdcTimingLearner::Change DdcTimingLearner::failed() {
    streak_ = 0;
    if (timing_ == DdcTiming{}) return Change::none;
    // What failed is too short: learn again from the defaults, down to the last waits that
    // worked and no further (a step above these when they were the first tried).
    const DdcTiming next =
        lastGood_ == timing_
            ? DdcTiming{std::min(timing_.quiet / kStep, DdcTiming::kDefaultQuiet),
                        std::min(timing_.replyWait / kStep, DdcTiming::kDefaultReplyWait)}
            : lastGood_;
    floor_ = {std::max(floor_.quiet, next.quiet), std::max(floor_.replyWait, next.replyWait)};
    timing_ = DdcTiming{};
    lastGood_ = timing_;
    settled_ = false;
    return Change::steppedBack;
}

}  // namespace lumora
