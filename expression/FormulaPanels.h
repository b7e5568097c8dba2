#pragma once
// What formulas reach on the panels of formula modules: a slider bank's values and ranges,
// and a mouse pad's readings. The modules implement these; the engine's formula stores find
// the module by its instance number.

namespace quillmer {

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
