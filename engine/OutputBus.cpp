#include "engine/OutputBus.h"

#include <cstdio>

namespace quillmer {

SystemOutput systemOutput(BusId id) {
    char text[16];
    switch (id) {
        case sysbus::Off: return {" Off (0)", 0};
        case sysbus::On: return {" On (127)", 127};
        case sysbus::Mid: return {" mid (64)", 64};
        case sysbus::Begin: return {"~ Begin", 0};
        case sysbus::End: return {"~ End", 0};
        case sysbus::Page: return {"~ Page", 0};
        case sysbus::KeyChar: return {"~ KeyChar", 0};
        case sysbus::KeyCtrl: return {"~ KeyCtrl", 0};
        case sysbus::KeyDown: return {"~ KeyDown", 0};
        case sysbus::Run: return {"~ Run", 0};
        case sysbus::Stop: return {"~ Stop", 127};
        case sysbus::TLoad: return {"~ TLoad", 0};
        case sysbus::TStart: return {"~ TStart", 0};
        case sysbus::Turbo: return {"~ Turbo", 0};
        case sysbus::Whole: return {"~ Whole", 0};
        default: break;
    }
    if (id >= sysbus::FirstConstant && id < sysbus::Begin) {
        const int value = id - sysbus::FirstConstant;
        std::snprintf(text, sizeof text, "~ %3d", value);
        return {text, static_cast<uint8_t>(value)};
    }
    if (id >= sysbus::FirstSlider && id < kSystemOutputCount) {
        std::snprintf(text, sizeof text, "~ slider %2d", id - sysbus::FirstSlider + 1);
        return {text, 0};
    }
    return {"", 0};
}

void OutputBus::writeSystemValues() {
    for (BusId id = 0; id < kSystemOutputCount; ++id) values_[id] = systemOutput(id).initialValue;
}

}  // namespace quillmer
