#pragma once
// Sfile: a sequencer data file held in the patch as steps, read by position. The step is
// Bank x 128 + Step, taken modulo the data's length, so a row of up to 16384 steps plays
// from two counters. Needs the engine lock.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/Module.h"
#include "engine/StepData.h"

namespace quillmer {

class Sfile final : public Module, public StepData {
public:
    static constexpr InputSpec kInputs[] = {
        {" Step", "Step within the bank (0-127)", sysbus::Off},
        {" Bank", "Bank: each adds 128 steps", sysbus::Off},
        {" Offset", "Added to the step's value (result cut to 127)", sysbus::Off},
        {" Hold", "NZ holds the output", sysbus::Off},
    };
    static constexpr size_t kMaxSteps = 128 * 128;

    Sfile();

    const std::vector<uint8_t>& data() const { return data_; }
    // Replaces the data (each value cut to 0..127); at most kMaxSteps are kept.
    void setData(std::vector<uint8_t> values);
    // Reads a file of raw bytes, one step each, every byte AND 127. An empty, too long or
    // unreadable file leaves the data as it was and returns false with `error` naming it.
    bool loadFile(const std::string& path, std::string& error);
    std::string source;   // the file last read, for the panel
    std::string problem;  // why the last file chosen wasn't read; empty after a good read
    int currentStep() const { return step_; }

    int dataStep(int step) const override;
    void writeDataStep(int step, int value) override;
    int takeDataChanged() override;

    void writeHeadTail(ByteWriter& out) const override;
    void readHeadTail(ByteReader& in) override;
    void writeFields(ByteWriter& out) const override;
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

private:
    bool readSteps(const std::string& path, std::string& error);
    std::vector<uint8_t> data_;
    std::vector<uint8_t> arrayHead_;       // an unusual array head, kept as read
    std::array<uint8_t, 4> headSpare_{};  // the head's four further bytes, kept as read
    int step_ = 0;
    bool changed_ = false;
};

}  // namespace quillmer
