#include "modules/processors/ProcessorKit.h"

#include <cmath>

#include "engine/Engine.h"

namespace quillmer {

int roundToInt(double v) { return static_cast<int>(std::nearbyint(v)); }

std::vector<MasterChoice> placedInstances(Engine& engine, ModuleTypeId type) {
    std::vector<MasterChoice> list;
    engine.typeSlot(type).forEachActive([&](Module& m) { list.push_back({m.Index, m.Name}); });
    return list;
}

Module* placedInstance(Engine& engine, ModuleTypeId type, int index) {
    if (index < 0 || index > 32767) return nullptr;
    Module* m = engine.typeSlot(type).at(static_cast<int16_t>(index));
    return m != nullptr && m->Active != 0 ? m : nullptr;
}

size_t instanceSlots(Engine& engine, ModuleTypeId type) { return engine.typeSlot(type).slotCount(); }

}  // namespace quillmer
