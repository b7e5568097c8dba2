// CPU of the GUI thread while eight Matrix16x8 panels on the page on show run Life on every
// tick: each strobes from "~ Turbo"-fast pulses of its own clock, with the kick on so that
// no grid settles, and reads its column from a stepper. Real-time timers; offscreen unless
// a display is given. Prints the GUI thread's share of one core.
//   matrix_panels_cpu [SECONDS]

#include "bench/GuiThreadMeter.h"
#include "modules/sequencers/MatrixTypes.h"

using namespace quillmer;
using bench::connectByName;

namespace {
constexpr int kPanels = 8;
constexpr int kColumns = 2;
constexpr int kCellWidth = 560;  // pixels
constexpr int kCellHeight = 340;  // a 16x8 panel with its whole grid of knobs

void placeBusyPatch(Session& session) {
    Engine& e = session.engine;
    Module& stepper = e.placeForBulk(*typeIdByName("Stepper"));
    stepper.Top = 0;
    for (int i = 0; i < kPanels; ++i) {
        auto& m = static_cast<MatrixSequencer&>(e.placeForBulk(*typeIdByName("Matrix16x8")));
        m.Left = (8 + (i % kColumns) * kCellWidth) * kTwipsPerPixel;
        m.Top = (40 + (i / kColumns) * kCellHeight) * kTwipsPerPixel;
        m.Kick = true;
    }
    e.endBulk();
    connectByName(e, "1Stepper-", 0, "~ 126");  // counts every tick
    connectByName(e, "1Stepper-", 4, "~   1");  // 0, 1, 0, 1: a rising edge every other tick
    for (int n = 1; n <= kPanels; ++n) {
        const std::string name = std::to_string(n) + "Mat16x8-";
        connectByName(e, name, MatrixSequencer::kStrobe, "1Stepper-");
        connectByName(e, name, MatrixSequencer::kColumn, "1Stepper-");
    }
    e.setRun(true);
}
}  // namespace

int main(int argc, char** argv) {
    return bench::measureGuiThread(argc, argv, QSize(kColumns * kCellWidth + 40, (kPanels / kColumns) * kCellHeight + 120), placeBusyPatch);
}
