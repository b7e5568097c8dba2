#include "modules/processors/Arithmetic.h"

namespace quillmer {

namespace {
const ModuleTypeId kDivId = *typeIdByName("Div");
}

Div::Div() : Module(kDivId, kInputs) {}

void Div::update(Engine&) {
    if (sameInputsAsLastUpdate(2)) return;
    const int divisor = in(1);
    setOutput(divisor == 0 ? 0 : in(0) / divisor);
}

}  // namespace quillmer
