#include "CardShape.h"

namespace lumora::ui {

CardShape cardShape(const DisplayInfo& display, const CardFacts& facts) {
    CardShape shape;
    shape.display = display;
    shape.symbol = display.isBuiltin   ? QStringLiteral("laptopcomputer")
                   : display.isVirtual ? QStringLiteral("rectangle.dashed")
                                       : QStringLiteral("display");

    // The built-in panel is listed even while absent; being offline means someone switched
    // it off: the lid logic while the lid is closed, otherwise the user through us.
    const bool lidClosed =
        facts.lidMode == LidMode::closedExternal || facts.lidMode == LidMode::closedAlone;
    const bool switchedOff = !display.isOnline && (facts.switchedOffByUs || display.isBuiltin);
    const bool offByLid = display.isBuiltin && !display.isOnline && lidClosed;

    if (display.isMain) shape.badges << QStringLiteral("главный");
    if (display.isVirtual) shape.badges << QStringLiteral("виртуальный");
    if (facts.hidpiOn) shape.badges << QStringLiteral("HiDPI");
    if (switchedOff && !offByLid) shape.badges << QStringLiteral("отключён");
    if (offByLid) shape.statusText = QStringLiteral("Выключен: крышка закрыта");

    shape.offerDisconnect = display.isOnline && facts.can.enableDisable;
    // While the lid is closed the lid logic owns the panel and would switch it off again.
    shape.offerConnect = switchedOff && !offByLid;
    shape.controls = display.isOnline;
    shape.hidpi = facts.hidpiOn;

    shape.modes = facts.can.setMode;
    shape.colour = facts.can.gamma;
    shape.brightness = facts.brightness;
    shape.ddc = facts.brightness == BrightnessPath::ddc;
    // The hint about the monitor's DDC/CI setting means nothing for a virtual display.
    shape.softwareCaption = facts.brightness == BrightnessPath::software && !display.isVirtual;
    return shape;
}

}  // namespace lumora::ui
