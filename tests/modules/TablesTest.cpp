// The slide, run and page tables: the stage input, the mouse on the bars, the scale limit,
// pages chosen live, and their records through several snapshots.

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "ModuleHarness.h"
#include "engine/FileLayout.h"
#include "modules/sequencers/Pages.h"
#include "modules/sequencers/Runs.h"
#include "modules/sequencers/Slides.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

using Button = SlideSequencer::Button;
const std::vector<std::string> kSlides{"Slide4", "Slide8", "Slide12", "Slide16", "Slide24",
                                       "Slide32", "Slide48", "Slide64", "Slide128"};
const std::vector<std::string> kRuns{"Run8", "Run12", "Run16", "Run24", "Run32", "Run48", "Run64", "Run128"};
const std::vector<std::string> kPages{"Page08", "Page12", "Page16", "Page24", "Page32", "Page64", "Page128"};

std::array<uint8_t, 128> rowFrom(int first, int stride = 1) {
    std::array<uint8_t, 128> row{};
    for (int i = 0; i < 128; ++i) row[static_cast<size_t>(i)] = static_cast<uint8_t>((first + i * stride) & 127);
    return row;
}

// The y of a point whose value is v on a bar of a slide with limit `limit`.
int yFor(int v, int limit) { return 78 - static_cast<int>(std::ceil(static_cast<float>(v) * (64.0f / static_cast<float>(limit)))); }

SlideSequencer& slide(ModuleHarness& h, const char* type) { return static_cast<SlideSequencer&>(h.add(type)); }

}  // namespace

TEST(Slides, TheScaleLimitCapsTheOutputAndTheBarButNotTheStage) {
    ModuleHarness h;
    SlideSequencer& s = slide(h, "Slide8");
    EXPECT_EQ(s.ScaleLimit, 36);
    std::array<uint8_t, 8> row{100, 10, 0, 0, 0, 0, 0, 0};
    s.UpdateSeq(row, 36);
    h.ticks(1);
    EXPECT_EQ(h.out(s), 36);
    EXPECT_EQ(s.barHeight(0), 64) << "full height, clipped";
    EXPECT_EQ(s.barHeight(1), 18);  // 10 x 64/36 = 17.8
    s.setScaleLimit(127);
    EXPECT_EQ(h.out(s), 100) << "raising the knob gives the stored value back";
    s.setScaleLimit(0);
    EXPECT_EQ(s.ScaleLimit, 1);
    s.knob(50, SlideSequencer::KnobKey::AltHeld);
    EXPECT_EQ(s.ScaleLimit, 64);
    s.knob(50, SlideSequencer::KnobKey::CtrlHeld);
    EXPECT_EQ(s.ScaleLimit, 1) << "Ctrl gives 0, kept at 1";
    s.knob(50, SlideSequencer::KnobKey::ShiftHeld);
    EXPECT_EQ(s.ScaleLimit, 127);
    // The Fill dialog brings its scale back with the row.
    s.UpdateSeq(row, 300);
    EXPECT_EQ(s.ScaleLimit, 127);
}

TEST(Slides, KnobAngleGoesRoundFromTheSeamAtTheBottom) {
    EXPECT_EQ(knobValueAt(172.5, 0), 64) << "straight up is the middle";
    EXPECT_EQ(knobValueAt(345, 172.5), 95);
    EXPECT_EQ(knobValueAt(0, 172.5), 31);
    EXPECT_LE(knobValueAt(170, 345), 1);
    EXPECT_GE(knobValueAt(175, 345), 126);
}

TEST(Slides, StageInputFollowsAndAClickLastsUntilTheNextPass) {
    ModuleHarness h;
    SlideSequencer& s = slide(h, "Slide12");
    s.setScaleLimit(127);
    s.UpdateSeq(rowFrom(40), 127);
    h.set(s, 0, 27);  // 27 mod 12
    h.ticks(1);
    EXPECT_EQ(s.CurrentStage, 3);
    EXPECT_EQ(h.out(s), 43);
    // A click paints and selects; release goes back, and the input rules at once.
    ASSERT_TRUE(s.mouseDown(86 + 10 * 7, 67, Button::Left));
    EXPECT_EQ(s.CurrentStage, 7);
    EXPECT_EQ(s.stageValue(7), 21) << "11 pixels up at about two steps a pixel";
    EXPECT_EQ(h.out(s), 21);
    h.ticks(3);
    EXPECT_EQ(s.CurrentStage, 7) << "the input keeps off while a button is down";
    s.mouseUp();
    EXPECT_EQ(s.CurrentStage, 3);
    EXPECT_EQ(h.out(s), 43);
    EXPECT_NE(s.Enabled, 0);
}

