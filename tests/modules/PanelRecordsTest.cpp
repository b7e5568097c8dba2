// The records of the control, display and picture types: exact sizes of the file layout,
// every byte back as it was read (raw blocks and unused bytes included), and settings of
// several snapshots through write, read and recall.

#include <gtest/gtest.h>

#include "ModuleHarness.h"
#include "engine/FileLayout.h"
#include "modules/panels/Ball.h"
#include "modules/panels/CtrlOut32.h"
#include "modules/panels/InfoBoxes.h"
#include "modules/panels/MousePad.h"
#include "modules/panels/Picture.h"
#include "modules/panels/ValueControls.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {

const std::vector<std::string> kTypes{"Value",    "Number",   "Bar",     "VBar",   "Button",     "Strobe",
                                      "Meter",    "CtrlOut32", "Ball",   "BallCtrl", "Mousexy",  "MouseOut",
                                      "Info",     "InfoPic",  "InfoButton", "InfoButPic", "Image", "ImgOut"};

bool hasHead(std::string_view type) { return parseLayout(fileSlotOf(*typeIdByName(type)).layout).front().kind == LayoutToken::Kind::Head; }

// A blank record's body: the whole record where the layout has no head.
std::vector<uint8_t> blankBody(std::string_view type) {
    std::vector<uint8_t> blank = blankRecordBytes(parseLayout(fileSlotOf(*typeIdByName(type)).layout));
    if (hasHead(type)) blank.erase(blank.begin(), blank.begin() + 20);  // 18 head bytes and an empty name
    return blank;
}

// The body with every byte that isn't a string's length set to a pattern.
std::vector<uint8_t> patterned(std::string_view type) {
    std::vector<uint8_t> bytes = blankBody(type);
    const auto layout = parseLayout(fileSlotOf(*typeIdByName(type)).layout);
    // Raw blocks only: fill the bytes after the last string, and a leading block.
    size_t at = 0;
    for (size_t t = hasHead(type) ? 1 : 0; t < layout.size(); ++t) {
        const LayoutToken& token = layout[t];
        if (token.kind == LayoutToken::Kind::Bytes) {
            for (uint32_t i = 0; i < token.count; ++i) bytes[at + i] = static_cast<uint8_t>((at + i) * 37 + 11);
            at += token.count;
        } else {
            at += 2 * token.count;  // empty strings
        }
    }
    return bytes;
}

}  // namespace

TEST(PanelRecords, EveryTypeRunsAndABlankBodyComesBackAtItsLayoutsSize) {
    ModuleHarness h;
    for (const std::string& type : kTypes) {
        const ModuleTypeId id = *typeIdByName(type);
        ASSERT_TRUE(h.registry.isBuilt(id)) << type;
        Module& m = h.add(type);
        EXPECT_FALSE(m.isPlaceholder()) << type;
        const std::vector<uint8_t> blank = blankBody(type);
        const std::unique_ptr<Module> copy = readBack(h, type, blank);
        EXPECT_EQ(body(h, *copy), blank) << type;
    }
    h.ticks(3);  // every type runs beside the others
}

TEST(PanelRecords, RawBlocksAndUnusedBytesComeBackAsTheyWereRead) {
    ModuleHarness h;
    for (const std::string& type : kTypes) {
        const std::vector<uint8_t> bytes = patterned(type);
        const std::unique_ptr<Module> copy = readBack(h, type, bytes);
        EXPECT_EQ(body(h, *copy), bytes) << type;
        // Placed, recalled and stored again in an unedited snapshot: still every byte of its
        // own (the input names are the live connections' by then).
        Module& placed = h.add(type);
        ByteReader in(bytes);
        placed.readBody(in, h.engine->names);
        const std::string name = placed.Name;
        h.engine->CurrentSnapshot = 5;
        placed.PatchChange(*h.engine);
        placed.PatchStore(*h.engine);
        h.engine->CurrentSnapshot = 0;
        placed.PatchChange(*h.engine);
        placed.PatchStore(*h.engine);
        if (placed.inputCount() == 0) {
            EXPECT_EQ(body(h, placed), bytes) << type;
        } else {
            ByteWriter mine, read;
            placed.writeFields(mine);
            copy->writeFields(read);
            EXPECT_EQ(mine.bytes(), read.bytes()) << type;
        }
        EXPECT_EQ(placed.Name, name) << type;
    }
}

