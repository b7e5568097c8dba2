#pragma once
// Switch2..Switch16: a live router. The Switch input, AND (N-1), picks which of the N inputs
// is copied to the output on every pass. Needs the engine lock.

#include <array>
#include <string>

#include "engine/Catalogue.h"
#include "engine/Module.h"

namespace quillmer {

namespace switches {
constexpr int kMaxInputs = 16;
constexpr std::string_view kLabels[kMaxInputs] = {" In 0", " In 1", " In 2",  " In 3",  " In 4",  " In 5",  " In 6",  " In 7",
                                                  " In 8", " In 9", " In 10", " In 11", " In 12", " In 13", " In 14", " In 15"};
constexpr std::array<InputSpec, kMaxInputs + 1> inputs() {
    std::array<InputSpec, kMaxInputs + 1> specs{};
    specs[0] = {" Switch", "Switch Input Select", sysbus::Off};
    for (int i = 0; i < kMaxInputs; ++i)
        specs[static_cast<size_t>(i + 1)] = {kLabels[i], "Input sent to output when selected", sysbus::Off};
    return specs;
}
inline constexpr std::array<InputSpec, kMaxInputs + 1> kAllInputs = inputs();
}  // namespace switches

class SwitchRouter : public Module {
public:
    static constexpr int kSwitch = 0;
    SwitchRouter(ModuleTypeId type, int count);
    int count() const { return count_; }
    int Selected = -1;
    int ShownValue = -1;
    bool lampOn(int input) const { return input == Selected; }
    void update(Engine& engine) override;

private:
    int count_;
};

template <int N>
class Switch final : public SwitchRouter {
public:
    static constexpr std::span<const InputSpec> kInputs{switches::kAllInputs.data(), N + 1};
    Switch() : SwitchRouter(typeId(), N) {}

private:
    static ModuleTypeId typeId() {
        static const ModuleTypeId id = *typeIdByName("Switch" + std::to_string(N));
        return id;
    }
};

using Switch2 = Switch<2>;
using Switch4 = Switch<4>;
using Switch8 = Switch<8>;
using Switch16 = Switch<16>;

}  // namespace quillmer
