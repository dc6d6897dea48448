#include <gtest/gtest.h>
#include <signal.h>

#include <QThread>
#include <vector>

#include "RuntimeTestSupport.h"
#include "runtime/SignalBridge.h"

namespace lumora::app {
namespace {

class SignalBridgeTest : public test::QtAppTest {};

TEST_F(SignalBridgeTest, SignalsBecomeMainThreadCallbacksAndThePreviousHandlersReturn) {
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    struct sigaction original {};
    ASSERT_EQ(::sigaction(SIGHUP, &ignore, &original), 0);
    std::vector<int> received;
    bool offMain = false;
    QThread* mainThread = QThread::currentThread();
    {
        SignalBridge bridge([&](int signalNumber) {
            offMain = offMain || QThread::currentThread() != mainThread;
            received.push_back(signalNumber);
        });
        ASSERT_TRUE(bridge.installed());
        ASSERT_EQ(::raise(SIGHUP), 0);
        EXPECT_TRUE(received.empty()) << "nothing runs inside the asynchronous handler";
        ASSERT_EQ(::raise(SIGTERM), 0);
        ASSERT_EQ(::raise(SIGINT), 0);
        ASSERT_TRUE(spinUntil([&] { return received.size() == 3; }));
    }
    EXPECT_EQ(received, (std::vector<int>{SIGHUP, SIGTERM, SIGINT}));
    EXPECT_FALSE(offMain);
    struct sigaction after {};
    ::sigaction(SIGHUP, nullptr, &after);
    EXPECT_EQ(after.sa_handler, SIG_IGN);
    ::sigaction(SIGHUP, &original, nullptr);

    // A new bridge may follow the old one.
    SignalBridge next([&](int signalNumber) { received.push_back(signalNumber); });
    ASSERT_TRUE(next.installed());
    ASSERT_EQ(::raise(SIGINT), 0);
    ASSERT_TRUE(spinUntil([&] { return received.size() == 4; }));
    EXPECT_EQ(received.back(), SIGINT);
}

}  // namespace
}  // namespace lumora::app
