// The bouncing ball over many ticks: it stays in its box, turns at every wall, falls under
// gravity, and follows what BallCtrl modules set from the bus.

#include <gtest/gtest.h>

#include <algorithm>

#include "ModuleHarness.h"
#include "modules/panels/Ball.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

Ball& newBall(ModuleHarness& h, int x, int y, int vx, int vy, int gravity = 0) {
    auto& b = static_cast<Ball&>(h.add("Ball"));
    b.setSetting(Ball::kStartX, x);
    b.setSetting(Ball::kStartY, y);
    b.setSetting(Ball::kSpeedX, vx);
    b.setSetting(Ball::kSpeedY, vy);
    b.setSetting(Ball::kGravity, gravity);
    return b;
}

}  // namespace

TEST(Balls, BouncesOffEveryWallAndNeverLeavesTheBox) {
    ModuleHarness h;
    // 3 units right and 2.5 down a tick, in a box of 10..50 by 20..90.
    Ball& b = newBall(h, 30, 50, 64 + 48, 64 - 40);
    b.setWall(Ball::Left, 10);
    b.setWall(Ball::Right, 50);
    b.setWall(Ball::Floor, 20);
    b.setWall(Ball::Ceiling, 90);
    int lowest = 127, highest = 0;
    for (int t = 0; t < 2000; ++t) {
        h.ticks(1);
        ASSERT_GE(b.x(), 10.0);
        ASSERT_LE(b.x(), 50.0);
        lowest = std::min<int>(lowest, h.out(b));
        highest = std::max<int>(highest, h.out(b));
    }
    for (Ball::Wall w : {Ball::Left, Ball::Right, Ball::Floor, Ball::Ceiling}) EXPECT_GT(b.hits(w), 10) << w;
    // Left and right alternate: the counts differ by at most one.
    EXPECT_LE(std::abs(b.hits(Ball::Left) - b.hits(Ball::Right)), 1);
    EXPECT_EQ(lowest, 20);
    EXPECT_EQ(highest, 90);

    // The output follows x instead of the height when asked.
    b.setSetting(Ball::kAxis, 1);
    h.ticks(1);
    EXPECT_EQ(h.out(b), static_cast<int>(b.x() + 0.5));
}

TEST(Balls, AStepPastAWallFoldsBackAndTurns) {
    ModuleHarness h;
    // Starts 1 unit from the right wall at 4 units a tick: 3 units back in after one tick.
    Ball& b = newBall(h, 126, 64, 127, 64);
    h.ticks(1);
    EXPECT_DOUBLE_EQ(b.x(), 127.0 - 3.0 + 1.0 / 16);  // 63 sixteenths of speed
    EXPECT_LT(b.vx(), 0);
    EXPECT_EQ(b.hits(Ball::Right), 1);
    EXPECT_EQ(b.hits(Ball::Left), 0);
}

TEST(Balls, GravityMakesItBounceOnTheFloorAndRiseAgain) {
    ModuleHarness h;
    Ball& b = newBall(h, 64, 100, 64, 64, 16);
    std::vector<int> heights = h.values(b, 2000);
    EXPECT_GT(b.hits(Ball::Floor), 2);
    EXPECT_EQ(b.hits(Ball::Ceiling), 0);
    // After each bounce it climbs back close to where it was dropped from, and no higher
    // however long it bounces.
    const int top = *std::max_element(heights.begin() + 100, heights.end());
    EXPECT_GE(top, 95);
    EXPECT_LE(top, 101);
}

TEST(Balls, WallsThatMeetHoldTheBallAndAResyncRestartsIt) {
    ModuleHarness h;
    Ball& b = newBall(h, 64, 64, 100, 30);
    b.setWall(Ball::Floor, 70);
    b.setWall(Ball::Ceiling, 70);
    h.ticks(3);
    EXPECT_EQ(h.out(b), 70);
    b.setWall(Ball::Ceiling, 10);  // crossed: still on the floor wall
    h.ticks(1);
    EXPECT_EQ(h.out(b), 70);

    b.setWall(Ball::Floor, 0);
    b.setWall(Ball::Ceiling, 127);
    h.engine->ResyncPending = true;
    h.engine->TickModules();
    h.engine->ResyncPending = false;
    EXPECT_EQ(h.out(b), 62);  // one step from the start: 64 less 34 sixteenths
}

TEST(BallControls, ApplyOnChangeOrOnARisingEnableAndFindTheirBall) {
    ModuleHarness h;
    newBall(h, 10, 10, 64, 64);              // 1Ball-, standing still
    Ball& second = newBall(h, 20, 20, 64, 64);  // 2Ball-
    auto& ctrl = static_cast<BallCtrl&>(h.add("BallCtrl"));
    EXPECT_EQ(ctrl.stored(0, 1).position, sysbus::On);  // Enable is on by default
    ctrl.setBall(1);
    ctrl.setTarget(BallCtrl::Y);
    h.set(ctrl, 0, 100);
    h.ticks(1);
    EXPECT_EQ(h.out(second), 100);
    // A new speed, then the same place again: placed, then moved on by the tick.
    ctrl.setTarget(BallCtrl::SpeedY);
    h.set(ctrl, 0, 64 + 16);  // one unit up a tick
    h.ticks(1);
    EXPECT_EQ(h.out(second), 101);
    ctrl.setTarget(BallCtrl::Y);
    h.set(ctrl, 0, 100);
    h.ticks(1);
    EXPECT_EQ(h.out(second), 101);
    // A value that stands is not applied again.
    h.ticks(2);
    EXPECT_EQ(h.out(second), 103);
    // A rising Enable applies the value that stands.
    h.set(ctrl, 1, 0);
    h.ticks(1);
    EXPECT_EQ(h.out(second), 104);
    h.set(ctrl, 1, 127);
    h.ticks(1);
    EXPECT_EQ(h.out(second), 101);

    // Walls from the bus: the ball is put back inside at once.
    ctrl.setTarget(BallCtrl::Ceiling);
    h.set(ctrl, 0, 50);
    h.ticks(1);
    EXPECT_LE(h.out(second), 50);

    // A ball that isn't there is no fault.
    ctrl.setBall(9);
    h.set(ctrl, 0, 3);
    h.ticks(2);
    h.engine->Delete(second);
    ctrl.setBall(1);
    h.set(ctrl, 0, 7);
    h.ticks(2);
}
