#pragma once
// --screenshot DIR [FILE.qmp]: the program shows the patch (or, without one, a small patch
// of its own), saves pictures of its main window with the panels, a connection list, the
// module map and the options window into DIR, and quits. For the documentation.

#include <QString>

namespace quillmer::gui {
class Program;
}

namespace quillmer {

// Places the small patch unless one was loaded, and arranges for the pictures once the
// windows are drawn.
void takeScreenshotsLater(gui::Program& program, const QString& folder);

}  // namespace quillmer
