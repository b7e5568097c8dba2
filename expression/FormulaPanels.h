#pragma once
// What formulas reach of module panels: the picture of an image module, a slider bank's
// values and ranges, and the mouse pad of a formula module. The module types implement these
// faces; the engine's stores find a picture by the number in its name ("3Image-" is picture
// 3), slider banks and formula pads by their instance numbers.

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

class FormulaSliderBank {
public:
    virtual ~FormulaSliderBank() = default;
    // Raw position x (0..1) times range, plus offset.
    virtual double sliderValue(int num) const = 0;
    // Moves the slider so that it shows `value` as near as its range allows.
    virtual void putSliderValue(int num, double value) = 0;
    virtual void setSliderRange(int num, double range, double offset) = 0;
};

class FormulaMousePad {
public:
    virtual ~FormulaMousePad() = default;
    // 0 button, 1 shift state, 2 x steps, 3 y steps, 4 moving; other readings 0.
    virtual int mouseReading(int reading) const = 0;
};

}  // namespace quillmer
