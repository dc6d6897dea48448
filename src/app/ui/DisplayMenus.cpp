#include "DisplayMenus.h"

#include <QAction>
#include <QMenu>
#include <array>
#include <vector>

#include "PanelText.h"

namespace lumora::ui {

namespace {

// DDC/CI power modes (VCP 0xD6): on, and the standby a monitor wakes from by itself.
const QString kCheck = QStringLiteral("\u2713 ");

QString utf8(const std::string& text) {
    return QString::fromStdString(text);
}

// A heading inside a menu; disabled so that it cannot be chosen.
void addHeading(QMenu& menu, const QString& text) {
    QAction* heading = menu.addAction(text);
    heading->setEnabled(false);
    QFont font = heading->font();
    font.setBold(true);
    heading->setFont(font);
}

void addModes(QMenu& menu, UiContext& context, DisplayID display, const QString& heading,
              const std::vector<DisplayMode>& modes, const std::optional<DisplayMode>& current) {
    if (modes.empty()) return;
    if (!menu.isEmpty()) menu.addSeparator();
    addHeading(menu, heading);
    for (const DisplayMode& mode : modes) {
        const bool isCurrent = current && *current == mode;
        QAction* action = menu.addAction((isCurrent ? kCheck : QString()) + utf8(mode.label()));
        QObject::connect(action, &QAction::triggered, &menu,
                         [&context, display, mode] { context.model.setMode(display, mode); });
    }
}

// Empties a menu, submenus included (clear() leaves them as children).
void reset(QMenu& menu) {
    menu.clear();
    for (QMenu* submenu : menu.findChildren<QMenu*>(Qt::FindDirectChildrenOnly))
        delete submenu;
}

void addMirrorMenu(QMenu& menu, AppModel& model, DisplayID id) {
    QMenu* mirror = menu.addMenu(QStringLiteral("Зеркалировать на"));
    for (const DisplayInfo& other : model.displays().get()) {
        if (other.id == id || !other.isOnline) continue;
        QAction* action = mirror->addAction(utf8(other.name));
        QObject::connect(action, &QAction::triggered, &menu,
                         [&model, id, to = other.id] { model.mirror(id, to); });
    }
    if (!mirror->isEmpty()) mirror->addSeparator();
    QAction* noMirror = mirror->addAction(QStringLiteral("Не зеркалировать"));
    QObject::connect(noMirror, &QAction::triggered, &menu, [&model, id] { model.mirror(id, 0); });
}

}  // namespace

void fillModeMenu(QMenu& menu, UiContext& context, DisplayID display) {
    reset(menu);
    // While a HiDPI session runs, the backing virtual display's modes are the monitor's.
    const DisplayID id = context.model.shownDisplay(display);
    std::vector<DisplayMode> hidpi;
    std::vector<DisplayMode> plain;
    for (const DisplayMode& mode : context.displays.modes(id)) {
        (mode.hiDPI() ? hidpi : plain).push_back(mode);
    }
    const std::optional<DisplayMode> current = context.displays.currentMode(id);
    addModes(menu, context, display, QStringLiteral("HiDPI"), hidpi, current);
    addModes(menu, context, display, QStringLiteral("Обычные"), plain, current);
}

void fillMoreMenu(QMenu& menu, UiContext& context, const CardShape& shape) {
    reset(menu);
    const DisplayID id = shape.display.id;
    AppModel& model = context.model;

    const Capabilities can = model.capabilities();
    if (can.virtualDisplays) {
        QAction* hidpi = menu.addAction(QStringLiteral("HiDPI (чёткий Retina-режим)"));
        hidpi->setCheckable(true);
        hidpi->setChecked(model.hidpiOn()->contains(id));
        QObject::connect(hidpi, &QAction::triggered, &menu,
                         [&model, id](bool on) { model.setHiDPI(id, on); });
    }
    if (can.setMain) {
        QAction* main = menu.addAction(QStringLiteral("Сделать главным"));
        QObject::connect(main, &QAction::triggered, &menu, [&model, id] { model.setMain(id); });
    }
    if (can.mirror) addMirrorMenu(menu, model, id);

    // Only a monitor that answered over DDC/CI gets the commands: elsewhere they would go
    // nowhere without a word.
    if (shape.ddc && !shape.inputs.empty()) {
        QMenu* input = menu.addMenu(QStringLiteral("Вход"));
        input->setObjectName(QStringLiteral("inputs"));
        for (const auto& [title, value] : shape.inputs) {
            QAction* action = input->addAction(title);
            QObject::connect(action, &QAction::triggered, &menu,
                             [&model, id, raw = value] { model.ddc().send(id, VCP::input, raw); });
        }
    }
    if (shape.ddc && shape.power) {
        QMenu* power = menu.addMenu(QStringLiteral("Питание (DDC)"));
        const std::array<std::pair<QString, std::uint16_t>, 2> modes{{
            {QStringLiteral("Включить"), kDdcPowerOn},
            {QStringLiteral("Режим ожидания"), kDdcPowerStandby},
        }};
        for (const auto& [title, value] : modes) {
            QAction* action = power->addAction(title);
            QObject::connect(action, &QAction::triggered, &menu,
                             [&model, id, raw = value] { model.ddc().send(id, VCP::power, raw); });
        }
    }

    menu.addSeparator();
    QAction* info = menu.addAction(displayInfoLine(shape.display));
    info->setObjectName(QStringLiteral("info"));
    info->setEnabled(false);
}

}  // namespace lumora::ui
