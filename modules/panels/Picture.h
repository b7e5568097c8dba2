#pragma once
// Image: a 128 x 128 picture read as values by position; ImgOut: the same reading of another
// Image's picture. The picture is drawn by formulas (the pixel functions), in the pixel
// window, or loaded from a picture file. Pixels are 15-bit colours (5 bits each of red,
// green and blue, red highest), as the record keeps them. Everything here needs the engine lock.

#include <array>
#include <cstdint>
#include <vector>

#include "engine/Module.h"
#include "expression/FormulaPanels.h"
#include "modules/panels/PerSnapshot.h"

namespace quillmer {

constexpr int kImageSize = 128;

// What a pixel gives as a value 0..127.
enum class PixelChannel : int { Brightness, Red, Green, Blue, kCount };

// A pixel's 24-bit colour (red + green * 256 + blue * 65536) and back.
uint16_t packColour(uint32_t rgb);
uint32_t unpackColour(uint16_t pixel);
int pixelValue(uint16_t pixel, PixelChannel channel);

// How a picture is read: per snapshot the channel, whether it is turned upside down
// (127 - value), and the top of the range the value is scaled to (0 means 127).
struct PictureReading {
    int channel = 0;
    bool invert = false;
    int range = 127;
    int value(uint16_t pixel) const;
};

// The inputs Image and ImgOut share, and their reading of a place.
struct PictureInputs {
    static constexpr InputSpec kInputs[] = {
        {" X", "Column 0-127, left to right", sysbus::Off},
        {" Y", "Row 0-127, top to bottom", sysbus::Off},
        {" Hold", "NZ holds the output", sysbus::Off},
        {" Scroll", "Added to X, wrapping round", sysbus::Off},
    };
};

class Image final : public Module, public FormulaPicture {
public:
    static constexpr size_t kPixelBytes = 2 * kImageSize * kImageSize;

    Image();

    uint16_t pixel(int x, int y) const { return pixels_[static_cast<size_t>((y & 127) * kImageSize + (x & 127))]; }
    // Outside the picture nothing happens.
    void setPixel(int x, int y, uint16_t pixel);
    void fill(uint16_t pixel);
    // A picture of any size, row after row of 24-bit colours, scaled to 128 x 128 by
    // taking the nearest pixel. False, and nothing changed, when the sizes don't fit.
    bool loadPicture(const std::vector<uint32_t>& rgb, int width, int height);
    // The pixel functions' door.
    uint32_t colourAt(int x, int y) const override { return unpackColour(pixel(x, y)); }
    void paint(int x, int y, uint32_t colour) override { setPixel(x, y, packColour(colour)); }
    void paintAll(uint32_t colour) override { fill(packColour(colour)); }
    // Counts every change, for the views to notice.
    uint32_t changes() const { return changes_; }

    PictureReading reading;
    int valueAt(int x, int y) const { return reading.value(pixel(x, y)); }

    void writeBody(ByteWriter& out, const OutputNames& names) const override;
    void readBody(ByteReader& in, OutputNames& names) override;
    void writeFields(ByteWriter& out) const override { stored_.write(out); }
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    void touched();
    int16_t kind_ = 0;  // the word before the pixels: 1 once a picture was drawn or loaded
    std::vector<uint16_t> pixels_ = std::vector<uint16_t>(kImageSize * kImageSize, 0);
    uint32_t changes_ = 0;
    PerSnapshot<3> stored_;
};

class ImgOut final : public Module {
public:
    ImgOut();
    int image() const { return image_; }  // the Image's index (its number less 1)
    void setImage(int index);
    PictureReading reading;

    void writeFields(ByteWriter& out) const override { stored_.write(out); }
    void readFields(ByteReader& in) override;
    void update(Engine& engine) override;

protected:
    void recallSettings(int snapshot) override;
    void storeSettings(int snapshot) override;

private:
    int image_ = 0;
    PerSnapshot<4> stored_;
};

// The Image with that index, or null.
Image* findImage(Engine& engine, int index);

}  // namespace quillmer
