// The publish mechanism: subscribers hear of a change before it, tokens end subscriptions.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/Observable.h"

namespace lumora {
namespace {

TEST(Observable, SubscribersHearBeforeTheChangeAndTokensEndSubscriptions) {
    Signal owner;
    Published<int> level{1, &owner};
    std::vector<std::string> heard;
    Subscription a = level.subscribe([&] { heard.push_back("a saw " + std::to_string(*level)); });
    Subscription b = level.subscribe([&] { heard.push_back("b saw " + std::to_string(*level)); });
    Subscription all = owner.subscribe([&] { heard.push_back("owner"); });

    level.set(2);
    EXPECT_EQ(level.get(), 2);
    level.set(2);  // equal values still notify
    b.reset();
    level.modify([](int& v) { v += 5; });
    EXPECT_EQ(*level, 7);
    all = Subscription{};
    level.set(8);
    EXPECT_EQ(heard, (std::vector<std::string>{"a saw 1", "b saw 1", "owner", "a saw 2", "b saw 2",
                                               "owner", "a saw 2", "owner", "a saw 7"}));
}

TEST(Observable, CallbacksMayUnsubscribeOthersAndTokensMayOutliveTheSignal) {
    auto level = std::make_unique<Published<int>>();
    int first = 0;
    int second = 0;
    Subscription later;
    Subscription early = level->subscribe([&] {
        ++first;
        later.reset();  // removed during the emission: not called any more
    });
    later = level->subscribe([&] { ++second; });
    level->set(1);
    level->set(2);
    EXPECT_EQ(first, 2);
    EXPECT_EQ(second, 0);
    level.reset();
    early.reset();  // the signal is gone: nothing happens
}

}  // namespace
}  // namespace lumora
