#pragma once

#include <functional>

namespace lumora {

// The waits one monitor's wire needs, in seconds.
struct DdcTiming {
    // Monitors ignore a message that follows their last one too closely: 50 ms suits them all.
    static constexpr double kDefaultQuiet = 0.050;
    // A monitor may take up to 40 ms to prepare a reply; asking earlier gets nothing or garbage.
    static constexpr double kDefaultReplyWait = 0.050;

    double quiet = kDefaultQuiet;          // before every message to the monitor
    double replyWait = kDefaultReplyWait;  // between a request and reading its reply
    friend bool operator==(const DdcTiming&, const DdcTiming&) = default;
};

// Learns how short the waits of one monitor may be: shorter after a run of good exchanges,
// back to the defaults at the first failure, and never again below what failed. Not locked:
// its owner serialises access.
class DdcTimingLearner {
  public:
    enum class Change { none, shortened, settled, steppedBack };

    // Good exchanges in a row before the waits shrink.
    static constexpr int kLearnAfter = 3;
    // Each step keeps this share of the waits.
    static constexpr double kStep = 0.7;
    // No monitor is faster than this; a learned wait never goes below it.
    static constexpr double kFastest = 0.004;

    DdcTimingLearner() = default;
    // Starts from waits learned before (a previous run): taken as settled.
    explicit DdcTimingLearner(DdcTiming learned);

    [[nodiscard]] const DdcTiming& timing() const { return timing_; }
    // An exchange with a valid reply: `shortened` a step, or `settled` when the waits have just
    // reached their floor.
    Change succeeded();
    // An exchange without a valid reply; `steppedBack` when the waits were shorter than the
    // defaults.
    Change failed();

  private:
    DdcTiming timing_;
    DdcTiming floor_{kFastest, kFastest};
    DdcTiming lastGood_;
    int streak_ = 0;
    bool settled_ = false;
};

}  // namespace lumora
