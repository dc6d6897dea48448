#include <gtest/gtest.h>
#include <signal.h>

#include <QCoreApplication>
#include <QThread>
#include <vector>

#include "RuntimeTestSupport.h"
#include "runtime/SignalBridge.h"

namespace lumora::app {
namespace {

class SignalBridgeTest : public test::QtAppTest {};

TEST_F(SignalBridgeTest, TerminationSignalsBecomeCallbacksOnTheMainThread) {
    std::vector<int> received;
    bool offMain = false;
    QThread* mainThread = QThread::currentThread();
    SignalBridge bridge([&](int signalNumber) {
        if (QThread::currentThread() != mainThread) offMain = true;
        received.push_back(signalNumber);
    });
    ASSERT_TRUE(bridge.installed());

    ASSERT_EQ(::raise(SIGHUP), 0);
    EXPECT_TRUE(received.empty()) << "nothing runs inside the asynchronous handler";
    ASSERT_TRUE(spinUntil([&] { return received.size() == 1; }));
    EXPECT_EQ(received, std::vector<int>{SIGHUP});

    ASSERT_EQ(::raise(SIGTERM), 0);
    ASSERT_EQ(::raise(SIGINT), 0);
    ASSERT_TRUE(spinUntil([&] { return received.size() == 3; }));
    EXPECT_EQ(received, (std::vector<int>{SIGHUP, SIGTERM, SIGINT}));
    EXPECT_FALSE(offMain);
}

TEST_F(SignalBridgeTest, ThePreviousHandlersReturnWithTheBridge) {
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    struct sigaction original {};
    ASSERT_EQ(::sigaction(SIGHUP, &ignore, &original), 0);
    {
        SignalBridge bridge([](int) {});
        ASSERT_TRUE(bridge.installed());
        struct sigaction during {};
        ::sigaction(SIGHUP, nullptr, &during);
        EXPECT_NE(during.sa_handler, SIG_IGN);
    }
    struct sigaction after {};
    ::sigaction(SIGHUP, nullptr, &after);
    EXPECT_EQ(after.sa_handler, SIG_IGN);
    ::sigaction(SIGHUP, &original, nullptr);

    // A new bridge may follow the old one.
    std::vector<int> received;
    SignalBridge next([&](int signalNumber) { received.push_back(signalNumber); });
    ASSERT_TRUE(next.installed());
    ASSERT_EQ(::raise(SIGINT), 0);
    ASSERT_TRUE(spinUntil([&] { return !received.empty(); }));
    EXPECT_EQ(received, std::vector<int>{SIGINT});
}

}  // namespace
}  // namespace lumora::app
