#pragma once
// What formulas reach of module panels: the picture of an image module and the readings of a
// mouse pad. The module types implement these faces; the engine's stores find a module by the
// number in its name ("3Image-" is picture 3).

#include <cstdint>

namespace quillmer {

class FormulaPicture {
public:
    virtual ~FormulaPicture() = default;
    // Colours are 24-bit numbers: red + green * 256 + blue * 65536. x, y lie in 0..127.
    virtual uint32_t colourAt(int x, int y) const = 0;
    virtual void paint(int x, int y, uint32_t colour) = 0;
    virtual void paintAll(uint32_t colour) = 0;
};

class FormulaPad {
public:
    virtual ~FormulaPad() = default;
    // 0 x, 1 y, 2 the buttons held, 3 a gate, 4 the clicks; another reading is 0.
    virtual int padReading(int reading) const = 0;
};

}  // namespace quillmer
