// Pictures read as values: the colour packing, Image and ImgOut over ticks, pictures loaded
// at other sizes, and the pixel functions of formulas reaching the modules.

#include <gtest/gtest.h>

#include "ModuleHarness.h"
#include "expression/EngineFormulaStores.h"
#include "expression/FormulaRuntime.h"
#include "modules/panels/MousePad.h"
#include "modules/panels/Picture.h"

using namespace quillmer;
using namespace quillmer::testing;

namespace {
constexpr uint32_t kWhite = 0xFFFFFF;
constexpr uint32_t kRed = 0x0000FF;
}  // namespace

TEST(PictureColours, FifteenBitPixelsGiveValuesByChannel) {
    // Every 15-bit colour survives the way out to 24 bits and back.
    for (int p = 0; p < 0x8000; p += 7) EXPECT_EQ(packColour(unpackColour(static_cast<uint16_t>(p))), p);
    EXPECT_EQ(unpackColour(packColour(kWhite)), kWhite);
    EXPECT_EQ(pixelValue(packColour(kWhite), PixelChannel::Brightness), 127);
    EXPECT_EQ(pixelValue(0, PixelChannel::Brightness), 0);
    EXPECT_EQ(pixelValue(packColour(kRed), PixelChannel::Red), 127);
    EXPECT_EQ(pixelValue(packColour(kRed), PixelChannel::Blue), 0);
    PictureReading r;
    r.invert = true;
    EXPECT_EQ(r.value(packColour(kWhite)), 0);
    r.invert = false;
    r.range = 12;  // an octave of semitones
    EXPECT_EQ(r.value(packColour(kWhite)), 12);
    r.range = 0;  // 0 means the whole range
    EXPECT_EQ(r.value(packColour(kWhite)), 127);
}

TEST(Images, ReadByPlaceWithScrollWrapAndHold) {
    ModuleHarness h;
    auto& image = static_cast<Image&>(h.add("Image"));
    image.setPixel(5, 9, packColour(kWhite));
    image.setPixel(1, 9, packColour(kRed));
    image.setPixel(128, 0, packColour(kWhite));  // outside: nothing
    image.setPixel(-1, 0, packColour(kWhite));
    EXPECT_EQ(image.pixel(0, 0), 0);
    EXPECT_EQ(run(h, image, {5, 9}), 127);
    EXPECT_EQ(run(h, image, {4, 9}), 0);
    // Scroll adds to X and wraps: 100 + 33 is column 5.
    EXPECT_EQ(run(h, image, {100, 9, 0, 33}), 127);
    // Hold keeps the output whatever the place.
    EXPECT_EQ(run(h, image, {4, 9, 127, 0}), 127);
    EXPECT_EQ(run(h, image, {4, 9, 0, 0}), 0);

    auto& out = static_cast<ImgOut&>(h.add("ImgOut"));
    out.reading.channel = static_cast<int>(PixelChannel::Red);
    EXPECT_EQ(run(h, out, {1, 9}), 127);
    EXPECT_EQ(run(h, out, {5, 9}), 127);
    out.reading.channel = static_cast<int>(PixelChannel::Green);
    EXPECT_EQ(run(h, out, {1, 9}), 0);
    // Another image, or none: 0.
    out.setImage(3);
    EXPECT_EQ(run(h, out, {5, 9}), 0);
    out.setImage(0);
    out.reading.channel = 0;
    EXPECT_EQ(run(h, out, {5, 9}), 127);
    h.engine->Delete(image);
    EXPECT_EQ(run(h, out, {5, 9, 0, 1}), 0);
}

TEST(Images, APictureOfAnySizeIsScaledAndABadOneChangesNothing) {
    ModuleHarness h;
    auto& image = static_cast<Image&>(h.add("Image"));
    // Two by two: white, red / black, white.
    ASSERT_TRUE(image.loadPicture({kWhite, kRed, 0, kWhite}, 2, 2));
    EXPECT_EQ(unpackColour(image.pixel(0, 0)), kWhite);
    EXPECT_EQ(unpackColour(image.pixel(63, 63)), kWhite);
    EXPECT_EQ(unpackColour(image.pixel(64, 0)), kRed);
    EXPECT_EQ(image.pixel(0, 127), 0);
    EXPECT_EQ(unpackColour(image.pixel(127, 127)), kWhite);
    const uint32_t changes = image.changes();
    EXPECT_FALSE(image.loadPicture({kWhite, kRed, 0}, 2, 2));
    EXPECT_FALSE(image.loadPicture({}, 0, 0));
    EXPECT_EQ(image.changes(), changes);
    EXPECT_EQ(unpackColour(image.pixel(64, 0)), kRed);
}

TEST(FormulaDoors, PixelFunctionsDrawIntoTheImageOfThatNumber) {
    ModuleHarness h;
    h.add("Image");
    auto& second = static_cast<Image&>(h.add("Image"));  // picture 2
    auto& pad = static_cast<Mousexy&>(h.add("Mousexy"));
    EngineFormulaStores stores(*h.engine);
    FormulaRuntime runtime(&stores);
    runtime.start();
    auto run = [&](const std::string& text) {
        EXPECT_EQ(runtime.setFormula(0, text), expr::kOk) << text;
        return runtime.evaluate(100, 0);
    };

    EXPECT_EQ(run("WPix(2, 5, 6, RGB(255, 255, 255))"), 16777215.0);
    EXPECT_EQ(unpackColour(second.pixel(5, 6)), kWhite);
    EXPECT_EQ(second.valueAt(5, 6), 127);
    EXPECT_EQ(run("RPix(2, 5, 6)"), 16777215.0);
    // Colours come back as the picture keeps them: 5 bits a channel.
    run("WPix(2, 0, 0, RGB(100, 0, 0))");
    EXPECT_EQ(run("RPix(2, 0, 0)"), static_cast<double>(unpackColour(packColour(100))));
    run("PEN(2, RGB(0, 0, 255))");
    EXPECT_EQ(run("ClsPix(2)"), 1.0);
    EXPECT_EQ(unpackColour(second.pixel(127, 127)), 0xFF0000u);
    run("WPix(2, 7, 7, -1)");  // the pen
    EXPECT_EQ(unpackColour(second.pixel(7, 7)), 0xFF0000u);
    // Outside the picture nothing is drawn.
    EXPECT_EQ(run("WPix(2, 128, 0, 255)"), 0.0);

    // A number with no Image keeps a picture of the runtime's own.
    run("WPix(9, 1, 1, 77)");
    EXPECT_EQ(run("RPix(9, 1, 1)"), 77.0);
    ASSERT_NE(runtime.picture(9), nullptr);

    // UFOMouse reads the pads of formula modules, never a Mouse Pad module.
    pad.press(0, 0, 128, 1);
    EXPECT_EQ(run("UFOMouse(0, 0)"), 0.0);
    EXPECT_EQ(run("UFOMouse(1, 1)"), 0.0);
}
