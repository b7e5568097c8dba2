#include "modules/generators/Randoms.h"

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kRandId = *typeIdByName("Rand");
const ModuleTypeId kRand3Id = *typeIdByName("Rand3");
const ModuleTypeId kRanPatId = *typeIdByName("RanPat");
const ModuleTypeId kURandId = *typeIdByName("URand");
const ModuleTypeId kURanOutId = *typeIdByName("URanOut");
const ModuleTypeId kProbId = *typeIdByName("Prob");
const ModuleTypeId kNumGenId = *typeIdByName("NumGen");
const ModuleTypeId kFunGenId = *typeIdByName("FunGen");
const ModuleTypeId kCoruptId = *typeIdByName("Corupt");
}  // namespace

// --- Rand ---

Rand::Rand() : SettingsModule<0>(kRandId, kInputs) {}

void Rand::update(Engine& engine) {
    const int lo = std::min(in(1), in(2));
    const int hi = std::max(in(1), in(2));
    if (engine.ResyncPending && lastOutput() < lo) setOutput(lo);
    if (in(0) == 0) {
        arm_.arm();
        return;
    }
    if (!arm_.fire()) return;
    setOutput(static_cast<int>((hi - lo + 1) * static_cast<double>(engine.random.next()) + lo));
}

// --- Rand3 ---

Rand3::Rand3() : SettingsModule<2>(kRand3Id, kInputs) {}

void Rand3::update(Engine& engine) {
    if (in(0) == 0) {
        arm_.arm();
        return;
    }
    if (!arm_.fire()) return;
    const int scale = in(1);
    const int v = whole() ? engine.random.between(0, scale) : roundToInt(engine.random.next() * static_cast<double>(scale));
    setOutput(addCapped(v, in(2)));
}

// --- RanPat ---

RanPat::RanPat() : SettingsModule<1>(kRanPatId, kInputs) {}

void RanPat::update(Engine& engine) {
    if (in(3) != 0 || engine.ResyncPending) {
        pos_ = in(1) * 128;
        arm_.arm();
    } else if (in(0) == 0) {
        arm_.arm();
        return;
    }
    if (!arm_.fire()) return;
    const GeneratorTables& t = generatorTables();
    const float v = wander() ? t.oneOverF[static_cast<size_t>(pos_)] : t.ranFun[static_cast<size_t>(pos_)];
    const int value = roundToInt(in(4) * static_cast<double>(v));
    pos_ = (pos_ + (in(2) != 0 ? -1 : 1)) & (kRanFunSize - 1);
    setOutput(addCapped(value, in(5)));
}

// --- URand ---

URand::URand() : SettingsModule<0>(kURandId, kInputs) {}

void URand::update(Engine& engine) {
    if (in(0) == 0) {
        arm_.arm();
        return;
    }
    if (!arm_.fire()) return;
    const int range = in(1);
    const int offset = in(2);
    if (range == 0) {
        const int coin = engine.random.between(0, 1);
        setOutput(offset != 0 ? coin * offset : coin);
        return;
    }
    std::array<uint8_t, kRows> work{};
    for (int k = 0; k <= range; ++k) work[static_cast<size_t>(k)] = static_cast<uint8_t>(k);
    for (int k = 0; k <= range; ++k) {
        int d = 0;
        do {
            d = engine.random.between(0, range);
        } while (work[static_cast<size_t>(d)] != d);
        work[static_cast<size_t>(d)] = 255;
        rows_[static_cast<size_t>(k)] = static_cast<uint8_t>(addCapped(d, offset));
    }
    setOutput(rows_[0]);
    viewChanged = true;
}

// --- URanOut ---

URanOut::URanOut() : TapModule<2, 1>(kURanOutId, kURandId, {}) {}

void URanOut::update(Engine& engine) {
    if (mastersGrew(engine)) viewChanged = true;
    const auto* master = static_cast<const URand*>(this->master(engine));
    setOutput(master != nullptr ? master->row(channel() + 1) : 0);
}

// --- Prob ---

Prob::Prob() : SettingsModule<0>(kProbId, kInputs) {}

