#include "modules/processors/Arithmetic.h"

namespace quillmer {

namespace {
const ModuleTypeId kDivId = *typeIdByName("Div");
}

Div::Div() : Module(kDivId, kInputs) {}

// A divisor of 0 leaves the output alone: Div holds its last value, as Modu does.
void Div::update(Engine&) {
    const int divisor = in(1);
    if (divisor != 0) setOutput(in(0) / divisor);
}

}  // namespace quillmer
