#include "UrlOpenEvents.h"

#include <QFileOpenEvent>
#include <QUrl>

namespace lumora::app {

bool UrlOpenEvents::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::FileOpen) return QObject::eventFilter(watched, event);
    const QUrl url = static_cast<QFileOpenEvent*>(event)->url();
    if (url.scheme() != QStringLiteral("lumora")) return false;
    handler_(url.toString(QUrl::FullyEncoded).toStdString());
    return true;
}

}  // namespace lumora::app
