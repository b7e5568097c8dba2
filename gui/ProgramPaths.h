#pragma once
// Where the program finds what it ships with: the manual and the example patches. An
// installed program looks beside itself and in ../share/quillmer; one run from its build
// folder looks in the source tree it was built from.

#include <QString>

namespace quillmer::gui {

// The folder of the running program.
QString programDir();
// The shipped "examples" folder, or the user's home when there is none.
QString examplesDir();
// The local manual page, or empty when it can't be found.
QString manualPath();

}  // namespace quillmer::gui
