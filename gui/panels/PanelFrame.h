#pragma once
// The frame every module panel shares: the status icon, the name (drag it to move the
// panel), the input buttons with their labels, and the controls of the type's description,
// laid out on the twip grid. It only draws what it is given and reports gestures; the
// panel board turns them into module and engine operations.

#include <QFrame>
#include <functional>
#include <string>
#include <vector>

#include "engine/Durations.h"
#include "gui/panels/PanelSpec.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace quillmer::gui {

class StatusIcon;

// An input button as the frame makes it, by button row.
struct InputFace {
    QString label;  // above the button
    QString tip;
};

// Everything a panel shows, copied from its module under the engine lock.
struct PanelValues {
    std::vector<std::string> inputCaptions;  // by button row: the connected output's name
    DurationLabel durationLabel = DurationLabel::Dur;
    std::vector<Shown> controls;             // by the description's control order
    std::vector<std::string> inputTips;      // by button row, where the module gives them
    std::string nameTip;
    int statusPicture = 2;
    bool operator==(const PanelValues&) const = default;
};

class PanelFrame : public QFrame {
    Q_OBJECT
public:
    PanelFrame(const PanelSpec& spec, const QString& name, const QString& typeCaption,
               const std::vector<InputFace>& inputs, QWidget* canvas);

    const PanelSpec& spec() const { return spec_; }
    // Draws what differs from what is shown.
    void show(const PanelValues& values);
    // The panel's size in twips, for the module's Width and Height.
    QSize sizeTwips() const;
    // Asked at every press on the name or the frame: may the panel be dragged now?
    std::function<bool()> mayDrag;
    bool dragging() const { return dragging_; }

    // For tests and the pop-ups: the parts by role.
    QLabel* nameLabel() const { return name_; }
    StatusIcon* statusIcon() const { return status_; }
    QPushButton* inputButton(int row) const { return inputButtons_.at(static_cast<size_t>(row)); }
    int inputRows() const { return static_cast<int>(inputButtons_.size()); }
    QWidget* control(int index) const { return controls_.at(static_cast<size_t>(index)).widget; }
    QWidget* stageBox(int stage) const;

signals:
    void inputClicked(int row);
    void statusClicked();
    // A drag ended with the panel's top-left corner here, in pixels of its page.
    void dragFinished(QPoint topLeft);
    void gesture(int control, const Gesture& g);
    // A button whose gesture needs a question first.
    void dialogWanted(int control);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct Control {
        QWidget* widget = nullptr;
        std::vector<QWidget*> stageBoxes;  // a stage row's parts
        std::vector<QWidget*> stageLamps;
    };
    void buildInputs(const std::vector<InputFace>& inputs, int& y);
    int besideInputsLeft() const;
    void buildControls(int& y, int& width);
    QWidget* makeControl(int index, const ControlSpec& c);
    int buildStageRow(int index, int y, int stages);
    void showControl(int index, const Shown& was, const Shown& now, bool first);
    void showStages(Control& control, const Shown& now, bool typingOver = false);
    bool stageBoxEvent(int control, int stage, QLineEdit* box, QEvent* event);
    void setStageValue(int control, int stage, QLineEdit* box, int value);
    bool pressToDrag(QMouseEvent* event);
    bool moveWhileDragging(QMouseEvent* event);
    bool releaseDrag(QMouseEvent* event);
    // Twips and font sizes at 100 % as pixels at the frame's zoom.
    int px(int twips) const;
    int fontPx(int pixels) const;

    const PanelSpec& spec_;
    int zoom_;    // percent, from the canvas at the making
    QSize twips_;
    QLabel* name_ = nullptr;
    StatusIcon* status_ = nullptr;
    std::vector<std::pair<QWidget*, int>> titleItems_;  // right of the name, with widths in twips
    std::vector<QLabel*> inputLabels_;
    std::vector<QPushButton*> inputButtons_;
    std::vector<Control> controls_;
    PanelValues shown_;
    bool anythingShown_ = false;
    bool dragging_ = false;
    QPoint grabOffset_;
    struct StageDrag {
        QLineEdit* box = nullptr;
        int startY = 0;
        int startValue = 0;
        bool moved = false;
    };
    StageDrag stageDrag_;
    int wheelRest_ = 0;
};

}  // namespace quillmer::gui