TEST(Slides, HitTestFollowsTheAreaOfEachSize) {
    ModuleHarness h;
    for (const std::string& type : kSlides) {
        SlideSequencer& s = slide(h, type.c_str());
        const int n = s.stageCount();
        EXPECT_TRUE(s.inArea(86, 12)) << type;
        EXPECT_FALSE(s.inArea(85, 40)) << type;
        EXPECT_FALSE(s.inArea(100, 11)) << type;
        EXPECT_FALSE(s.inArea(100, 79)) << type;
        EXPECT_TRUE(s.inArea(s.rightEdge(), 78)) << type;
        EXPECT_FALSE(s.inArea(s.rightEdge() + 1, 40)) << type;
        EXPECT_EQ(s.stageAtX(86 + (n - 1) * s.barWidth()), n - 1) << type;
        EXPECT_FALSE(s.mouseDown(s.rightEdge() + 1, 40, Button::Left)) << "outside: a panel drag";
        EXPECT_EQ(s.valueAtY(78), 0);
        EXPECT_EQ(s.valueAtY(14), 36) << "64 pixels are the limit";
    }
}

TEST(Slides, LeftDragAdjustsTheBarFirstHitRightDragPaintsAcross) {
    ModuleHarness h;
    SlideSequencer& s = slide(h, "Slide8");
    s.mouseDown(86 + 2 * 10, yFor(10, 36), Button::Left);
    s.mouseMove(86 + 6 * 10, yFor(30, 36), Button::Left);
    EXPECT_EQ(s.stageValue(2), 30);
    EXPECT_EQ(s.stageValue(6), 0);
    EXPECT_EQ(h.out(s), 30);
    s.mouseMove(86 + 6 * 10, 0, Button::Left);
    EXPECT_EQ(s.stageValue(2), 36) << "a drag above the area stops at the limit";
    s.mouseUp();

    s.mouseDown(86 + 3 * 10, yFor(5, 36), Button::Other);
    s.mouseMove(86 + 4 * 10, yFor(6, 36), Button::Other);
    s.mouseMove(86 + 5 * 10, yFor(7, 36), Button::Other);
    EXPECT_EQ(s.CurrentStage, 5);
    EXPECT_EQ(h.out(s), 7);
    s.mouseMove(0, yFor(8, 36), Button::Other);       // left of the first bar
    s.mouseMove(2000, 200, Button::Other);             // past the last, below the floor
    s.mouseUp();
    EXPECT_EQ(s.stageValue(0), 8);
    EXPECT_EQ(s.stageValue(7), 0);
    EXPECT_EQ(s.stageValue(3), 5);
    EXPECT_EQ(s.stageValue(4), 6);
}

TEST(Slides, AClickOnADisabledSlideStaysOnThePaintedStage) {
    ModuleHarness h;
    SlideSequencer& s = slide(h, "Slide16");
    s.Enabled = 0;
    s.mouseDown(86 + 9 * 10, yFor(12, 36), Button::Left);
    s.mouseUp();
    EXPECT_EQ(s.Enabled, 0);
    EXPECT_EQ(s.CurrentStage, 9);
    EXPECT_EQ(h.out(s), 12);
}

TEST(Slides, HoverShowsTheBarUnderThePointerAndChangesNothing) {
    ModuleHarness h;
    SlideSequencer& s = slide(h, "Slide4");
    s.UpdateSeq(std::array<uint8_t, 4>{1, 2, 3, 4}, 36);
    s.mouseMove(86 + 2 * 10, 40, Button::None);
    EXPECT_EQ(s.shownStage(), 2);
    EXPECT_EQ(s.shownValue(), 3);
    EXPECT_EQ(s.CurrentStage, 0);
    EXPECT_EQ(h.out(s), 1);
    s.mouseLeave();
    EXPECT_EQ(s.shownStage(), 0);
    EXPECT_EQ(s.shownValue(), 1);
}

