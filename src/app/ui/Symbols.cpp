#include "Symbols.h"

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QSvgRenderer>
#include <array>

// Resources of a static library are registered by hand, once.
static void initSymbolResources() {
    Q_INIT_RESOURCE(symbols);
}

namespace lumora::ui {

namespace {

// Pixel sizes put into an icon, so that it stays sharp in menus and buttons on ordinary and on
// double-density screens; the icon picks the nearest.
constexpr std::array kIconSizes{16, 20, 24, 32, 40, 48, 64, 96};

QString resourcePath(const QString& name) {
    return QStringLiteral(":/symbols/%1.svg").arg(name);
}

void ensureResources() {
    static const bool loaded = [] {
        initSymbolResources();
        return true;
    }();
    (void)loaded;
}

}  // namespace

bool hasSymbol(const QString& name) {
    ensureResources();
    // Names are dotted words; anything else could reach outside the symbol folder.
    static const QRegularExpression kName(QStringLiteral("^[a-z0-9]+(\\.[a-z0-9]+)*$"));
    return kName.match(name).hasMatch() && QFile::exists(resourcePath(name));
}

QPixmap symbolPixmap(const QString& name, QSize size, const QColor& tint, qreal devicePixelRatio) {
    if (!hasSymbol(name) || size.isEmpty()) return {};
    QSvgRenderer renderer(resourcePath(name));
    if (!renderer.isValid()) return {};

    const QSize pixels = size * devicePixelRatio;
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(pixels)));
        // The drawing is black; keep its coverage and give it the tint.
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), tint);
    }
    QPixmap pixmap = QPixmap::fromImage(image);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

QIcon symbolIcon(const QString& name, const QColor& tint) {
    if (!hasSymbol(name)) return {};
    QIcon icon;
    for (int side : kIconSizes) {
        icon.addPixmap(symbolPixmap(name, QSize(side, side), tint, 1.0));
    }
    return icon;
}

}  // namespace lumora::ui
