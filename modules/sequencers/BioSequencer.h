#pragma once
// BioSeq walks a coding sequence of the bio set codon by codon (amino acids 0..20) or base
// by base (0..3), forward or as the antisense strand read backward; BioFlag turns the
// feature marks of a chosen BioSeq's position into gates.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "modules/processors/ProcessorKit.h"
#include "modules/sequencers/BioData.h"

namespace quillmer {

// Settings per snapshot, one byte: bit 0 four clocks per codon in DNA mode (chkClock),
// bit 1 stop at the end of the sequence (chkAuto).
class BioSeq final : public SettingsModule<1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Clock", "Clock input: 0 to NZ transition steps", sysbus::Off},
        {" DNA", "NZ to read DNA bases, 0 to read Amino Acids", sysbus::Off},
        {" Antisense", "NZ to read antisense (reverse read of bases)", sysbus::Off},
        {" Reset", "127 to Reset and hold, any other NZ to hold w/o reset", sysbus::Off},
        {" Hold", "NZ to output proteins in sorted order", sysbus::Off},
        {" Sequence#", "0-23 to select bio sequence to read data from", sysbus::Off},
    };
    static constexpr std::string_view kFourClocksTip = "Clocks per Amino Acid: In=4, Out=3";
    static constexpr std::string_view kAutoStopTip = "Click in to stop at end of sequence";
    static constexpr std::string_view kNoData = " <no data>";

    BioSeq();
    bool fourClocks() const { return (byteAt(0) & 1) != 0; }
    bool stopAtEnd() const { return (byteAt(0) & 2) != 0; }
    void setFourClocks(bool on) { setByteAt(0, (byteAt(0) & ~1) | (on ? 1 : 0)); }
    void setStopAtEnd(bool on) { setByteAt(0, (byteAt(0) & ~2) | (on ? 2 : 0)); }

    // What BioFlag and the panel read.
    uint16_t flagWord() const { return flagWord_; }
    int32_t position() const { return position_; }
    bool noData() const { return noData_; }
    bool dnaMode() const { return dnaMode_; }
    const std::string& fileLabel() const { return label_; }
    // bxAddr: position + 1, the codon's letters, the amino name; the output as a letter.
    std::string addressText(int box) const;
    char outputLetter() const { return letter_; }
    void update(Engine& engine) override;

private:
    void selectSequence(const BioSet& set);
    void advance();

    int32_t pos_ = 0;
    int baseIndex_ = 0;
    bool armed_ = false;
    bool holdBase_ = false;
    bool dnaMode_ = false;
    bool reverse_ = false;
    bool noData_ = true;
    uint16_t pendingFlag_ = 0;
    int selected_ = -1;
    int32_t last_ = 0;
    int32_t lastSum_ = -1;
    int32_t lastShownPos_ = -1;
    uint32_t seenVersion_ = 0;
    uint16_t flagWord_ = 0;
    int32_t position_ = 0;
    int shownCodon_ = 0;
    char letter_ = ' ';
    std::string label_;
};

// A gate from the marks of a chosen BioSeq. Flag 0: the end of the sequence (127), 1..7:
// the feature pairs (127 while inside), 8: all as bits (bit 0 the end), 9: the end as 1.
// Settings per snapshot: the BioSeq's index + 1.
class BioFlag final : public TapModule<1, 1> {
public:
    static constexpr InputSpec kInputs[] = {
        {" Flag", "0=End, 1=<>, 2=(), 3=[], 4={}, 5=!|, 6=@#, 7=$%, 8=All", sysbus::Off},
    };
    static constexpr std::string_view kListTip = "Bio Sequencer module to get flags from";
    BioFlag();
    bool lit() const { return lastOutput() != 0; }
    void update(Engine& engine) override;

private:
    std::array<uint8_t, 10> gates_{};
    uint16_t seenWord_ = 0;
    uint8_t allBits_ = 0;
};

}  // namespace quillmer
