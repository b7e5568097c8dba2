#pragma once
// fVal32, "UF Slider Control Settings": each slider's Range, Ofst and Sens, and the bank's
// text. OK applies them to the module under the engine lock; Clear puts every slider back
// at range 127, offset 0, sensitivity 1.

#include <QDialog>
#include <functional>
#include <vector>

#include "modules/formulas/SliderBank.h"

class QPlainTextEdit;
class QTableWidget;

namespace quillmer {
class Engine;
}

namespace quillmer::gui {

class SliderBankDialog : public QDialog {
    Q_OBJECT
public:
    // `find` gives the module while it exists (engine lock held by the caller).
    SliderBankDialog(Engine& engine, std::function<UFSldr*()> find, QWidget* parent = nullptr);
    void clear();
    // OK: false (and nothing applied) when the module has gone.
    bool applyToModule();
    std::vector<SliderSetup> setups() const;
    QTableWidget* table() const { return table_; }

private:
    Engine& engine_;
    std::function<UFSldr*()> find_;
    QTableWidget* table_ = nullptr;
    QPlainTextEdit* doc_ = nullptr;
};

// Opens the dialog, modal, over `parent`.
void openSliderBankDialog(Engine& engine, std::function<UFSldr*()> find, QWidget* parent);

}  // namespace quillmer::gui
