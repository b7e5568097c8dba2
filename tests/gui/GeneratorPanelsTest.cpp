// The generator panels forward their gestures: Fractal's algorithm menu, Turbo and the
// orbit picture's clicks, Chaos's map menu; and the bio sequence window opens, imports and
// saves through the menu command.

#include <QComboBox>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>

#include "gui/BioSequenceWindow.h"
#include "gui/panels/generators/OrbitPicture.h"
#include "modules/generators/Fractals.h"
#include "shell/BioFile.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

TEST(GeneratorPanels, FractalMenuTurboAndPictureReachTheModule) {
    GuiHarness h;
    h.placeModule("Fractal");
    h.placeModule("Chaos");
    auto* algorithms = part<QComboBox>(panel(h, "1Fractal-"), "cbAlgorithm");
    ASSERT_EQ(algorithms->count(), kFractalAlgorithms);
    algorithms->activated(10);
    const auto& fractal = static_cast<const Fractal&>(module(h, "1Fractal-"));
    EXPECT_EQ(fractal.algorithm(), FractalAlgorithm::Raster);
    part<QPushButton>(panel(h, "1Fractal-"), "chkTurbo")->click();
    EXPECT_TRUE(fractal.turbo());
    runTicks(h, 3);
    int lit = 0;
    for (uint8_t px : fractal.picture()) lit += px != 0;
    EXPECT_GE(lit, 2 * Fractal::kTurboPoints);
    auto* picture = part<gui::OrbitPicture>(panel(h, "1Fractal-"), "Picture1");
    ASSERT_NE(picture, nullptr);
    click(picture, QPoint(10, 10), Qt::RightButton);
    {
        auto held = h.engine().lock();
        lit = 0;
        for (uint8_t px : fractal.picture()) lit += px != 0;
    }
    EXPECT_EQ(lit, 0) << "a right click clears the picture";

    auto* maps = part<QComboBox>(panel(h, "1Chaos-"), "cbFunc");
    ASSERT_EQ(maps->count(), 3);
    maps->activated(2);
    EXPECT_EQ(static_cast<const Chaos&>(module(h, "1Chaos-")).map(), 2);
}

TEST(GeneratorPanels, TheBioWindowImportsSavesAndOpensSets) {
    GuiHarness h;
    QTemporaryDir dir;
    const QString records = QStringLiteral(QUILLMER_SOURCE_DIR "/tests/data/bio/globin-fau.gb");
    const QString saved = dir.filePath(QStringLiteral("genes.bst"));
    gui::BioSequenceWindow window(h.dialogs, h.session(), nullptr);
    ASSERT_TRUE(window.importFile(records));
    auto* table = window.findChild<QTableWidget*>(QStringLiteral("tblSequences"));
    EXPECT_EQ(table->item(1, 0)->text(), QStringLiteral("X65923 fau"));
    EXPECT_EQ(table->item(1, 1)->text(), QStringLiteral("134"));
    ASSERT_TRUE(window.saveFile(saved));
    {
        auto held = h.engine().lock();
        installBioSet(BioSet{});
    }
    window.refresh();
    EXPECT_EQ(table->item(1, 0)->text(), QStringLiteral("<no data>"));
    h.dialogs.openAnswers.push_back(saved);
    ASSERT_TRUE(window.openFile());
    EXPECT_EQ(h.dialogs.openDialogs.back().title, QStringLiteral("Open Bio Sequencer File"));
    EXPECT_EQ(table->item(1, 0)->text(), QStringLiteral("X65923 fau"));
    EXPECT_FALSE(window.openFile(dir.path()));
    ASSERT_FALSE(h.dialogs.criticals.empty());
    EXPECT_TRUE(h.dialogs.criticals.back().text.contains(dir.path()));
}

}  // namespace
}  // namespace quillmer::testing
