#pragma once

#include <QObject>
#include <functional>
#include <string>

namespace lumora::app {

// URLs the system opens with this application (on macOS, lumora:// links through the get-URL
// Apple event, which Qt hands over as a file-open event) reach the handler as text.
class UrlOpenEvents final : public QObject {
  public:
    explicit UrlOpenEvents(std::function<void(const std::string&)> handler)
        : handler_(std::move(handler)) {}

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    std::function<void(const std::string&)> handler_;
};

}  // namespace lumora::app
