#pragma once
// --screenshot DIR: the program shows a small demonstration patch, saves pictures of its
// main window and its options window into DIR, and quits. For the documentation.

#include <QString>

namespace quillmer::gui {
class Program;
}

namespace quillmer {

// Places the demonstration modules and arranges for the pictures once the windows are drawn.
void takeScreenshotsLater(gui::Program& program, const QString& folder);

}  // namespace quillmer
