#pragma once
// Step data a module holds that formulas read and write by the module's number (the
// sequencer data files). Needs the engine lock.

namespace quillmer {

class StepData {
public:
    // A step of the data, taken modulo its length; 0 when there is none.
    virtual int dataStep(int step) const = 0;
    // Writes a step (cut to 0..127) taken modulo the length; nothing when there is no data.
    virtual void writeDataStep(int step, int value) = 0;
    // 1 when the data changed since the last call, else 0.
    virtual int takeDataChanged() = 0;

protected:
    ~StepData() = default;
};

}  // namespace quillmer