int Prob::pick(const std::array<int, 128>& weights, int64_t d) {
    int64_t sum = 0;
    for (size_t i = 0; i < weights.size(); ++i) {
        sum += weights[i];
        if (d < sum) return static_cast<int>(i);
    }
    return 0;
}

void Prob::copyToFill(std::span<uint8_t> hold) const {
    for (size_t i = 0; i < hold.size() && i < 128; ++i)
        hold[i] = static_cast<uint8_t>(engine_ != nullptr ? engine_->generalTableStep(table_, static_cast<int>(i)) : 0);
}

void Prob::UpdateSeq(std::span<const uint8_t> hold, int) {
    if (engine_ == nullptr) return;
    for (size_t i = 0; i < hold.size() && i < 128; ++i) engine_->writeGeneralTableStep(table_, static_cast<int>(i), hold[i]);
}

void Prob::update(Engine& engine) {
    if (in(1) != table_) {
        table_ = in(1);
        viewChanged = true;
    }
    if (in(0) == 0 && !engine.ResyncPending) {
        arm_.arm();
        return;
    }
    if (!arm_.fire()) return;
    std::array<int, 128> weights{};
    int total = 0;
    for (int i = 0; i < 128; ++i) {
        weights[static_cast<size_t>(i)] = engine.generalTableStep(table_, i);
        total += weights[static_cast<size_t>(i)];
    }
    const int d = total > 0 ? engine.random.between(0, total - 1) : 0;
    setOutput(pick(weights, d));
}

// --- NumGen ---

NumGen::NumGen() : SettingsModule<2>(kNumGenId, kInputs) {}

int NumGen::digitSum(int value, int base) {
    if (value < 1) return 0;
    int sum = 0;
    for (; value > 0; value /= base) sum += value % base;
    return sum;
}

void NumGen::update(Engine& engine) {
    if (in(0) == 0) {
        arm_.arm();
        return;
    }
    if (in(5) != 0 || engine.ResyncPending) {
        pos_ = large() ? in(4) * 8192 : in(4);
        arm_.arm();
    }
    if (!arm_.fire()) return;
    const int s = digitSum(pos_, in(1) + 2);
    const int step = in(2) + 1;
    pos_ = (pos_ + (in(3) != 0 ? -step : step)) & kMask;
    setOutput(addCapped(s & 127, in(6)));
}

// --- FunGen ---

FunGen::FunGen() : SettingsModule<1>(kFunGenId, kInputs) {}

void FunGen::update(Engine&) {
    const int step = in(0), length = in(1), scale = in(2), offset = in(3);
    const int f = function();
    if (f >= 4) {
        const GeneratorTables& t = generatorTables();
        const size_t k = static_cast<size_t>((step + length * 128) & (kRanFunSize - 1));
        const float v = f == 4 ? t.ranFun[k] : t.oneOverF[k];
        setOutput(addCapped(roundToInt(v * static_cast<double>(scale)), offset));
        return;
    }
    if (length == 0) {
        setOutput(0);
        return;
    }
    if (length != length_) {
        length_ = length;
        cycleFactor_ = 127.0 / length;
    }
    if (scale != scale_) {
        scale_ = scale;
        scaleFactor_ = scale / 127.0;
    }
    const int p = std::min(roundToInt(step * cycleFactor_), 127);
    const GeneratorTables& t = generatorTables();
    int u = p;
    if (f == 0) u = t.sine[static_cast<size_t>(p)];
    if (f == 1) u = t.triangle[static_cast<size_t>(p)];
    if (f == 3) u = 127 - p;
    setOutput(addCapped(roundToInt(u * scaleFactor_), offset));
}

// --- Corupt ---

Corupt::Corupt() : SettingsModule<2>(kCoruptId, kInputs) {}

void Corupt::update(Engine& engine) {
    if (in(0) == 0) {
        arm_.arm();
        return;
    }
    if (!arm_.fire()) return;
    int v = in(1);
    const int d = engine.random.between(0, 99);
    if (in(2) > d) v = substitute() ? in(3) : addCapped(v, in(3));
    setOutput(v);
}

}  // namespace quillmer
