// CPU of the GUI thread while 100 Slide128 panels on the page on show play: each reads its
// stage from a stepper, so its lamp and output move every other tick at tempo 120, on the
// real-time timer service. Offscreen unless a display is given. Prints the GUI thread's
// CPU time over the measured span (10 s unless told otherwise) as a share of one core.
//   slide_panels_cpu [SECONDS]

#include <array>

#include "bench/GuiThreadMeter.h"
#include "modules/sequencers/FillTarget.h"

using namespace quillmer;
using bench::connectByName;

namespace {
constexpr int kPanels = 100;
constexpr int kColumns = 4;
constexpr int kCellWidth = 660;   // pixels
constexpr int kCellHeight = 150;

// One stepper feeding the stages of every slide; the slides' bars a ramp.
void placeBusyPatch(Session& session) {
    Engine& e = session.engine;
    Module& stepper = e.placeForBulk(*typeIdByName("Stepper"));
    stepper.Top = 0;
    std::array<uint8_t, 128> ramp{};
    for (int i = 0; i < 128; ++i) ramp[static_cast<size_t>(i)] = static_cast<uint8_t>(i);
    for (int i = 0; i < kPanels; ++i) {
        Module& m = e.placeForBulk(*typeIdByName("Slide128"));
        m.Left = (8 + (i % kColumns) * kCellWidth) * kTwipsPerPixel;
        m.Top = (40 + (i / kColumns) * kCellHeight) * kTwipsPerPixel;
        dynamic_cast<FillTarget&>(m).UpdateSeq(ramp, 127);
    }
    e.endBulk();
    connectByName(e, "1Stepper-", 0, "~   2");
    connectByName(e, "1Stepper-", 4, "~ 127");
    for (int n = 1; n <= kPanels; ++n) connectByName(e, std::to_string(n) + "Slide128-", 0, "1Stepper-");
    e.setRun(true);
}
}  // namespace

int main(int argc, char** argv) {
    return bench::measureGuiThread(argc, argv, QSize(kColumns * kCellWidth + 40, 25 * kCellHeight + 200), placeBusyPatch);
}
