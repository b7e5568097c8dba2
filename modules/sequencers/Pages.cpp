#include "modules/sequencers/Pages.h"

#include <algorithm>

#include "engine/Engine.h"

namespace quillmer {

namespace {
constexpr int kMaxValue = 127;

std::string trimmedName(const std::string& fixed) {
    const size_t end = fixed.find_last_not_of(' ');
    return end == std::string::npos ? std::string() : fixed.substr(0, end + 1);
}
}  // namespace

PageSequencer::PageSequencer(ModuleTypeId type, int stages, bool& fillOpen)
    : Module(type, kInputs),
      Pages(static_cast<size_t>(kPages * stages), 0),
      PageValues(static_cast<size_t>(stages), 0),
      fillOpen_(fillOpen),
      powerOfTwo_((stages & (stages - 1)) == 0) {}

int PageSequencer::reduceStage(int v) const { return powerOfTwo_ ? v & (stageCount() - 1) : v % stageCount(); }

std::span<const uint8_t> PageSequencer::pageRow(int page) const {
    return {Pages.data() + static_cast<size_t>(page & (kPages - 1)) * PageValues.size(), PageValues.size()};
}

void PageSequencer::setPageRow(int page, std::span<const uint8_t> row) {
    uint8_t* to = Pages.data() + static_cast<size_t>(page & (kPages - 1)) * PageValues.size();
    const size_t n = std::min(row.size(), PageValues.size());
    for (size_t i = 0; i < n; ++i) to[i] = static_cast<uint8_t>(row[i] & kMaxValue);
}

void PageSequencer::setPageName(int page, std::string name) {
    if (name.size() > kNameLength) name.resize(kNameLength);
    PageNames.at(static_cast<size_t>(page)) = std::move(name);
}

void PageSequencer::update(Engine&) {
    if (!fillOpen_) {
        const int p = in(kPage) & (kPages - 1);
        CurrentPage = p;
        if (p != LastPage) {
            LastPage = p;
            LastStage = -1;
            const auto row = pageRow(p);
            for (size_t i = 0; i < row.size(); ++i) PageValues[i] = static_cast<int16_t>(std::min<int>(row[i], kMaxValue));
        }
    }
    const int s = reduceStage(in(kStage));
    CurrentStage = s;
    if (s == LastStage) return;
    LastStage = s;
    refresh();
}

void PageSequencer::refresh() {
    const int v = PageValues[static_cast<size_t>(CurrentStage)];
    if (v != ShownOutput) {
        ShownOutput = v;
        setOutput(v);
        viewChanged = true;
    }
    if (CurrentStage != ShownStage || CurrentPage != ShownPage) {
        ShownStage = CurrentStage;
        ShownPage = CurrentPage;
        viewChanged = true;
    }
}

void PageSequencer::tableChanged() {
    LastPage = -1;
    viewChanged = true;
}

void PageSequencer::copyToFill(std::span<uint8_t> hold) const {
    const size_t n = std::min(PageValues.size(), hold.size());
    for (size_t i = 0; i < n; ++i) hold[i] = static_cast<uint8_t>(PageValues[i]);
}

void PageSequencer::UpdateSeq(std::span<const uint8_t> hold, int) {
    const size_t n = std::min(PageValues.size(), hold.size());
    for (size_t i = 0; i < n; ++i) PageValues[i] = static_cast<int16_t>(hold[i] & kMaxValue);
    setPageRow(CurrentPage, hold.first(n));
    refresh();
}

void PageSequencer::writeBody(ByteWriter& out, const OutputNames& names) const {
    out.raw(Pages);
    for (const std::string& name : PageNames) out.fixed(name, kNameLength);
    Module::writeBody(out, names);
}

void PageSequencer::readBody(ByteReader& in, OutputNames& names) {
    for (uint8_t& b : Pages) b = in.u8();
    for (std::string& name : PageNames) name = trimmedName(in.fixed(kNameLength));
    Module::readBody(in, names);
}

void PageSequencer::readFields(ByteReader& in) {
    for (uint8_t& b : spare_) b = in.u8();
}

}  // namespace quillmer