TEST(PanelRecords, TextsPicturesAndSettingsOfSeveralSnapshotsSurvive) {
    ModuleHarness h;
    auto& info = static_cast<InfoButton&>(h.add("InfoButton"));
    info.text = "Verse \xe2\x80\x94 go to the chorus";  // an em dash: Windows-1252 on disk
    info.extra = 3;
    info.Top = 1200;
    info.Width = 2400;
    auto& bank = static_cast<CtrlOut32&>(h.add("CtrlOut32"));
    bank.title = "Filters";
    bank.labels[31] = "Cutoff";
    bank.setController(31, 74);
    bank.setWindowPlace(-20, 300);
    bank.setWindowShown(true);
    auto& image = static_cast<Image&>(h.add("Image"));
    image.setPixel(127, 127, 0x7FFF);
    auto& button = static_cast<Button&>(h.add("Button"));
    auto& ball = static_cast<Ball&>(h.add("Ball"));
    for (int s = 0; s < 3; ++s) {
        h.engine->CurrentSnapshot = static_cast<int16_t>(s);
        bank.setValue(s, 10 + s);
        image.reading.range = 12 * (s + 1);
        button.latching = s == 1;
        ball.setSetting(Ball::kGravity, s);
        h.engine->StoreAllPatches();
    }

    auto info2 = readBack(h, "InfoButton", body(h, info));
    const auto& i2 = static_cast<InfoButton&>(*info2);
    EXPECT_EQ(i2.text, info.text);
    EXPECT_EQ(i2.extra, 3);
    EXPECT_EQ(i2.Name, "1InfoBtn-");
    EXPECT_EQ(i2.Top, 1200);
    EXPECT_EQ(i2.Width, 2400);
    EXPECT_EQ(i2.linkedPage(), 2);

    auto bank2 = readBack(h, "CtrlOut32", body(h, bank));
    const auto& b2 = static_cast<CtrlOut32&>(*bank2);
    EXPECT_EQ(b2.title, "Filters");
    EXPECT_EQ(b2.labels[31], "Cutoff");
    EXPECT_EQ(b2.controller(31), 74);
    EXPECT_EQ(b2.windowLeft(), -20);
    EXPECT_EQ(b2.windowTop(), 300);
    EXPECT_TRUE(b2.windowShown());

    auto image2 = readBack(h, "Image", body(h, image));
    EXPECT_EQ(static_cast<Image&>(*image2).pixel(127, 127), 0x7FFF);

    for (const char* type : {"CtrlOut32", "Image", "Button", "Ball"}) {
        Module& original = type == std::string("CtrlOut32") ? static_cast<Module&>(bank)
                           : type == std::string("Image")  ? static_cast<Module&>(image)
                           : type == std::string("Button") ? static_cast<Module&>(button)
                                                           : static_cast<Module&>(ball);
        Module& copy = h.add(type);
        const std::vector<uint8_t> bytes = body(h, original);
        ByteReader in(bytes);
        copy.readBody(in, h.engine->names);
        for (int s = 0; s < 3; ++s) {
            h.engine->CurrentSnapshot = static_cast<int16_t>(s);
            copy.PatchChange(*h.engine);
            if (type == std::string("CtrlOut32")) {
                EXPECT_EQ(static_cast<CtrlOut32&>(copy).value(s), 10 + s);
            }
            if (type == std::string("Image")) {
                EXPECT_EQ(static_cast<Image&>(copy).reading.range, 12 * (s + 1));
            }
            if (type == std::string("Button")) {
                EXPECT_EQ(static_cast<Button&>(copy).latching, s == 1);
            }
            if (type == std::string("Ball")) {
                EXPECT_EQ(static_cast<Ball&>(copy).setting(Ball::kGravity), s);
            }
        }
    }
}

TEST(InfoBoxes, ALinkShowsItsPageAndABoxWithoutOneDoesNothing) {
    ModuleHarness h;
    auto& note = static_cast<Info&>(h.add("Info"));
    EXPECT_EQ(note.Name, "1InfoBox-");
    auto& link = static_cast<InfoButPic&>(h.add("InfoButPic"));
    EXPECT_FALSE(note.follow(*h.engine));
    link.extra = 16;
    EXPECT_TRUE(link.follow(*h.engine));
    EXPECT_EQ(h.engine->CurrentPage(), 15);
    link.extra = 17;  // no such page
    EXPECT_FALSE(link.follow(*h.engine));
    EXPECT_EQ(h.engine->CurrentPage(), 15);
}