TEST(Slides, NormalizeAndItsUndo) {
    ModuleHarness h;
    SlideSequencer& s = slide(h, "Slide4");
    s.normalize();
    EXPECT_FALSE(s.UndoEnabled) << "all zero: nothing to do, nothing to undo";
    s.UpdateSeq(std::array<uint8_t, 4>{10, 5, 0, 3}, 100);
    s.normalize();
    EXPECT_TRUE(s.UndoEnabled);
    EXPECT_EQ(s.stageValue(0), 100);
    EXPECT_EQ(s.stageValue(1), 50);
    EXPECT_EQ(s.stageValue(3), 30);
    EXPECT_EQ(h.out(s), 100);
    s.undoNormalize();
    EXPECT_EQ(s.stageValue(0), 10);
    EXPECT_FALSE(s.UndoEnabled);
    // Any edit after a normalize takes its undo away.
    s.normalize();
    s.setUpDown(120);
    EXPECT_EQ(s.stageValue(0), 100) << "the up-down stops at the limit";
    EXPECT_FALSE(s.UndoEnabled);
}

TEST(Slides, SnapshotsKeepStagesAndLimitAndAZeroLimitReadsTwoWays) {
    ModuleHarness h;
    SlideSequencer& s = slide(h, "Slide8");
    h.engine->SnapshotCount = 2;
    s.UpdateSeq(rowFrom(10), 90);
    h.engine->StoreAllPatches();
    h.engine->CurrentSnapshot = 1;
    s.UpdateSeq(rowFrom(60), 20);
    s.normalize();
    h.engine->StoreAllPatches();
    h.engine->CurrentSnapshot = 0;
    h.engine->RecallAllPatches();
    EXPECT_EQ(s.ScaleLimit, 90);
    EXPECT_EQ(s.stageValue(7), 17);
    EXPECT_FALSE(s.UndoEnabled) << "a recall takes the normalize's undo away";

    // A limit byte of 0: the default when read from a file, 1 on a recall.
    std::vector<uint8_t> fields(128 * 9, 0);
    fields[0] = 50;
    ByteReader in(fields);
    s.readFields(in);
    EXPECT_EQ(s.ScaleLimit, 36);
    h.engine->RecallAllPatches();
    EXPECT_EQ(s.ScaleLimit, 1);
    EXPECT_EQ(h.out(s), 1);
}

TEST(Runs, ReduceTheStageAndTakeTheFillRow) {
    ModuleHarness h;
    for (const std::string& type : kRuns) {
        auto& r = static_cast<RunSequencer&>(h.add(type));
        r.UpdateSeq(rowFrom(0, 1), 0);
        const int n = r.stageCount();
        EXPECT_EQ(run(h, r, {127}), 127 % n) << type;
        EXPECT_EQ(run(h, r, {n}), 0) << type;
        if (n + 5 <= 127) {
            EXPECT_EQ(run(h, r, {n + 5}), 5) << type;
        }
        r.UpdateSeq(rowFrom(100, 0), 0);
        EXPECT_EQ(h.out(r), 100) << "the fill reaches the output at once: " << type;
    }
}

TEST(Pages, APageChangeReachesTheOutputInTheSamePass) {
    ModuleHarness h;
    auto& p = static_cast<PageSequencer&>(h.add("Page16"));
    for (int page = 0; page < 128; ++page) p.setPageRow(page, rowFrom(page, 1));
    EXPECT_EQ(run(h, p, {3, 0}), 3);
    EXPECT_EQ(run(h, p, {3, 10}), 13);
    EXPECT_EQ(p.CurrentPage, 10);
    EXPECT_EQ(run(h, p, {19, 20}), 23) << "stage 19 AND 15";
    // A page change that lands on the same value writes nothing to the bus.
    p.setPageRow(21, rowFrom(20, 1));
    h.engine->bus[p.OutBus] = 99;
    EXPECT_EQ(run(h, p, {3, 21}), 99);
}

TEST(Pages, AnOpenFillDialogHoldsThePageOfItsTypeOnly) {
    ModuleHarness h;
    auto& small = static_cast<PageSequencer&>(h.add("Page08"));
    auto& other = static_cast<PageSequencer&>(h.add("Page08"));
    auto& big = static_cast<PageSequencer&>(h.add("Page128"));
    for (int page = 0; page < 128; ++page) {
        small.setPageRow(page, rowFrom(page, 0));
        other.setPageRow(page, rowFrom(page + 1, 0));
        big.setPageRow(page, rowFrom(127 - page, 0));
    }
    // Two sizes driven by the same bus, each from its own pages.
    h.set(small, 1, 5);
    h.set(other, 1, 5);
    h.set(big, 1, 5);
    h.ticks(1);
    EXPECT_EQ(h.out(small), 5);
    EXPECT_EQ(h.out(other), 6);
    EXPECT_EQ(h.out(big), 122);

    small.fillOpened(true);
    h.set(small, 1, 9);
    h.set(other, 1, 9);
    h.set(big, 1, 9);
    h.ticks(1);
    EXPECT_EQ(small.CurrentPage, 5);
    EXPECT_EQ(other.CurrentPage, 5) << "the flag belongs to the type";
    EXPECT_EQ(big.CurrentPage, 9);
    EXPECT_EQ(h.out(big), 118);
    // The dialog edits the page in force: its row and the output at once.
    small.UpdateSeq(rowFrom(70, 0), 0);
    EXPECT_EQ(h.out(small), 70);
    EXPECT_EQ(small.value(5, 7), 70);
    EXPECT_EQ(small.value(9, 0), 9);
    small.fillOpened(false);
    h.ticks(1);
    EXPECT_EQ(h.out(small), 9);
    EXPECT_EQ(h.out(other), 10);
}

