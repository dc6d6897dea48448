#include "CardShape.h"

#include "ddc/VCP.h"

namespace lumora::ui {

namespace {

// A monitor that lists its codes gets the rows and menus of those only; one without a
// usable capabilities string gets them all, as monitors mostly have them.
void ddcControls(CardShape& shape, const std::optional<DdcCapabilities>& caps) {
    const auto listed = [&caps](VCP vcp) { return !caps || caps->lists(code(vcp)); };
    shape.contrast = listed(VCP::contrast);
    shape.volume = listed(VCP::volume);
    shape.power = listed(VCP::power);
    if (!listed(VCP::input)) return;
    // The sources the monitor names, under their MCCS names; a bare code names none.
    if (caps && !caps->vcp.at(code(VCP::input)).empty()) {
        for (std::uint8_t value : caps->vcp.at(code(VCP::input)))
            shape.inputs.emplace_back(QString::fromStdString(inputSourceName(value)), value);
        return;
    }
    for (const DdcInput& source : ddcInputs) {
        shape.inputs.emplace_back(
            QString::fromUtf8(source.label.data(), static_cast<qsizetype>(source.label.size())),
            source.value);
    }
}

}  // namespace

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
    if (shape.ddc) ddcControls(shape, facts.ddcCapabilities);
    // The hint about the monitor's DDC/CI setting means nothing for a virtual display.
    shape.softwareCaption = facts.brightness == BrightnessPath::software && !display.isVirtual;
    return shape;
}

}  // namespace lumora::ui
