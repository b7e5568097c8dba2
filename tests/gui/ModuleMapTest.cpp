// The module map: its lists by page, and its four commands on the selected modules.

#include <QAction>
#include <QApplication>
#include <QPushButton>

#include "gui/ModuleMap.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

QStringList lines(QListWidget* list) {
    QStringList texts;
    for (int i = 0; i < list->count(); ++i) texts << list->item(i)->text();
    return texts;
}

void select(gui::ModuleMap& map, int page, const QStringList& names) {
    for (int p = 0; p < kPageCount; ++p) map.pageList(p)->clearSelection();
    for (const QString& name : names) {
        const QList<QListWidgetItem*> found = map.pageList(page)->findItems(name, Qt::MatchExactly);
        ASSERT_EQ(found.size(), 1) << name.toStdString();
        found[0]->setSelected(true);
    }
}

std::vector<int> pagesOf(GuiHarness& h) {
    auto held = h.engine().lock();
    std::vector<int> pages;
    h.engine().forEachModule([&](Module& m) { pages.push_back(m.Page); });
    return pages;
}

TEST(ModuleMap, ListsModulesByPageAndHighlightsThePageOnShow) {
    GuiHarness h;
    h.placeModule("Div");
    h.placeModule("Clock");
    QAction* entry = h.window().action(QStringLiteral("mnuModuleMap"));
    ASSERT_TRUE(entry->isEnabled());
    entry->trigger();
    gui::ModuleMap& map = h.window().moduleMap();
    ASSERT_TRUE(map.isVisible());
    EXPECT_EQ(map.windowTitle(), QStringLiteral("Module Map"));
    EXPECT_EQ(lines(map.pageList(0)), QStringList({"  North-1", "1Clock-", "1Div-"}));
    EXPECT_EQ(lines(map.pageList(7)), QStringList({"  West-2"}));
    const QColor plain = QApplication::palette().color(QPalette::Base);
    EXPECT_NE(map.pageList(0)->palette().color(QPalette::Base), plain) << "the page on show stands out";
    EXPECT_EQ(map.pageList(1)->palette().color(QPalette::Base), plain);

    // A click on a name goes to its page.
    h.placeModule("Div");
    {
        auto held = h.engine().lock();
        h.engine().MapCommand("2Div-", 0, 9);
    }
    h.window().refresh();
    QListWidgetItem* moved = map.pageList(9)->findItems(QStringLiteral("2Div-"), Qt::MatchExactly).value(0);
    ASSERT_NE(moved, nullptr);
    click(map.pageList(9)->viewport(), map.pageList(9)->visualItemRect(moved).center());
    h.window().refresh();
    EXPECT_EQ(h.window().workspace().page(), 9);
    EXPECT_EQ(map.highlightedPage(), 9);
    EXPECT_NE(map.pageList(9)->palette().color(QPalette::Base), plain);
    EXPECT_EQ(map.pageList(0)->palette().color(QPalette::Base), plain);
}

