#pragma once
// The program's look: Qt's Fusion style over a dark palette, a few touches for the strip and
// the stand-in panels, and the toolbar's pictures, drawn as line art in the palette's text
// colour so they stay sharp at any scale.

#include <QIcon>

class QApplication;

namespace quillmer::gui {

void applyDarkStyle(QApplication& app);

enum class ToolIcon { New, Open, Save, Help, Composer, StoreNew, StoreCurrent, MidiMute, Run };

QIcon toolIcon(ToolIcon which);

}  // namespace quillmer::gui
