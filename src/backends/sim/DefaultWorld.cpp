#include "sim/World.h"
#include "sim/WorldResolve.h"

namespace lumora::sim {

namespace {

WorldDisplay laptopPanel() {
    WorldDisplay d;
    d.id = 1;
    d.name = "Built-in Retina Display";
    d.builtin = true;
    d.vendor = 1552;
    d.model = 41240;
    d.origin = Point{0, 0};
    d.sizeMM = Size{302, 196};
    d.modes = {
        {10, 1512, 982, 3024, 1964, 120, true},   {11, 1512, 982, 3024, 1964, 60, true},
        {12, 1800, 1169, 3600, 2338, 120, true},  {13, 1352, 878, 2704, 1756, 120, true},
        {14, 1147, 745, 2294, 1490, 120, true},   {15, 1512, 982, 1512, 982, 120, true},
        {16, 3024, 1964, 3024, 1964, 120, false},
    };
    d.mode = 10;
    d.backlight = 0.5;
    return d;
}

WorldDisplay officeMonitor() {
    WorldDisplay d;
    d.id = 2;
    d.name = "Office Monitor";
    d.vendor = 4268;
    d.model = 41234;
    d.serial = 12345;
    d.origin = Point{1512, 0};
    d.sizeMM = Size{597, 336};
    d.modes = {
        {20, 2560, 1440, 2560, 1440, 60, true}, {21, 1920, 1080, 1920, 1080, 60, true},
        {22, 1280, 720, 2560, 1440, 60, true},  {23, 2560, 1440, 2560, 1440, 59.94, true},
        {24, 1024, 768, 1024, 768, 60, false},
    };
    d.mode = 20;
    WorldDdc ddc;
    ddc.vcp = {
        {0x10, {50, 100}}, {0x12, {75, 100}}, {0x62, {30, 100}}, {0x60, {15, 255}}, {0xD6, {1, 5}}};
    ddc.capabilities =
        "(prot(monitor)type(lcd)model(Office Monitor)cmds(01 02 03 07 0C E3 F3)"
        "vcp(02 04 05 08 10 12 14(05 08 0B) 16 18 1A 52 60(0F 11 12) 62 AC AE B2 B6 C6 C8 "
        "D6(01 04 05) DF)mswhql(1)mccs_ver(2.2))";
    d.ddc = ddc;
    return d;
}

WorldDisplay projector() {
    WorldDisplay d;
    d.id = 3;
    d.name = "Projector";
    d.vendor = 9999;
    d.model = 7;
    d.origin = Point{4072, 0};
    d.sizeMM = Size{1771, 996};
    d.modes = {{30, 1920, 1080, 1920, 1080, 60, true}, {31, 1280, 720, 1280, 720, 60, true}};
    d.mode = 30;
    return d;
}

}  // namespace

World defaultWorld() {
    World world;
    world.main = 1;
    world.displays = {laptopPanel(), officeMonitor(), projector()};
    world.lightLux = 300;  // an office
    resolveWorld(world);
    return world;
}

}  // namespace lumora::sim
