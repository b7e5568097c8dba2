#pragma once
// The catalogue of module types: ids, names, prefixes, bus families, menu captions and
// groups, and the orders in which the engine walks them. Data in one place; everything
// that fans out over all types loops over these tables.

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace quillmer {

using ModuleTypeId = int16_t;  // 1..189; 0 is "none"
constexpr int kTypeCount = 189;
constexpr int16_t kNoBusFamily = -1;

enum class MenuGroup : uint8_t {
    Values, Pickers, Clocks, Logic, UserFunc, Patterns, Matrix, Knobs, Steps, Sliders, Runs,
    Pages, Files, Random, Fractals, Events, Switch, Math, Process, Display, MIDI
};
constexpr int kMenuGroupCount = 21;

struct TypeInfo {
    ModuleTypeId id;
    std::string_view type;     // type name, e.g. "Div"
    std::string_view prefix;   // output-name prefix, ends in '-', e.g. "Div-"
    int16_t busFamily;         // kNoBusFamily for a type without an output
    std::string_view caption;  // entry in the Modules menu
    MenuGroup group;

    bool hasOutput() const { return busFamily != kNoBusFamily; }
};

struct MenuGroupInfo {
    MenuGroup group;
    std::string_view caption;
    std::vector<std::string_view> entries;  // type names in menu order; "-" is a separator
};

// All 189 types, in id order: typeInfo(id) for id 1..189.
std::span<const TypeInfo> allTypes();
const TypeInfo& typeInfo(ModuleTypeId id);
std::optional<ModuleTypeId> typeIdByName(std::string_view type);

// The 21 menu groups in menu order.
const std::vector<MenuGroupInfo>& menuGroups();

// Type orders of one tick. The priority passes walk kPassOrder; the UpdateAll groups run
// every active instance of their types whatever its priority.
const std::vector<ModuleTypeId>& passOrder();
const std::vector<ModuleTypeId>& inputAndDisplayTypes();  // before the passes
const std::vector<ModuleTypeId>& afterPassTypes();        // after pass "4 = Last"
const std::vector<ModuleTypeId>& midiOutputTypes();       // last of the tick
const std::vector<ModuleTypeId>& midiInputReaderTypes();  // first on MIDI input
const std::vector<ModuleTypeId>& midiOutputTypesOnInput(); // last on MIDI input (no Chain)
// The order in which snapshots are stored and recalled: 184 types (the display types and
// the mouse pad keep their settings once, not per snapshot).
const std::vector<ModuleTypeId>& recallOrder();
// Whether a type runs in an UpdateAll group rather than in the priority passes.
bool runsOutsidePasses(ModuleTypeId id);

}  // namespace quillmer
