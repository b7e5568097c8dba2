#include "modules/sequencers/Sfile.h"

#include <algorithm>

#include "engine/Engine.h"
#include "engine/RegularFile.h"

namespace quillmer {

Sfile::Sfile() : Module(*typeIdByName("Sfile"), kInputs) {}

void Sfile::setData(std::vector<uint8_t> values) {
    if (values.size() > kMaxSteps) values.resize(kMaxSteps);
    for (uint8_t& v : values) v &= 127;
    data_ = std::move(values);
    arrayHead_.clear();
    changed_ = true;
    forgetInputs();
    viewChanged = true;
}

bool Sfile::loadFile(const std::string& path, std::string& error) {
    if (!readSteps(path, error)) {
        problem = error;
        viewChanged = true;
        return false;
    }
    problem.clear();
    source = path;
    return true;
}

bool Sfile::readSteps(const std::string& path, std::string& error) {
    std::vector<uint8_t> bytes;
    std::string reason;
    if (!readRegularFile(path, kMaxSteps + 1, bytes, reason)) {
        error = "Unable to read " + path + ": " + reason;
        return false;
    }
    if (bytes.empty()) {
        error = path + " holds no steps";
        return false;
    }
    if (bytes.size() > kMaxSteps) {
        error = path + " is longer than " + std::to_string(kMaxSteps) + " steps";
        return false;
    }
    setData(std::move(bytes));
    return true;
}

int Sfile::dataStep(int step) const {
    if (data_.empty() || step < 0) return 0;
    return data_[static_cast<size_t>(step) % data_.size()];
}

void Sfile::writeDataStep(int step, int value) {
    if (data_.empty() || step < 0) return;
    uint8_t& cell = data_[static_cast<size_t>(step) % data_.size()];
    const auto v = static_cast<uint8_t>(std::clamp(value, 0, 127));
    if (cell == v) return;
    cell = v;
    changed_ = true;
    forgetInputs();
}

int Sfile::takeDataChanged() {
    const bool was = changed_;
    changed_ = false;
    return was ? 1 : 0;
}

void Sfile::update(Engine& /*engine*/) {
    if (in(3) != 0) return;
    if (sameInputsAsLastUpdate(3)) return;
    step_ = data_.empty() ? 0 : static_cast<int>((static_cast<size_t>(in(1)) * 128 + in(0)) % data_.size());
    setOutput(std::min(dataStep(step_) + in(2), 127));
    viewChanged = true;
}

void Sfile::writeHeadTail(ByteWriter& out) const { out.raw(headSpare_); }

void Sfile::readHeadTail(ByteReader& in) {
    for (uint8_t& b : headSpare_) b = in.u8();
}

// After the inputs: the steps as a dynamic byte array.
void Sfile::writeFields(ByteWriter& out) const {
    if (!arrayHead_.empty()) {
        out.raw(arrayHead_);
    } else if (data_.empty()) {
        out.u16(0);
    } else {
        out.u16(1);
        out.i32(static_cast<int32_t>(data_.size()));
        out.i32(0);
    }
    out.raw(data_);
}

// The steps are kept as stored; a head of another shape than one plain dimension is kept
// too, so that the record goes back as it came.
void Sfile::readFields(ByteReader& in) {
    const size_t start = in.position();
    const uint16_t dims = in.u16();
    uint64_t count = dims == 0 ? 0 : 1;
    bool lowerZero = true;
    for (uint16_t d = 0; d < dims; ++d) {
        const auto n = static_cast<uint32_t>(in.i32());
        if (in.i32() != 0) lowerZero = false;
        count = n != 0 && count > UINT64_MAX / n ? UINT64_MAX : count * n;
    }
    if (count > in.remaining()) throw RecordFormatError("Sfile steps run past the end of the record");
    // What writeFields would write again for these steps.
    const bool plain = dims == 0 || (dims == 1 && lowerZero && count > 0);
    arrayHead_ = plain ? std::vector<uint8_t>() : std::vector<uint8_t>(in.data() + start, in.data() + in.position());
    data_ = in.raw(static_cast<size_t>(count));
    changed_ = true;
}

}  // namespace quillmer
