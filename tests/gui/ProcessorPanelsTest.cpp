// The processor panels forward their gestures: bit buttons, switches, knobs, the tests
// menu, and a tap's list of masters that follows the placed modules.

#include <QComboBox>
#include <QSpinBox>

#include "modules/processors/Bitwise.h"
#include "modules/processors/Scaling.h"
#include "modules/processors/Sums.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

TEST(ProcessorPanels, BitButtonsKnobsAndTheTestsMenuReachTheirModules) {
    GuiHarness h;
    h.placeModule("Mask");
    h.placeModule("Level");
    h.placeModule("Test");
    h.placeModule("AddDiv");

    part<QPushButton>(panel(h, "1Mask-"), "Check1_6")->click();
    EXPECT_EQ(static_cast<const Mask&>(module(h, "1Mask-")).byteSetting(0), 63);
    h.window().refresh();
    EXPECT_FALSE(part<QPushButton>(panel(h, "1Mask-"), "Check1_6")->isChecked());
    EXPECT_TRUE(part<QPushButton>(panel(h, "1Mask-"), "Check1_5")->isChecked());

    auto* offset = part<QSpinBox>(panel(h, "1Level-"), "Knob2");
    EXPECT_EQ(offset->minimum(), -127);
    offset->setValue(-20);
    EXPECT_EQ(static_cast<const Level&>(module(h, "1Level-")).wordSetting(LevelOp::kOffset), -20);

    auto* tests = part<QComboBox>(panel(h, "1Test-"), "cbTest");
    ASSERT_EQ(tests->count(), 15);
    tests->activated(9);
    EXPECT_EQ(static_cast<const quillmer::Test&>(module(h, "1Test-")).test(), 9);

    part<QPushButton>(panel(h, "1AddDv-"), "chkNegate")->click();
    EXPECT_NE(static_cast<const AddDiv&>(module(h, "1AddDv-")).wordSetting(AddDivOp::kNegate), 0);
}

TEST(ProcessorPanels, TheMasterListFollowsThePlacedModules) {
    GuiHarness h;
    h.placeModule("Carry");
    h.placeModule("Minus");
    runTicks(h);
    h.window().refresh();
    auto* list = part<QComboBox>(panel(h, "1Carry-"), "cbXmID");
    ASSERT_EQ(list->count(), 2) << "(none) and the Minus placed after the Carry";
    EXPECT_EQ(list->itemText(1), QStringLiteral("1Minus-"));
    list->activated(1);
    const auto& carry = static_cast<const Carry&>(module(h, "1Carry-"));
    EXPECT_EQ(carry.masterIndex(), module(h, "1Minus-").Index);
    h.window().refresh();
    EXPECT_EQ(list->currentIndex(), 1);
}

}  // namespace
}  // namespace quillmer::testing
