#pragma once
// The bare tables Run8..Run128: N stage values read out by the Stage input, with no
// editing surface of their own; the Fill dialog fills them. Values are per snapshot.
// Needs the engine lock.

#include <cstdint>
#include <string>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/Module.h"
#include "modules/sequencers/FillTarget.h"

namespace quillmer {

class RunSequencer : public Module, public FillTarget {
public:
    static constexpr InputSpec kInputs[] = {{" Stage", "Stage Select", sysbus::Off}};
    static constexpr std::string_view kStageTip = "Step#";
    static constexpr std::string_view kOutputTip = "Output";

    RunSequencer(ModuleTypeId type, int stages);

    int stageCount() const { return static_cast<int>(StageValues.size()); }
    int reduceStage(int value) const;
    int stageValue(int stage) const { return StageValues.at(static_cast<size_t>(stage)); }
    int CurrentStage = 0;
    int ShownOutput = 0;
    void SendOut();

    int fillStages() const override { return stageCount(); }
    void copyToFill(std::span<uint8_t> hold) const override;
    void UpdateSeq(std::span<const uint8_t> hold, int fillScale) override;

    // Per snapshot: N bytes of stage values.
    void writeFields(ByteWriter& out) const override { out.raw(storedRows_); }
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    std::vector<int16_t> StageValues;
    std::vector<uint8_t> storedRows_;  // [snapshot][stage]
    bool powerOfTwo_;
};

template <int N>
class Run final : public RunSequencer {
public:
    Run() : RunSequencer(typeId(), N) {}

private:
    static ModuleTypeId typeId() {
        static const ModuleTypeId id = *typeIdByName("Run" + std::to_string(N));
        return id;
    }
};

using Run8 = Run<8>;
using Run12 = Run<12>;
using Run16 = Run<16>;
using Run24 = Run<24>;
using Run32 = Run<32>;
using Run48 = Run<48>;
using Run64 = Run<64>;
using Run128 = Run<128>;

}  // namespace quillmer