TEST(Pages, TheTableEditorsChangesLoadOnTheNextPass) {
    ModuleHarness h;
    auto& p = static_cast<PageSequencer&>(h.add("Page12"));
    EXPECT_EQ(run(h, p, {2, 4}), 0);
    p.setPageRow(4, rowFrom(50, 1));
    h.ticks(1);
    EXPECT_EQ(h.out(p), 0) << "the working copy stays until the page changes";
    p.tableChanged();
    h.ticks(1);
    EXPECT_EQ(h.out(p), 52);
    p.setPageName(4, "a name longer than twenty characters");
    EXPECT_EQ(p.pageName(4), "a name longer than t");
}

TEST(TableRecords, EachTypeFillsExactlyItsLayout) {
    ModuleHarness h;
    for (const std::vector<std::string>* family : {&kSlides, &kRuns, &kPages}) {
        for (const std::string& type : *family) {
            Module& m = h.add(type);
            const std::vector<uint8_t> bytes = body(h, m);
            std::vector<LayoutToken> layout = parseLayout(fileSlotOf(*typeIdByName(type)).layout);
            ASSERT_EQ(layout.front().kind, LayoutToken::Kind::Head) << type;
            layout.erase(layout.begin());
            ByteReader in(bytes);
            skipRecord(in, layout);
            EXPECT_EQ(in.remaining(), 0u) << type;
        }
    }
}

TEST(TableRecords, EverySizeComesBackThroughSeveralSnapshots) {
    for (const std::vector<std::string>* family : {&kSlides, &kRuns, &kPages}) {
        for (const std::string& type : *family) {
            ModuleHarness h;
            Module& m = h.add(type);
            auto& target = dynamic_cast<FillTarget&>(m);
            h.engine->SnapshotCount = 3;
            for (int snap : {0, 1, 2}) {
                h.engine->CurrentSnapshot = static_cast<int16_t>(snap);
                h.set(m, 0, snap * 5 + 1);
                if (m.inputCount() > 1) h.set(m, 1, snap + 40);
                h.ticks(1);
                target.UpdateSeq(rowFrom(snap * 30 + 3, snap + 1), 100 - snap);
                h.engine->StoreAllPatches();
            }
            if (auto* p = dynamic_cast<PageSequencer*>(&m)) p->setPageName(41, "Verse");
            const std::vector<uint8_t> bytes = body(h, m);
            EXPECT_EQ(body(h, *readBack(h, type, bytes)), bytes) << type;

            // Into another engine, as a file load does, then each snapshot recalled.
            ModuleHarness h2;
            Module& copy = h2.engine->loadRecord(*typeIdByName(type));
            copy.Active = -1;
            ByteReader in(bytes);
            copy.readBody(in, h2.engine->names);
            h2.engine->restoreInstances(*typeIdByName(type));
            h2.engine->finishRestore();
            h2.engine->SnapshotCount = 3;
            for (int snap : {2, 0, 1}) {
                h.engine->CurrentSnapshot = static_cast<int16_t>(snap);
                h.engine->RecallAllPatches();
                h.ticks(1);
                h2.engine->CurrentSnapshot = static_cast<int16_t>(snap);
                h2.engine->RecallAllPatches();
                h2.ticks(1);
                EXPECT_EQ(h2.out(copy), h.out(m)) << type << " snapshot " << snap;
                EXPECT_EQ(copy.storedName(snap, 0), m.storedName(snap, 0)) << type;
            }
            if (auto* p = dynamic_cast<PageSequencer*>(&copy)) {
                EXPECT_EQ(p->pageName(41), "Verse");
                EXPECT_EQ(p->pageName(40), "");
            }
            if (auto* s = dynamic_cast<SlideSequencer*>(&copy)) {
                EXPECT_EQ(s->ScaleLimit, 99) << type;
            }
        }
    }
}
