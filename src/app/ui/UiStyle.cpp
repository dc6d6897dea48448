#include "UiStyle.h"

#include <QApplication>
#include <QFontDatabase>
#include <QLabel>
#include <QPalette>

namespace lumora::ui::style {

namespace {

// The system's text sizes on the platform the panel was drawn for: body 13, caption 11.
constexpr int kBodyPixels = 13;
constexpr int kSubheadlinePixels = 12;
constexpr int kCaptionPixels = 11;
constexpr int kBadgePixels = 10;

QFont sized(int pixels, QFont::Weight weight = QFont::Normal) {
    QFont font = QApplication::font();
    font.setPixelSize(pixels);
    font.setWeight(weight);
    return font;
}

}  // namespace

QFont bodyFont() {
    return sized(kBodyPixels);
}
QFont headlineFont() {
    return sized(kBodyPixels, QFont::Bold);
}
QFont subheadlineFont() {
    return sized(kSubheadlinePixels, QFont::DemiBold);
}
QFont captionFont() {
    return sized(kCaptionPixels);
}

QFont monospacedCaptionFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(kCaptionPixels);
    return font;
}

QColor labelColor() {
    return QApplication::palette().color(QPalette::WindowText);
}

QColor secondaryLabelColor() {
    QColor color = labelColor();
    color.setAlphaF(0.55f);
    return color;
}

QColor warningColor() {
    return QColor(0xE6, 0x7E, 0x00);
}
QColor accentColor() {
    return QColor(0x0A, 0x84, 0xFF);
}

void setTextColor(QWidget* widget, const QColor& color) {
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    palette.setColor(QPalette::Text, color);
    widget->setPalette(palette);
}

QLabel* makeLabel(const QString& text, const QFont& font, QWidget* parent, bool wrap) {
    auto* label = new QLabel(text, parent);
    label->setFont(font);
    label->setWordWrap(wrap);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QVBoxLayout* makeBlockLayout(QFrame* block, const QString& objectName) {
    block->setObjectName(objectName);
    block->setAttribute(Qt::WA_StyledBackground);
    auto* layout = new QVBoxLayout(block);
    layout->setContentsMargins(kCardPadding, kCardPadding, kCardPadding, kCardPadding);
    layout->setSpacing(kRowSpacing);
    return layout;
}

QLabel* makeHeading(const QString& text, QWidget* parent) {
    return makeLabel(text, subheadlineFont(), parent);
}

QLabel* makeBadge(const QString& text, QWidget* parent) {
    QFont font = captionFont();
    font.setPixelSize(kBadgePixels);
    auto* badge = makeLabel(text, font, parent);
    badge->setObjectName(QStringLiteral("badge"));
    badge->setAlignment(Qt::AlignCenter);
    badge->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return badge;
}

QString panelStyleSheet() {
    return QStringLiteral(
               "QFrame#card, QFrame#section {"
               "  background: rgba(0, 0, 0, 0.045);"
               "  border: 1px solid rgba(0, 0, 0, 0.07);"
               "  border-radius: %1px;"
               "}"
               "QLabel#badge {"
               "  background: rgba(10, 132, 255, 0.14);"
               "  color: #0a5fc2;"
               "  border-radius: 7px;"
               "  padding: 0px 6px;"
               "}"
               "QPushButton#switchOff {"
               "  border: none;"
               "  padding: 1px 0px;"
               "  color: #0a6fdc;"
               "  text-align: left;"
               "}"
               "QPushButton#switchOff:hover { text-decoration: underline; }"
               "QLabel#badge[tone=\"muted\"] {"
               "  background: rgba(0, 0, 0, 0.09);"
               "  color: rgba(0, 0, 0, 0.6);"
               "}")
        .arg(kCardRadius);
}

}  // namespace lumora::ui::style
