#pragma once

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "backends/linux/wayland/support/ServerProcess.h"
#include "logind/LogindClient.h"
#include "support/TestSupport.h"

namespace lumora::test {

using Lines = std::vector<std::string>;
using Calls = std::vector<Lines>;

inline const QString kLogindPath = QStringLiteral("/org/freedesktop/login1");
inline const QString kManager = QStringLiteral("org.freedesktop.login1.Manager");

// A private message bus with python3-dbusmock's logind template on it unless asked for a bus
// without logind. Both processes stop with the object.
class LogindBus {
  public:
    // Why the bus cannot run on this machine; empty when it can.
    static std::string missing();

    explicit LogindBus(bool withLogind = true);
    ~LogindBus();
    LogindBus(const LogindBus&) = delete;
    LogindBus& operator=(const LogindBus&) = delete;

    // Empty when everything runs; otherwise what went wrong.
    std::string failure;

    std::shared_ptr<lx::LogindClient> client(Lines& lines, std::string sessionId = {}) const;
    // Calls a method on the mock's object `path` (org.freedesktop.DBus.Mock by default);
    // an error fails the test.
    QDBusMessage call(const QString& path, const QString& method, const QVariantList& args = {},
                      const QString& interface = QStringLiteral("org.freedesktop.DBus.Mock")) const;
    // A session of this user on seat0; its object path.
    QString addSession(const QString& id) const;
    // The arguments, as text, of each call of `method` the object `path` received.
    Calls calls(const QString& path, const QString& method) const;
    [[nodiscard]] bool inhibited() const { return inhibitors() > 0; }
    [[nodiscard]] int inhibitors() const;
    // Stops logind and starts a new one (an update restarting it): it remembers nothing.
    void restartLogind();

  private:
    void startLogind();

    wltest::PrivateBus bus_;
    std::optional<wltest::ChildProcess> logind_;  // stopped before the bus
    QString name_;
};

// A client with no bus at all, logging into `lines`.
std::shared_ptr<lx::LogindClient> offlineClient(Lines& lines);

// Runs the main thread's event loop until `done` holds; false when `limit` passes first.
bool spinUntil(const std::function<bool()>& done,
               std::chrono::milliseconds limit = std::chrono::seconds(5));

// A test with a fresh private bus and logind mock; skipped where they cannot run.
class LogindTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (const std::string why = LogindBus::missing(); !why.empty()) GTEST_SKIP() << why;
        bus_ = std::make_unique<LogindBus>();
        ASSERT_EQ(bus_->failure, "");
    }

    std::unique_ptr<LogindBus> bus_;
    Lines log_;
};

}  // namespace lumora::test