TEST(ModuleMap, MoveDeleteEnableAndDisableTheSelection) {
    GuiHarness h;
    h.placeModule("Div");
    h.placeModule("Div");
    h.placeModule("Div");
    h.window().openModuleMap();
    gui::ModuleMap& map = h.window().moduleMap();

    select(map, 0, {"1Div-", "3Div-"});
    map.commandButton(gui::ModuleMap::Move)->click();
    EXPECT_EQ(map.windowTitle(), QStringLiteral("Click on destination page to place"));
    EXPECT_EQ(pagesOf(h), std::vector<int>({0, 0, 0})) << "nothing moves before the target is clicked";
    click(map.pageList(5)->viewport(), QPoint(20, 30));
    EXPECT_EQ(map.windowTitle(), QStringLiteral("Module Map"));
    EXPECT_EQ(pagesOf(h), std::vector<int>({5, 0, 5}));
    EXPECT_EQ(lines(map.pageList(5)), QStringList({"  East-2", "1Div-", "3Div-"}));
    EXPECT_EQ(map.pageList(5)->selectedItems().size(), 2) << "the selection survives the rebuild";

    // Cancel changes nothing.
    select(map, 0, {"2Div-"});
    h.dialogs.confirmAnswers = {false};
    map.commandButton(gui::ModuleMap::Delete)->click();
    ASSERT_EQ(h.dialogs.confirms.size(), 1u);
    EXPECT_EQ(h.dialogs.confirms[0].text, QStringLiteral("Confirm Delete Modules - Can Not Undo"));
    EXPECT_EQ(h.moduleCount(), 3u);

    select(map, 5, {"1Div-", "3Div-"});
    map.commandButton(gui::ModuleMap::Disable)->click();
    EXPECT_EQ(module(h, "1Div-").Enabled, 0);
    EXPECT_EQ(module(h, "3Div-").Enabled, 0);
    EXPECT_NE(module(h, "2Div-").Enabled, 0);
    map.commandButton(gui::ModuleMap::Enable)->click();
    EXPECT_NE(module(h, "1Div-").Enabled, 0);
    EXPECT_NE(module(h, "3Div-").Enabled, 0);

    EXPECT_EQ(map.commandButton(gui::ModuleMap::Delete)->text(), QStringLiteral("Clear"));
    EXPECT_EQ(map.commandButton(gui::ModuleMap::Delete)->toolTip(), QStringLiteral("Clear/Restore selected modules"));
    h.dialogs.confirmAnswers = {true};
    map.commandButton(gui::ModuleMap::Delete)->click();
    EXPECT_EQ(h.moduleCount(), 1u);
    EXPECT_EQ(lines(map.pageList(5)), QStringList({"  East-2"}));
    EXPECT_EQ(lines(map.pageList(0)), QStringList({"  North-1", "2Div-"}));
}

TEST(ModuleMap, AClearedSelectionShowsAgainUntilAnotherEdit) {
    GuiHarness h;
    h.placeModule("Div");
    h.placeModule("Div");
    h.window().openModuleMap();
    gui::ModuleMap& map = h.window().moduleMap();
    QPushButton* clear = map.commandButton(gui::ModuleMap::Delete);

    select(map, 0, {"2Div-"});
    h.dialogs.confirmAnswers = {true};
    clear->click();
    h.window().refresh();
    EXPECT_EQ(h.moduleCount(), 1u);
    EXPECT_EQ(clear->text(), QStringLiteral("Show"));

    clear->click();  // no question: it only brings back what was cleared
    h.window().refresh();
    EXPECT_EQ(h.dialogs.confirms.size(), 1u);
    EXPECT_EQ(h.moduleCount(), 2u);
    EXPECT_EQ(lines(map.pageList(0)), QStringList({"  North-1", "1Div-", "2Div-"}));
    EXPECT_EQ(clear->text(), QStringLiteral("Clear"));

    // After another edit the cleared modules are gone for the map; the button clears again.
    select(map, 0, {"1Div-"});
    h.dialogs.confirmAnswers = {true};
    clear->click();
    h.placeModule("Mult");
    h.window().refresh();
    EXPECT_EQ(clear->text(), QStringLiteral("Clear"));
    h.dialogs.confirmAnswers = {false};
    select(map, 0, {"2Div-"});
    clear->click();
    EXPECT_EQ(h.dialogs.confirms.size(), 3u) << "a clear asks again";
    EXPECT_EQ(h.moduleCount(), 2u);
}

TEST(ModuleMap, EachCommandIsOneStepOfTheEditHistory) {
    GuiHarness h;
    h.placeModule("Div");
    h.placeModule("Div");
    h.window().openModuleMap();
    gui::ModuleMap& map = h.window().moduleMap();
    select(map, 0, {"1Div-", "2Div-"});
    map.commandButton(gui::ModuleMap::Disable)->click();
    EXPECT_EQ(module(h, "1Div-").Enabled, 0);
    EXPECT_EQ(module(h, "2Div-").Enabled, 0);
    std::string error;
    {
        auto held = h.engine().lock();
        ASSERT_TRUE(h.session().history.undo(error)) << error;
    }
    EXPECT_NE(module(h, "1Div-").Enabled, 0) << "both come back with one undo";
    EXPECT_NE(module(h, "2Div-").Enabled, 0);
}

}  // namespace
}  // namespace quillmer::testing
