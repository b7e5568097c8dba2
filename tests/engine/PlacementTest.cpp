#include <gtest/gtest.h>

#include "Harness.h"
#include "engine/Placement.h"

using namespace quillmer;
using quillmer::testing::Harness;

TEST(Snap, RoundsToTheGridAtFourPixels) {
    EXPECT_EQ(snapToGrid(0), 0);
    EXPECT_EQ(snapToGrid(15 * 3), 0);    // 3 px
    EXPECT_EQ(snapToGrid(15 * 4), 120);  // 4 px
    EXPECT_EQ(snapToGrid(15 * 11), 120);
    EXPECT_EQ(snapToGrid(15 * 12), 240);
    EXPECT_EQ(snapToGrid(1000), 960);   // 66 px -> 8 cells
}

TEST(PageEdges, TheLeftTestComesFirstSoTheTopLeftCornerFlipsWest) {
    const int W = 15000, H = 9000;
    EXPECT_EQ(pageEdgeTarget(0, -10, -10, 1800, 1200, W, H), 3);
    EXPECT_EQ(pageEdgeTarget(4, -10, 100, 1800, 1200, W, H), 4);  // North of group 1
    EXPECT_EQ(pageEdgeTarget(4, 100, W - 1800, 1800, 1200, W, H), 5);  // touching counts
    EXPECT_EQ(pageEdgeTarget(8, H - 1000, 100, 1800, 1200, W, H), 10);
    EXPECT_EQ(pageEdgeTarget(15, 100, 100, 1800, 1200, W, H), -1);
    EXPECT_EQ(pageEdgeTarget(0, H, W, 1800, 1200, W, H), 1) << "East is tested before South";
}

TEST(PageEdges, ModulesSnapAndFlipOnlyWhenAskedTo) {
    Harness h;
    Module& m = h.add("Div");
    h.engine->StartTimers();
    m.Left = -500;
    h.ticks(1);
    EXPECT_EQ(m.Page, 0) << "page flip off: the panel stays on its page";
    h.engine->options.autoAlign = true;
    m.Left = 1000;
    m.Top = 170;
    h.ticks(1);
    EXPECT_EQ(m.Left, 960);
    EXPECT_EQ(m.Top, 120);
    h.engine->pageFlip = true;
    h.engine->showPage(6);  // group 1, South
    m.Page = 6;
    m.Top = -200;
    h.ticks(1);
    EXPECT_EQ(m.Page, 4);
    EXPECT_EQ(h.engine->CurrentPage(), 4);
    EXPECT_EQ(h.engine->bus[sysbus::Page], 4);
}
