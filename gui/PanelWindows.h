#pragma once
// The floating windows that panels open: the 32 sliders of a CtrlOut32 and the pixel window
// of an Image. `find` gives the module under the engine lock, or null once it has gone; the
// window then closes. Each window refreshes itself from the module and sends every move to it.

#include <functional>

class QWidget;

namespace quillmer {
class Engine;
class Module;
}  // namespace quillmer

namespace quillmer::gui {

using PanelModuleFinder = std::function<Module*()>;

// Shows the bank's window, or hides it when it is on show. One window per bank.
QWidget* toggleControlSliders(Engine& engine, PanelModuleFinder find, QWidget* parent);
// The pixel window of an Image: the picture at four times its size, drawn on with the pen.
QWidget* openPixelWindow(Engine& engine, PanelModuleFinder find, QWidget* parent);

}  // namespace quillmer::gui
