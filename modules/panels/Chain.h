#pragma once
// Chain: on a rising strobe, load the next patch file, or leave the program. The load runs
// outside the tick, shortly after.

#include <string>

#include "engine/Module.h"

namespace quillmer {

class Chain final : public Module {
public:
    static constexpr InputSpec kInputs[] = {
        {" Enable", "Must be NZ for module to function", sysbus::Off},
        {" Strobe", "Strobe: 0 to NZ loads next file (or exits)", sysbus::Off},
    };
    static constexpr const char* kExit = "Exit Quillmer";

    Chain();
    std::string fileName = kExit;  // the next patch, or "Exit Quillmer"
    std::string note;              // a second text the record keeps

    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void update(Engine& engine) override;

private:
    bool armed_ = false;  // set while the strobe is 0
};

}  // namespace quillmer
