#include "modules/formulas/SliderBank.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "modules/panels/RawHead.h"

namespace quillmer {

namespace {
uint8_t toByte(double x) { return static_cast<uint8_t>(std::lround(std::clamp(x, 0.0, 1.0) * 127.0)); }

void putDouble(ByteWriter& out, double v) {
    uint64_t bits = 0;
    std::memcpy(&bits, &v, sizeof bits);
    out.i32(static_cast<int32_t>(bits & 0xFFFFFFFFu));
    out.i32(static_cast<int32_t>(bits >> 32));
}
double getDouble(ByteReader& in) {
    const auto lo = static_cast<uint32_t>(in.i32());
    const auto hi = static_cast<uint32_t>(in.i32());
    const uint64_t bits = lo | (static_cast<uint64_t>(hi) << 32);
    double v = 0;
    std::memcpy(&v, &bits, sizeof v);
    return std::isfinite(v) ? v : 0.0;
}
}  // namespace

UFSldr::UFSldr() : Module(*typeIdByName("UFSldr"), {}) {}

void UFSldr::setSliderCount(int n) {
    count_ = static_cast<int16_t>(std::clamp(n, 1, kBankSliders));
    stage_ = static_cast<int16_t>(std::min<int>(stage_, count_ - 1));
    viewChanged = true;
}

void UFSldr::setStage(int s) {
    stage_ = static_cast<int16_t>(std::clamp(s, 0, count_ - 1));
    viewChanged = true;
}

void UFSldr::setPosition(int num, double x) {
    if (!inRange(num) || !std::isfinite(x)) return;
    x_[static_cast<size_t>(num)] = std::clamp(x, 0.0, 1.0);
    stage_ = static_cast<int16_t>(std::min(num, count_ - 1));
    viewChanged = true;
}

void UFSldr::drag(int num, int pixels, int track) {
    if (!inRange(num) || track <= 0) return;
    setPosition(num, position(num) + pixels * static_cast<double>(setup(num).sens) / track);
}

void UFSldr::touch(int x, int y) {
    if (x < kBarsLeft - 1 || y < kBarsTop || y > kBarsBottom) return;
    const int num = (x - (kBarsLeft - 1)) / kBarWidth;
    if (num >= count_) return;
    setPosition(num, static_cast<double>(kBarsBottom - y) / (kBarsBottom - kBarsTop));
}

void UFSldr::applySetup(std::span<const SliderSetup> setups, const std::string& doc) {
    for (size_t i = 0; i < setups.size() && i < setups_.size(); ++i) {
        const SliderSetup& s = setups[i];
        setups_[i].range = std::isfinite(s.range) ? std::max(0.1, std::fabs(s.range)) : 127.0;
        setups_[i].offset = std::isfinite(s.offset) ? s.offset : 0.0;
        setups_[i].sens = std::isfinite(s.sens) && s.sens > 0 ? s.sens : 1.0f;
    }
    doc_ = doc;
    viewChanged = true;
}

void UFSldr::setCaption(int num, std::string text) {
    if (!inRange(num)) return;
    captions_[static_cast<size_t>(num)] = std::move(text);
    viewChanged = true;
}

std::string UFSldr::formatValue(double v) {
    char text[64];
    std::snprintf(text, sizeof text, "%.3f", v);
    std::string s = text;
    while (!s.empty() && s.back() == '0') s.pop_back();
    if (!s.empty() && s.back() == '.') s.pop_back();
    if (s == "-0") s = "0";
    return s;
}

double UFSldr::sliderValue(int num) const {
    if (!inRange(num)) return 0;
    const SliderSetup& s = setups_[static_cast<size_t>(num)];
    return x_[static_cast<size_t>(num)] * s.range + s.offset;
}

void UFSldr::putSliderValue(int num, double value) {
    if (!inRange(num)) return;
    const SliderSetup& s = setups_[static_cast<size_t>(num)];
    setPosition(num, (value - s.offset) / s.range);
}

void UFSldr::setSliderRange(int num, double range, double offset) {
    if (!inRange(num) || !std::isfinite(range) || !std::isfinite(offset)) return;
    setups_[static_cast<size_t>(num)].range = std::max(0.1, std::fabs(range));
    setups_[static_cast<size_t>(num)].offset = offset;
    viewChanged = true;
}

void UFSldr::copyToFill(std::span<uint8_t> hold) const {
    for (size_t i = 0; i < hold.size() && i < x_.size(); ++i) hold[i] = toByte(x_[i]);
}

void UFSldr::UpdateSeq(std::span<const uint8_t> hold, int) {
    for (size_t i = 0; i < hold.size() && i < static_cast<size_t>(count_); ++i) x_[i] = std::min<int>(hold[i], 127) / 127.0;
    viewChanged = true;
}

void UFSldr::recallSettings(int snapshot) {
    const auto& s = stored_[static_cast<size_t>(snapshot)];
    for (size_t i = 0; i < x_.size(); ++i) x_[i] = std::min<int>(s[i], 127) / 127.0;
    viewChanged = true;
}

void UFSldr::storeSettings(int snapshot) {
    auto& s = stored_[static_cast<size_t>(snapshot)];
    for (size_t i = 0; i < x_.size(); ++i) s[i] = toByte(x_[i]);
}

// 24 bytes of head (the usual words, the position, count, stage, a spare word), the name,
// the text, two spare bytes, 64 captions, 128 snapshots of 64 positions, then per slider
// range and offset (doubles), sensitivity (float) and a spare word.
void UFSldr::writeBody(ByteWriter& out, const OutputNames&) const {
    writeHeadWords(out, *this);  // the record starts with raw words, not the usual head
    out.i16(count_);
    out.i16(stage_);
    out.i16(spareWord_);
    out.str(Name);
    out.str(doc_);
    out.u8(spare_[0]);
    out.u8(spare_[1]);
    for (const std::string& c : captions_) out.str(c);
    for (const auto& s : stored_) out.raw(s);
    for (const SliderSetup& s : setups_) {
        putDouble(out, s.range);
        putDouble(out, s.offset);
        float sens = s.sens;
        uint32_t bits = 0;
        std::memcpy(&bits, &sens, sizeof bits);
        out.i32(static_cast<int32_t>(bits));
        out.i16(0);
    }
}

void UFSldr::readBody(ByteReader& in, OutputNames&) {
    readHeadWords(in, *this);
    count_ = static_cast<int16_t>(std::clamp<int>(in.i16(), 1, kBankSliders));
    stage_ = static_cast<int16_t>(std::clamp<int>(in.i16(), 0, count_ - 1));
    spareWord_ = in.i16();
    Name = in.str();
    doc_ = in.str();
    spare_[0] = in.u8();
    spare_[1] = in.u8();
    for (std::string& c : captions_) c = in.str();
    for (auto& s : stored_)
        for (uint8_t& b : s) b = in.u8();
    for (SliderSetup& s : setups_) {
        const double range = getDouble(in);
        s.range = std::max(0.1, std::fabs(range));
        s.offset = getDouble(in);
        const auto bits = static_cast<uint32_t>(in.i32());
        float sens = 0;
        std::memcpy(&sens, &bits, sizeof sens);
        s.sens = std::isfinite(sens) && sens > 0 ? sens : 1.0f;
        in.i16();
    }
    recallSettings(0);
}

}  // namespace quillmer
