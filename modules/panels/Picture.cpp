#include "modules/panels/Picture.h"

#include <algorithm>

#include "engine/Engine.h"

namespace quillmer {

namespace {
const ModuleTypeId kImageId = *typeIdByName("Image");
constexpr int kChannels = static_cast<int>(PixelChannel::kCount);

int expand5(int c) { return (c << 3) | (c >> 2); }

// Per snapshot, as stored: channel, invert, range.
template <size_t N>
void recallReading(const PerSnapshot<N>& s, size_t first, int snapshot, PictureReading& r) {
    r.channel = std::min<int>(s.get(first, snapshot), kChannels - 1);
    r.invert = s.get(first + 1, snapshot) != 0;
    r.range = s.get(first + 2, snapshot) & 127;
}
template <size_t N>
void storeReading(PerSnapshot<N>& s, size_t first, int snapshot, const PictureReading& r) {
    if (std::min<int>(s.get(first, snapshot), kChannels - 1) != r.channel) s.put(first, snapshot, r.channel);
    if ((s.get(first + 1, snapshot) != 0) != r.invert) s.put(first + 1, snapshot, r.invert ? 1 : 0);
    if ((s.get(first + 2, snapshot) & 127) != r.range) s.put(first + 2, snapshot, r.range);
}

}  // namespace

uint16_t packColour(uint32_t rgb) {
    const uint32_t r = (rgb & 0xFF) >> 3, g = ((rgb >> 8) & 0xFF) >> 3, b = ((rgb >> 16) & 0xFF) >> 3;
    return static_cast<uint16_t>((r << 10) | (g << 5) | b);
}

uint32_t unpackColour(uint16_t pixel) {
    const int r = expand5((pixel >> 10) & 31), g = expand5((pixel >> 5) & 31), b = expand5(pixel & 31);
    return static_cast<uint32_t>(r | (g << 8) | (b << 16));
}

int pixelValue(uint16_t pixel, PixelChannel channel) {
    const int r = expand5((pixel >> 10) & 31), g = expand5((pixel >> 5) & 31), b = expand5(pixel & 31);
    switch (channel) {
        case PixelChannel::Red: return r >> 1;
        case PixelChannel::Green: return g >> 1;
        case PixelChannel::Blue: return b >> 1;
        default: return (r * 299 + g * 587 + b * 114 + 500) / 1000 >> 1;
    }
}

int PictureReading::value(uint16_t pixel) const {
    int v = pixelValue(pixel, static_cast<PixelChannel>(channel));
    if (invert) v = 127 - v;
    const int top = range == 0 ? 127 : range;
    return (v * top + 63) / 127;
}

// --- Image ---

Image::Image() : Module(kImageId, PictureInputs::kInputs) {}

void Image::touched() {
    kind_ = 1;
    ++changes_;
    viewChanged = true;
}

void Image::setPixel(int x, int y, uint16_t pixel) {
    if (x < 0 || y < 0 || x >= kImageSize || y >= kImageSize) return;
    pixels_[static_cast<size_t>(y * kImageSize + x)] = pixel;
    touched();
}

void Image::fill(uint16_t pixel) {
    std::fill(pixels_.begin(), pixels_.end(), pixel);
    touched();
}

bool Image::loadPicture(const std::vector<uint32_t>& rgb, int width, int height) {
    if (width <= 0 || height <= 0 || rgb.size() != static_cast<size_t>(width) * static_cast<size_t>(height)) return false;
    for (int y = 0; y < kImageSize; ++y)
        for (int x = 0; x < kImageSize; ++x) {
            const size_t sx = static_cast<size_t>(x * width / kImageSize), sy = static_cast<size_t>(y * height / kImageSize);
            pixels_[static_cast<size_t>(y * kImageSize + x)] = packColour(rgb[sy * static_cast<size_t>(width) + sx]);
        }
    touched();
    return true;
}

void Image::update(Engine&) {
    if (in(2) != 0) return;
    setOutput(valueAt(in(0) + in(3), in(1)));
}

void Image::writeBody(ByteWriter& out, const OutputNames& names) const {
    out.i16(kind_);
    for (uint16_t p : pixels_) out.u16(p);
    Module::writeBody(out, names);
}

void Image::readBody(ByteReader& in, OutputNames& names) {
    kind_ = in.i16();
    for (uint16_t& p : pixels_) p = in.u16();
    Module::readBody(in, names);
}

void Image::recallSettings(int snapshot) { recallReading(stored_, 0, snapshot, reading); }

void Image::storeSettings(int snapshot) { storeReading(stored_, 0, snapshot, reading); }

void Image::readFields(ByteReader& in) {
    stored_.read(in);
    recallSettings(0);
}

// --- ImgOut ---

ImgOut::ImgOut() : Module(*typeIdByName("ImgOut"), PictureInputs::kInputs) {}

void ImgOut::setImage(int index) {
    image_ = std::clamp(index, 0, 127);
    viewChanged = true;
}

void ImgOut::update(Engine& engine) {
    if (in(2) != 0) return;
    const Image* image = findImage(engine, image_);
    setOutput(image ? reading.value(image->pixel(in(0) + in(3), in(1))) : 0);
}

void ImgOut::recallSettings(int snapshot) {
    image_ = stored_.get(0, snapshot) & 127;
    recallReading(stored_, 1, snapshot, reading);
}

void ImgOut::storeSettings(int snapshot) {
    if ((stored_.get(0, snapshot) & 127) != image_) stored_.put(0, snapshot, image_);
    storeReading(stored_, 1, snapshot, reading);
}

void ImgOut::readFields(ByteReader& in) {
    stored_.read(in);
    recallSettings(0);
}

Image* findImage(Engine& engine, int index) {
    Module* m = engine.typeSlot(kImageId).at(static_cast<int16_t>(index));
    if (m == nullptr || m->Active == 0 || m->isPlaceholder()) return nullptr;
    return static_cast<Image*>(m);
}

}  // namespace quillmer
