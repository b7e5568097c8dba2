// Connecting inputs through the connection list, and what an input shows and reads once
// its source is gone.

#include "gui/ConnectPopup.h"
#include "tests/gui/PanelHarness.h"

namespace quillmer::testing {
namespace {

TEST(Connect, TheListOpensOnTheInputAndTheValueFlowsOnTheNextTick) {
    GuiHarness h;
    h.placeModule("Div");
    h.placeModule("Div");

    panel(h, "2Div-").inputButton(0)->click();
    gui::ConnectPopup& popup = h.window().panels().connectPopup();
    ASSERT_TRUE(popup.isVisible());
    EXPECT_EQ(popup.windowTitle(), QStringLiteral("Connect: 2Div- Numerator"));
    const int names = popup.list()->count();
    {
        auto held = h.engine().lock();
        EXPECT_EQ(names, static_cast<int>(h.engine().names.sortedCount()));
    }
    EXPECT_EQ(popup.columns(), names / 24 + 1);
    EXPECT_EQ(popup.list()->currentRow(), 0) << "an unconnected input stands on \" Off (0)\"";
    EXPECT_EQ(popup.list()->item(0)->text(), QStringLiteral(" Off (0)"));
    popup.reject();

    connectThroughList(h, "2Div-", 0, "~ 100");
    connectThroughList(h, "2Div-", 1, "~   2");
    gui::PanelFrame& divide = panel(h, "2Div-");
    EXPECT_EQ(divide.inputButton(0)->text(), QStringLiteral("~ 100"));
    EXPECT_EQ(shownText(divide, "bxOut1"), QStringLiteral("0")) << "nothing computed before the tick";
    runTicks(h);
    EXPECT_EQ(shownText(divide, "bxOut1"), QStringLiteral("50"));

    // A module's output is offered like any other name, and feeds the next tick.
    connectThroughList(h, "1Div-", 0, "2Div-");
    connectThroughList(h, "1Div-", 1, "~   5");
    runTicks(h);
    EXPECT_EQ(shownText(panel(h, "1Div-"), "bxOut1"), QStringLiteral("10"));
    {
        auto held = h.engine().lock();
        EXPECT_TRUE(h.session().ModifiedMark);
    }
}

TEST(Connect, ADeletedSourceShowsOffWhileTheInputKeepsReadingItsOldValue) {
    GuiHarness h;
    h.placeModule("Div");
    h.placeModule("Div");
    connectThroughList(h, "1Div-", 0, "~ 100");
    connectThroughList(h, "1Div-", 1, "~   2");
    connectThroughList(h, "2Div-", 0, "1Div-");
    connectThroughList(h, "2Div-", 1, "~   1");
    runTicks(h, 2);
    ASSERT_EQ(shownText(panel(h, "2Div-"), "bxOut1"), QStringLiteral("50"));

    openStatus(h, "1Div-").deleteButton()->click();
    EXPECT_TRUE(h.dialogs.confirms.empty()) << "only the note modules ask first";
    h.window().refresh();
    EXPECT_EQ(h.window().panels().frame(QStringLiteral("1Div-")), nullptr);
    gui::PanelFrame& reader = panel(h, "2Div-");
    EXPECT_EQ(reader.inputButton(0)->text(), QStringLiteral(" Off (0)"));
    runTicks(h, 3);
    EXPECT_EQ(shownText(reader, "bxOut1"), QStringLiteral("50")) << "the input still reads the frozen bus element";

    // Connected anew, it reads what its button says.
    connectThroughList(h, "2Div-", 0, " Off (0)");
    runTicks(h);
    EXPECT_EQ(shownText(reader, "bxOut1"), QStringLiteral("0"));
}

TEST(Connect, LockedModulesNeitherConnectNorMove) {
    GuiHarness h;
    h.placeModule("Div");
    const int32_t leftBefore = module(h, "1Div-").Left;
    {
        auto held = h.engine().lock();
        h.engine().options.lockModules = true;
    }
    gui::PanelFrame& divide = panel(h, "1Div-");
    divide.inputButton(0)->click();
    EXPECT_FALSE(h.window().panels().connectPopup().isVisible());
    const QPoint at = divide.pos();
    drag(divide.nameLabel(), QPoint(40, 30));
    EXPECT_EQ(divide.pos(), at);
    runTicks(h);
    EXPECT_EQ(module(h, "1Div-").Left, leftBefore);
}

TEST(ConnectList, ColumnsOf24RowsShortenOnAShortScreenAndScrollWhenTooWide) {
    const QSize cell(80, 16);
    gui::ConnectLayout tall = gui::connectLayout(100, cell, QSize(1920, 1000));
    EXPECT_EQ(tall.rows, 24);
    EXPECT_EQ(tall.columns, 100 / 24 + 1);
    EXPECT_EQ(tall.size, QSize(5 * 80, 24 * 16));
    EXPECT_FALSE(tall.scrolls);

    gui::ConnectLayout shortScreen = gui::connectLayout(100, cell, QSize(1920, 200));
    EXPECT_EQ(shortScreen.rows, 12) << "200 pixels hold 12 rows of 16";
    EXPECT_EQ(shortScreen.columns, 100 / 12 + 1);
    EXPECT_LE(shortScreen.size.height(), 200);

    gui::ConnectLayout narrow = gui::connectLayout(2000, cell, QSize(1000, 400));
    EXPECT_TRUE(narrow.scrolls);
    EXPECT_EQ(narrow.size.width(), 960) << "whole columns only";
    EXPECT_EQ(gui::connectLayout(5, cell, QSize(10, 5)).rows, 1) << "never fewer than one row";
}

}  // namespace
}  // namespace quillmer::testing
