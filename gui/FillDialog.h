#pragma once
// The Fill dialog: the shared row editor of every table. It draws the program's Fill state
// and forwards gestures to it; after every change `send` takes the row to the table that
// opened it. Closing without OK takes every change back. Also the small dialog of the
// harmonic sort keys.

#include <QDialog>
#include <QPushButton>
#include <functional>

#include "tables/FillState.h"

class QCheckBox;
class QDial;
class QLabel;
class QLineEdit;
class QRadioButton;
class QSlider;
class QSpinBox;

namespace quillmer::gui {

class UserDialogs;

// A push button that tells the keys held when it was clicked, and double clicks.
class KeyedButton : public QPushButton {
    Q_OBJECT
public:
    using QPushButton::QPushButton;
signals:
    void clickedWith(Qt::KeyboardModifiers keys);
    void doubleClicked();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
};

// The 128 bars of Hold, drawn and painted with the mouse.
class FillBars : public QWidget {
    Q_OBJECT
public:
    FillBars(FillState& state, QWidget* parent);
    double barWidth() const;
signals:
    void drawn(int stage);  // a press or a drag changed a stage

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    FillState& state_;
    int pressStage_ = 0;
};

// Six octaves of keys; a click writes a note.
class FillKeyboard : public QWidget {
    Q_OBJECT
public:
    explicit FillKeyboard(QWidget* parent);
signals:
    void keyClicked(int key);
    void keyHovered(int key);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
};

class FillDialog : public QDialog {
    Q_OBJECT
public:
    // `send` runs after every change of Hold (the caller's UpdateSeq, under its lock).
    FillDialog(FillState& state, std::function<void()> send, UserDialogs& dialogs, const QString& title, QWidget* parent);
    ~FillDialog() override;

    QPushButton* command(int index) const;
    QPushButton* bufferButton(int i) const;
    FillBars* bars() const { return bars_; }
    QDial* knob(int i) const;  // Start, End, Low, High, Scale
    QLabel* bytesRead() const { return bytesRead_; }
    QWidget* part(const char* role) const;
    // Runs a command as its button does.
    void run(int index);

    void done(int result) override;

private:
    void build();
    void changed(bool send);
    void showStage(int stage);
    void load(Qt::KeyboardModifiers keys);
    void save(Qt::KeyboardModifiers keys);
    void sortOrAsk(Qt::KeyboardModifiers keys);

    FillState& state_;
    std::function<void()> send_;
    UserDialogs& dialogs_;
    FillBars* bars_ = nullptr;
    FillKeyboard* keyboard_ = nullptr;
    std::vector<QPushButton*> commands_;
    std::vector<KeyedButton*> buffers_;
    std::vector<QDial*> knobs_;
    std::vector<QLabel*> knobValues_;
    QSpinBox* stageNumber_ = nullptr;
    QSpinBox* stageValue_ = nullptr;
    QSpinBox* octave_ = nullptr;
    QLabel* note_ = nullptr;
    QLabel* bytesRead_ = nullptr;
    QCheckBox* append_ = nullptr;
    QSlider* shift_ = nullptr;
    bool closed_ = false;
    bool updating_ = false;
};

// "Harmonic Sort Keys": twelve keys, the chosen one, their descriptions.
class HarmonicKeysDialog : public QDialog {
    Q_OBJECT
public:
    HarmonicKeysDialog(HarmonicKeys& keys, RandomSource& random, QWidget* parent);
    QLineEdit* keyText(int row) const { return keyTexts_.at(static_cast<size_t>(row)); }
    QLineEdit* docText(int row) const { return docTexts_.at(static_cast<size_t>(row)); }
    QRadioButton* choice(int row) const { return choices_.at(static_cast<size_t>(row)); }
    // "Save and Exit".
    void saveAndExit();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showCurrent();
    HarmonicKeys& keys_;
    RandomSource& random_;
    std::vector<QRadioButton*> choices_;
    std::vector<QLineEdit*> keyTexts_;
    std::vector<QLineEdit*> docTexts_;
    QLabel* keyCurrent_ = nullptr;
    QLabel* docCurrent_ = nullptr;
};

// Where the harmonic keys are read from and saved to.
void loadHarmonicKeys(HarmonicKeys& keys);
bool saveHarmonicKeys(const HarmonicKeys& keys, std::string& reason);

}  // namespace quillmer::gui
