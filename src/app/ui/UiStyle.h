#pragma once

#include <QColor>
#include <QFont>
#include <QFrame>
#include <QString>
#include <QVBoxLayout>

class QLabel;
class QWidget;

namespace lumora::ui {

// Metrics, fonts and colours shared by the panel's views. Sizes are logical pixels, the
// points of the menu-bar panel.
namespace style {

inline constexpr int kPanelWidth = 380;
inline constexpr int kPadding = 12;
inline constexpr int kSectionSpacing = 10;
// Inside a card or a settings section.
inline constexpr int kCardPadding = 10;
inline constexpr int kRowSpacing = 6;
inline constexpr int kRowIconSize = 16;
inline constexpr int kCardRadius = 10;

QFont bodyFont();
QFont headlineFont();
QFont subheadlineFont();  // semibold, for section headings
QFont captionFont();
QFont monospacedCaptionFont();

QColor labelColor();
QColor secondaryLabelColor();
QColor warningColor();  // the orange of a missing permission
QColor accentColor();

// A label in the given font and colour; word-wrapped when `wrap` is set.
QLabel* makeLabel(const QString& text, const QFont& font, QWidget* parent, bool wrap = false);
// A section heading: "Клавиши", "Крышка и сон", ...
QLabel* makeHeading(const QString& text, QWidget* parent);
// Makes `block` one of the panel's rounded blocks (objectName "card" or "section", styled by
// panelStyleSheet) and gives it its padded vertical layout.
QVBoxLayout* makeBlockLayout(QFrame* block, const QString& objectName);
void setTextColor(QWidget* widget, const QColor& color);
// A small capsule label: "главный", "HiDPI", ...
QLabel* makeBadge(const QString& text, QWidget* parent);

// The style sheet of the whole panel: card backgrounds, badges, small buttons.
QString panelStyleSheet();

}  // namespace style
}  // namespace lumora::ui
