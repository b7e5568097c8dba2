#pragma once
// The paged tables Page08..Page128: 128 pages of N stages, the page chosen by the second
// input and the stage by the first. The pages and their names belong to the module, not
// to a snapshot: a snapshot recall changes only the connections. The page in force is
// what the Fill dialog edits; the page table editor edits all of them.
// Needs the engine lock.

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/Catalogue.h"
#include "engine/Module.h"
#include "modules/sequencers/FillTarget.h"

namespace quillmer {

class PageSequencer : public Module, public FillTarget {
public:
    static constexpr int kPages = 128;
    static constexpr int kNameLength = 20;
    static constexpr InputSpec kInputs[] = {
        {" Stage", "Stage Select", sysbus::Off},
        {" Page", "Page Select", sysbus::Off},
    };
    static constexpr int kStage = 0;
    static constexpr int kPage = 1;
    static constexpr std::string_view kStageTip = "Step#";
    static constexpr std::string_view kOutputTip = "Output";

    // `fillOpen` is the flag of the type, set while the Fill dialog is open on any of them.
    PageSequencer(ModuleTypeId type, int stages, bool& fillOpen);

    int stageCount() const { return static_cast<int>(PageValues.size()); }
    int reduceStage(int value) const;
    int value(int page, int stage) const { return Pages[static_cast<size_t>(page * stageCount() + stage)]; }
    std::span<const uint8_t> pageRow(int page) const;
    void setPageRow(int page, std::span<const uint8_t> row);
    const std::string& pageName(int page) const { return PageNames.at(static_cast<size_t>(page)); }
    // Cut to 20 characters.
    void setPageName(int page, std::string name);
    int workingValue(int stage) const { return PageValues.at(static_cast<size_t>(stage)); }

    int CurrentPage = 0;
    int LastPage = -1;
    int CurrentStage = 0;
    int LastStage = -1;
    // What bxOut1, bxStage and bxPage show.
    int ShownOutput = -1;
    int ShownStage = -1;
    int ShownPage = -1;

    // The page table editor closed: the next pass loads the page in force again.
    void tableChanged();

    int fillStages() const override { return stageCount(); }
    void copyToFill(std::span<uint8_t> hold) const override;
    void UpdateSeq(std::span<const uint8_t> hold, int fillScale) override;
    void fillOpened(bool open) override { fillOpen_ = open; }
    // The flag of the type, for clearing after the module has gone.
    bool& fillOpenFlag() { return fillOpen_; }

    // Pages and names, then the usual inputs, then one spare byte per snapshot.
    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void writeFields(ByteWriter& out) const override { out.raw(spare_); }
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

private:
    void refresh();
    std::vector<uint8_t> Pages;  // [page][stage]
    std::array<std::string, kPages> PageNames;
    std::vector<int16_t> PageValues;
    std::array<uint8_t, kSnapshotCount> spare_{};
    bool& fillOpen_;
    bool powerOfTwo_;
};

template <int N>
class Page final : public PageSequencer {
public:
    Page() : PageSequencer(typeId(), N, FillOpen) {}
    static inline bool FillOpen = false;

private:
    static ModuleTypeId typeId() {
        static const ModuleTypeId id = *typeIdByName(N < 10 ? "Page0" + std::to_string(N) : "Page" + std::to_string(N));
        return id;
    }
};

using Page08 = Page<8>;
using Page12 = Page<12>;
using Page16 = Page<16>;
using Page24 = Page<24>;
using Page32 = Page<32>;
using Page64 = Page<64>;
using Page128 = Page<128>;

}  // namespace quillmer
