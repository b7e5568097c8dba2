#include "modules/sequencers/Switches.h"

namespace quillmer {

SwitchRouter::SwitchRouter(ModuleTypeId type, int count)
    : Module(type, std::span<const InputSpec>(switches::kAllInputs.data(), static_cast<size_t>(count + 1))),
      count_(count) {}

void SwitchRouter::update(Engine&) {
    const int s = in(kSwitch) & (count_ - 1);
    if (s != Selected) {
        Selected = s;
        viewChanged = true;
    }
    const int v = in(kSwitch + 1 + s);
    if (v == ShownValue) return;
    ShownValue = v;
    setOutput(v);
    viewChanged = true;
}

}  // namespace quillmer
