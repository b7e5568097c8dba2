// The name a save dialog gives back: the filter's extension where the user typed none, and a
// name with any of the filter's extensions (or under "All Files") kept as typed.

#include <gtest/gtest.h>

#include "gui/FileCommands.h"
#include "gui/UserDialogs.h"

namespace quillmer::gui {
namespace {

TEST(SaveDialogName, TheFiltersExtensionIsAddedOnlyWhereNoneOfItsOwnStands) {
    const QString patches = QString::fromLatin1(FileCommands::kSaveFilter);
    EXPECT_EQ(withExtensionOf(QStringLiteral("/a/song"), patches), QStringLiteral("/a/song.qmp"));
    EXPECT_EQ(withExtensionOf(QStringLiteral("/a/song.qmj"), patches), QStringLiteral("/a/song.qmj"));
    EXPECT_EQ(withExtensionOf(QStringLiteral("/a/song.QMP"), patches), QStringLiteral("/a/song.QMP"));
    // A MIDI file saved from its own dialog keeps its extension (it used to become .mid.qmp).
    EXPECT_EQ(withExtensionOf(QStringLiteral("/a/take.mid"), QStringLiteral("MIDI File (*.mid)")),
              QStringLiteral("/a/take.mid"));
    EXPECT_EQ(withExtensionOf(QStringLiteral("/a/take"), QStringLiteral("MIDI File (*.mid)")), QStringLiteral("/a/take.mid"));
    EXPECT_EQ(withExtensionOf(QStringLiteral("/a/hold.txt"), QStringLiteral("All Files (*);;Sequencer Files (*.seq)")),
              QStringLiteral("/a/hold.txt"));
    EXPECT_EQ(withExtensionOf(QString(), patches), QString());  // a cancelled dialog
}

}  // namespace
}  // namespace quillmer::gui
