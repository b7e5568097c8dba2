// CPU of the GUI thread while the patch plays: 200 panels on the page on show, all busy,
// at tempo 120 on the real-time timer service. The window is drawn offscreen unless a
// display is given (QT_QPA_PLATFORM, or xvfb-run). Prints the GUI thread's CPU time over
// the measured span (10 s unless told otherwise) as a share of one core.
//   gui_thread_cpu [SECONDS]

#include "bench/GuiThreadMeter.h"

using namespace quillmer;
using bench::connectByName;

namespace {
constexpr int kPanels = 200;
constexpr int kColumns = 16;
constexpr int kCellWidth = 150;   // pixels
constexpr int kCellHeight = 100;

// Four kinds, each changing what it shows several times a second: a clock's lamp, a
// counter's count, a quotient of the turbo counter, a stepper's count.
void placeBusyPatch(Session& session) {
    Engine& e = session.engine;
    const char* const kinds[] = {"Clock", "Counter", "Div", "Stepper"};
    for (int i = 0; i < kPanels; ++i) {
        Module& m = e.placeForBulk(*typeIdByName(kinds[i % 4]));
        m.Left = (8 + (i % kColumns) * kCellWidth) * kTwipsPerPixel;
        m.Top = (8 + (i / kColumns) * kCellHeight) * kTwipsPerPixel;
    }
    e.endBulk();
    for (int n = 1; n <= kPanels / 4; ++n) {
        const std::string number = std::to_string(n);
        connectByName(e, number + "Clock-", 0, "~   6");
        connectByName(e, number + "Countr-", 0, (number + "Clock-").c_str());
        connectByName(e, number + "Div-", 0, "~ Turbo");
        connectByName(e, number + "Div-", 1, "~   3");
        connectByName(e, number + "Stepper-", 0, "~   3");
    }
    e.setRun(true);
}
}  // namespace

int main(int argc, char** argv) {
    return bench::measureGuiThread(argc, argv, QSize(kColumns * kCellWidth + 40, 1500), placeBusyPatch);
}
