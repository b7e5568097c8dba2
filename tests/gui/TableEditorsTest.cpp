// The two table editors as a musician reaches them: from a table module's panel button and
// from the File menu, their edits reaching the patch, their files, and Scala in and out.

#include <QAction>
#include <QDial>
#include <QFileInfo>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QTableWidget>

#include "gui/FillDialog.h"
#include "gui/PageTableEditor.h"
#include "gui/ToneTableEditor.h"
#include "tables/TableFiles.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

gui::PageTableEditor* bankEditor(GuiHarness& h) {
    processEvents();
    for (auto* e : h.window().findChildren<gui::PageTableEditor*>())
        if (e->isVisible() && e->windowTitle() == QStringLiteral("Tables")) return e;
    return nullptr;
}

gui::ToneTableEditor* toneEditor(GuiHarness& h) {
    processEvents();
    for (auto* e : h.window().findChildren<gui::ToneTableEditor*>())
        if (e->isVisible()) return e;
    return nullptr;
}

void setCell(QTableWidget* grid, int row, int column, const QString& text) {
    grid->item(row, column)->setText(text);
    processEvents();
}

}  // namespace

TEST(TableBankEditor, OpensOnTheModulesTableAndTheModuleShowsTheNewNameAfterClose) {
    GuiHarness h;
    h.placeModule("Tabla");
    connectThroughList(h, "1Table-", 0, "~ 100");
    connectThroughList(h, "1Table-", 1, "~   3");
    runTicks(h);
    gui::PanelFrame& frame = panel(h, "1Table-");
    part<QPushButton>(frame, "cmdTabla")->click();
    gui::PageTableEditor* editor = bankEditor(h);
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->currentRow(), 100);
    type(editor->nameEdit(), QStringLiteral("Melody"));
    editor->button("btnFill")->click();
    processEvents();
    gui::FillDialog* fill = editor->fillDialog();
    ASSERT_NE(fill, nullptr);
    EXPECT_EQ(fill->windowTitle(), QStringLiteral("Table Page 100"));
    fill->knob(2)->setValue(11);
    fill->command(3)->click();  // Add 11 to every step of the empty table
    fill->command(0)->click();
    processEvents();
    editor->button("btnClose")->click();
    processEvents();
    runTicks(h, 3);
    EXPECT_EQ(shownText(panel(h, "1Table-"), "lblTabla"), QStringLiteral("Melody"));
    Module& table = module(h, "1Table-");
    auto held = h.engine().lock();
    EXPECT_EQ(h.engine().bus[table.OutBus], 11);
    EXPECT_EQ(h.session().tables.names.name(100), "Melody");
}

TEST(TableBankEditor, RefusesABrokenFileByNameAndSavesWhatItShows) {
    GuiHarness h;
    h.placeModule("TFit");
    part<QPushButton>(panel(h, "1TFit-"), "cmdTabla")->click();
    gui::PageTableEditor* editor = bankEditor(h);
    ASSERT_NE(editor, nullptr);
    h.writeFile(QStringLiteral("short.tbl"), std::string(100, '\x01'));
    h.dialogs.openAnswers.push_back(h.file(QStringLiteral("short.tbl")));
    editor->button("btnLoad")->click();
    ASSERT_EQ(h.dialogs.criticals.size(), 1u);
    EXPECT_TRUE(h.dialogs.criticals[0].text.startsWith(QStringLiteral("Unable to Load: ") + h.file(QStringLiteral("short.tbl"))));
    editor->nameEdit()->clear();
    type(editor->nameEdit(), QStringLiteral("Saved"));
    h.dialogs.saveAsAnswers.push_back(h.file(QStringLiteral("bank.tbl")));
    editor->button("btnSave")->click();
    GeneralTables saved;
    std::string error;
    ASSERT_TRUE(LoadTableFile(h.file(QStringLiteral("bank.tbl")).toStdString(), saved, error)) << error;
    EXPECT_EQ(saved.names.name(0), "Saved");
    editor->button("btnClose")->click();
}

TEST(ToneTableEditor, ImportsAScaleEditsCentsUndoesAndExports) {
    GuiHarness h;
    h.window().findChild<QAction*>(QStringLiteral("mnuFileTuning"))->trigger();
    gui::ToneTableEditor* editor = toneEditor(h);
    ASSERT_NE(editor, nullptr);
    editor->selectRow(20);
    h.dialogs.openAnswers.push_back(QStringLiteral(QUILLMER_SOURCE_DIR "/data/scales/equal-19.scl"));
    h.dialogs.openAnswers.push_back(QString());  // no keyboard map
    editor->button("btnImport")->click();
    processEvents();
    EXPECT_TRUE(h.dialogs.criticals.empty());
    EXPECT_EQ(editor->stepsBox()->value(), 19);
    {
        auto held = h.engine().lock();
        EXPECT_EQ(h.engine().toneRow(20)[127], 18) << "the patch plays it at once";
        EXPECT_EQ(h.engine().toneRow(20)[5], 3);
        EXPECT_EQ(h.session().tones.names.name(20), "19 equal divisions o");
    }
    setCell(editor->stepsGrid(), 1, 2, QStringLiteral("50"));
    {
        auto held = h.engine().lock();
        EXPECT_EQ(h.engine().toneRow(20)[1], 0);
        EXPECT_EQ(h.engine().toneRow(20)[65], 33) << "50 cents: half a semitone of bend";
    }
    setCell(editor->stepsGrid(), 2, 2, QStringLiteral("-5"));
    ASSERT_EQ(h.dialogs.criticals.size(), 1u) << "a pitch below the root is refused";
    EXPECT_TRUE(h.dialogs.criticals[0].text.startsWith(QStringLiteral("Step 2")));
    editor->button("btnUndo")->click();
    {
        auto held = h.engine().lock();
        EXPECT_EQ(h.engine().toneRow(20)[65], 1 + 40) << "undo takes the table back before the cents edit";
    }
    h.dialogs.saveAsAnswers.push_back(h.file(QStringLiteral("out.scl")));
    editor->button("btnExport")->click();
    EXPECT_TRUE(QFileInfo::exists(h.file(QStringLiteral("out.scl"))));
    h.writeFile(QStringLiteral("long.pbt"), std::string(20000, '\x01'));
    h.dialogs.openAnswers.push_back(h.file(QStringLiteral("long.pbt")));
    editor->button("btnLoad")->click();
    ASSERT_EQ(h.dialogs.criticals.size(), 2u);
    EXPECT_NE(h.dialogs.criticals[1].text.indexOf(QStringLiteral("too long")), -1);
    EXPECT_EQ(editor->stepsBox()->value(), 19) << "a refused file changes nothing";
    editor->button("btnClose")->click();
}

TEST(ToneTableEditor, TheToneTblPanelOpensItOnItsTable) {
    GuiHarness h;
    h.placeModule("ToneTbl");
    connectThroughList(h, "1ToneTbl-", 0, "~   7");
    runTicks(h);
    part<QPushButton>(panel(h, "1ToneTbl-"), "cmdTone")->click();
    gui::ToneTableEditor* editor = toneEditor(h);
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->currentRow(), 7);
    editor->button("btnClose")->click();
}

}  // namespace quillmer::testing
