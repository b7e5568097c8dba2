#include "modules/midi/MidiInputs.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "engine/Durations.h"
#include "engine/Engine.h"

namespace quillmer {

// --- MidiInModule ---

const MidiInputTables& MidiInModule::tables(const Engine& engine) { return engine.ports.in; }

void MidiInModule::setChanPort(int chanPort) {
    ChanPort = static_cast<int16_t>(chanPort & 63);
    viewChanged = true;
}

std::string MidiInModule::channelCaption() const { return channelSlotCaption(ChanPort); }

void MidiInModule::recallSettings(int snapshot) { ChanPort = storedChanPort_[static_cast<size_t>(snapshot)] & 63; }

void MidiInModule::storeSettings(int snapshot) {
    storedChanPort_[static_cast<size_t>(snapshot)] = static_cast<uint8_t>(ChanPort);
}

// Per snapshot: the ChanPort. Bytes are kept as read and cut where they are used.
void MidiInModule::writeFields(ByteWriter& out) const {
    for (uint8_t cp : storedChanPort_) out.u8(cp);
}

void MidiInModule::readFields(ByteReader& in) {
    for (uint8_t& cp : storedChanPort_) cp = in.u8();
    ChanPort = storedChanPort_[0] & 63;
}

// --- MidiInWithNumber ---

void MidiInWithNumber::setNumber(int value) {
    number = static_cast<uint8_t>(std::clamp(value, 0, 127));
    viewChanged = true;
}

std::string MidiInWithNumber::setNumberText(const std::string& text) {
    int value = number;
    const char* first = text.data();
    const char* last = text.data() + text.size();
    while (first < last && *first == ' ') ++first;
    long long parsed = 0;
    const auto [end, ec] = std::from_chars(first, last, parsed);
    if (ec == std::errc{} && end != first) value = static_cast<int>(std::clamp<long long>(parsed, 0, 127));
    else if (ec == std::errc::result_out_of_range) value = first < last && *first == '-' ? 0 : 127;
    setNumber(value);
    return std::to_string(number);
}

void MidiInWithNumber::recallSettings(int snapshot) {
    MidiInModule::recallSettings(snapshot);
    number = storedNumber_[static_cast<size_t>(snapshot)] & 127;
}

void MidiInWithNumber::storeSettings(int snapshot) {
    MidiInModule::storeSettings(snapshot);
    storedNumber_[static_cast<size_t>(snapshot)] = number;
}

// Per snapshot: the ChanPort, then the number.
void MidiInWithNumber::writeFields(ByteWriter& out) const {
    MidiInModule::writeFields(out);
    for (uint8_t n : storedNumber_) out.u8(n);
}

void MidiInWithNumber::readFields(ByteReader& in) {
    MidiInModule::readFields(in);
    for (uint8_t& n : storedNumber_) n = in.u8();
    number = storedNumber_[0] & 127;
}

// --- the table readers ---

MIDICCIn::MIDICCIn() : MidiInWithNumber(*typeIdByName("MIDICCIn"), {}) {}

void MIDICCIn::update(Engine& engine) { setOutput(tables(engine).InControl[number & 127][slot()]); }

MIDIPPIn::MIDIPPIn() : MidiInWithNumber(*typeIdByName("MIDIPPIn"), {}) {}

void MIDIPPIn::update(Engine& engine) { setOutput(tables(engine).InPolyPressure[number & 127][slot()]); }

MIDIPCIn::MIDIPCIn() : MidiInModule(*typeIdByName("MIDIPCIn"), {}) {}

void MIDIPCIn::update(Engine& engine) { setOutput(tables(engine).InProgram[slot()]); }

MIDIPBIn::MIDIPBIn() : MidiInModule(*typeIdByName("MIDIPBIn"), {}) {}

void MIDIPBIn::update(Engine& engine) { setOutput(tables(engine).InPitchBend[slot()]); }

// --- MIDIKeyNum, MIDIKeyVel ---

MidiKeyIn::MidiKeyIn(ModuleTypeId type, bool velocity) : MidiInModule(type, {}), velocity_(velocity) {}

MIDIKeyNum::MIDIKeyNum() : MidiKeyIn(*typeIdByName("MIDIKeyNum"), false) {}

MIDIKeyVel::MIDIKeyVel() : MidiKeyIn(*typeIdByName("MIDIKeyVel"), true) {}

void MidiKeyIn::setKeyBit(int k) {
    keyBit = static_cast<uint8_t>(std::clamp(k, 0, 8));
    viewChanged = true;
}

void MidiKeyIn::update(Engine& engine) {
    const MidiInputTables& t = tables(engine);
    const size_t s = slot();
    if (keyBit == 0) {
        if (t.InNoteFlag[s] != 0) setOutput(velocity_ ? t.InLastVelocity[s] : t.InLastNote[s]);
        return;
    }
    const size_t voice = static_cast<size_t>(keyBit - 1);
    if ((t.InNoteActive[s] >> voice) & 1) setOutput(velocity_ ? t.InVoiceVelocity[voice][s] : t.InVoiceNote[voice][s]);
}

void MidiKeyIn::recallSettings(int snapshot) {
    MidiInModule::recallSettings(snapshot);
    keyBit = std::min<uint8_t>(storedKeyBit_[static_cast<size_t>(snapshot)], 8);
}

void MidiKeyIn::storeSettings(int snapshot) {
    MidiInModule::storeSettings(snapshot);
    storedKeyBit_[static_cast<size_t>(snapshot)] = keyBit;
}

// Per snapshot: the ChanPort, then cbKeyBit. A byte above 8 reads as 8, but is kept.
void MidiKeyIn::writeFields(ByteWriter& out) const {
    MidiInModule::writeFields(out);
    for (uint8_t k : storedKeyBit_) out.u8(k);
}

void MidiKeyIn::readFields(ByteReader& in) {
    MidiInModule::readFields(in);
    for (uint8_t& k : storedKeyBit_) k = in.u8();
    keyBit = std::min<uint8_t>(storedKeyBit_[0], 8);
}

// --- MIDICIn, MIDIPIn ---

void MidiInFromBus::writeFields(ByteWriter& out) const {
    MidiInModule::writeFields(out);
    for (uint8_t b : spare_) out.u8(b);
}

void MidiInFromBus::readFields(ByteReader& in) {
    MidiInModule::readFields(in);
    for (uint8_t& b : spare_) b = in.u8();
}

MIDICIn::MIDICIn() : MidiInFromBus(*typeIdByName("MIDICIn"), kInputs) {}

void MIDICIn::update(Engine& engine) { setOutput(tables(engine).InControl[in(0) & 127][slot()]); }

MIDIPIn::MIDIPIn() : MidiInFromBus(*typeIdByName("MIDIPIn"), kPolyInputs) {}

void MIDIPIn::update(Engine& engine) { setOutput(tables(engine).InPolyPressure[in(0) & 127][slot()]); }

// --- Keybd ---

namespace {
// White keys of an octave from C, and the black key to the right of each (-1: none).
constexpr std::array<int, 7> kWhiteSemitone{0, 2, 4, 5, 7, 9, 11};
constexpr std::array<bool, 7> kBlackAfter{true, true, false, true, true, true, false};
constexpr double kBlackDepth = 0.6;  // black keys cover the upper 60% of the picture
constexpr double kBlackHalfWidth = 0.3;  // in white-key widths, either side of the gap
}  // namespace

Keybd::Keybd() : Module(*typeIdByName("Keybd"), {}) { storedOctave_.fill(octave); }

Keybd::Hit Keybd::keyAt(double x, double y) {
    Hit hit;
    if (!(x >= 0.0 && x < 1.0 && y >= 0.0 && y < 1.0)) return hit;
    const double w = x * kWhiteKeys;
    const int white = std::min(static_cast<int>(w), kWhiteKeys - 1);
    const double within = w - white;
    const auto velocityOver = [](double depth, double span) {
        return std::clamp(static_cast<int>(std::lround(depth / span * 126.0)) + 1, 1, 127);
    };
    if (y < kBlackDepth) {
        // The black key right of this white key, or left of it.
        int owner = -1;
        if (within > 1.0 - kBlackHalfWidth && kBlackAfter[static_cast<size_t>(white % 7)] && white < kWhiteKeys - 1)
            owner = white;
        else if (within < kBlackHalfWidth && white > 0 && kBlackAfter[static_cast<size_t>((white - 1) % 7)])
            owner = white - 1;
        if (owner >= 0) {
            hit.key = owner / 7 * 12 + kWhiteSemitone[static_cast<size_t>(owner % 7)] + 1;
            hit.velocity = velocityOver(y, kBlackDepth);
            return hit;
        }
    }
    hit.key = white / 7 * 12 + kWhiteSemitone[static_cast<size_t>(white % 7)];
    hit.velocity = velocityOver(y, 1.0);
    return hit;
}

void Keybd::play(const Hit& hit) {
    if (hit.key < 0) return;
    key_ = hit.key;
    note = std::min(hit.key + octave * 12, 32767);
    velocity = hit.velocity;
    gate = 127;
    noteCaption = std::string(PitchNames[static_cast<size_t>(note % 12)]) + " : " + std::to_string(note / 12) + "  " +
                  std::to_string(velocity);
    pending_ = std::min(note, 127);
    viewChanged = true;
}

void Keybd::press(double x, double y) { play(keyAt(x, y)); }

void Keybd::drag(double x, double y) {
    if (key_ < 0) return;
    const Hit hit = keyAt(x, y);
    if (hit.key >= 0 && (hit.key != key_ || hit.velocity != velocity)) play(hit);
}

void Keybd::release() {
    if (key_ < 0) return;
    key_ = -1;
    viewChanged = true;  // the picture lets the key go
    if (zeroOnRelease) {
        gate = 0;
        pending_ = 0;
    }
}

void Keybd::setOctave(int value) {
    octave = static_cast<uint8_t>(std::clamp(value, 0, kMaxOctave));
    viewChanged = true;
}

void Keybd::update(Engine&) { setOutput(pending_); }

void Keybd::recallSettings(int snapshot) {
    octave = std::min<uint8_t>(storedOctave_[static_cast<size_t>(snapshot)], kMaxOctave);
    zeroOnRelease = storedGate_[static_cast<size_t>(snapshot)] != 0;
}

void Keybd::storeSettings(int snapshot) {
    storedOctave_[static_cast<size_t>(snapshot)] = octave;
    storedGate_[static_cast<size_t>(snapshot)] = zeroOnRelease ? 1 : 0;
}

// Per snapshot: the octave, then chkGate.
void Keybd::writeFields(ByteWriter& out) const {
    for (uint8_t o : storedOctave_) out.u8(o);
    for (uint8_t g : storedGate_) out.u8(g);
}

void Keybd::readFields(ByteReader& in) {
    for (uint8_t& o : storedOctave_) o = in.u8();
    for (uint8_t& g : storedGate_) g = in.u8();
    recallSettings(0);
}

}  // namespace quillmer
