#include "PanelText.h"

namespace lumora::ui {

namespace {

const QString kTimes = QStringLiteral("\u00D7");
const QString kDot = QStringLiteral(" \u00B7 ");

QString utf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QString lidText(LidMode mode, std::optional<std::int64_t> angle) {
    const QString anglePart =
        angle ? kDot + QString::number(*angle) + QStringLiteral("\u00B0") : QString();
    switch (mode) {
        case LidMode::unknown:
            return QStringLiteral("Крышка: ?");
        case LidMode::open:
            return QStringLiteral("Крышка открыта") + anglePart;
        case LidMode::closedExternal:
            return QStringLiteral("Закрыта, внешний монитор") + anglePart;
        case LidMode::closedAlone:
            return QStringLiteral("Закрыта") + anglePart;
    }
    return QStringLiteral("Крышка: ?");
}

QString lidSymbol(LidMode mode) {
    return mode == LidMode::open ? QStringLiteral("laptopcomputer")
                                 : QStringLiteral("laptopcomputer.slash");
}

QString displayInfoLine(const DisplayInfo& display) {
    return QStringLiteral("ID ") + QString::number(display.id) + kDot + QStringLiteral("вендор ") +
           QString::number(display.vendor) + kDot + QStringLiteral("модель ") +
           QString::number(display.model);
}

QString virtualSizeText(const VirtualScreenConfig& config) {
    QString text = QString::number(config.width) + kTimes + QString::number(config.height);
    if (config.hiDPI) text += QStringLiteral(" HiDPI");
    return text;
}

QString shortcutButtonText(ShortcutAction action, std::optional<ShortcutAction> recording,
                           const ShortcutMap& shortcuts, KeyNames names) {
    if (recording == action) return QStringLiteral("Нажмите сочетание…");
    auto found = shortcuts.find(action);
    if (found == shortcuts.end()) return QStringLiteral("—");
    return utf8(shownLabel(found->second, names));
}

}  // namespace lumora::ui
