#include "modules/panels/Chain.h"

#include "engine/Engine.h"

namespace quillmer {

Chain::Chain() : Module(*typeIdByName("Chain"), kInputs) {}

void Chain::update(Engine& engine) {
    if (in(1) == 0) {
        armed_ = true;
        return;
    }
    if (!armed_) return;
    armed_ = false;
    if (engine.options.triggersOff || in(0) == 0) return;
    engine.seams().requestChainLoad(fileName);
}

void Chain::writeBody(ByteWriter& out, const OutputNames& names) const {
    out.str(fileName);
    out.str(note);
    Module::writeBody(out, names);
}

void Chain::readBody(ByteReader& in, OutputNames& names) {
    fileName = in.str();
    note = in.str();
    Module::readBody(in, names);
}

}  // namespace quillmer
