#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <functional>

namespace lumora::lx {

// One subscription to a signal on the bus; destroying it ends the subscription. QtDBus
// delivers to slots on the thread of the receiver, here the main thread's event loop.
class LogindSignal final : public QObject {
    Q_OBJECT

  public:
    using Handler = std::function<void(const QDBusMessage&)>;

    LogindSignal(QDBusConnection bus, QString service, QString path, QString interface,
                 QString name, Handler handler);
    ~LogindSignal() override;
    LogindSignal(const LogindSignal&) = delete;
    LogindSignal& operator=(const LogindSignal&) = delete;

    // Whether the bus took the subscription.
    [[nodiscard]] bool connected() const { return connected_; }

  public Q_SLOTS:
    void deliver(const QDBusMessage& message);

  private:
    QDBusConnection bus_;
    QString service_;
    QString path_;
    QString interface_;
    QString name_;
    Handler handler_;
    bool connected_ = false;
};

}  // namespace lumora::lx
