#include "gui/panels/midi/KeyboardPicture.h"

#include <QMouseEvent>
#include <QPainter>
#include <array>

#include "modules/midi/MidiInputs.h"

namespace quillmer::gui {

namespace {
constexpr std::array<int, 7> kWhiteSemitone{0, 2, 4, 5, 7, 9, 11};
constexpr std::array<bool, 7> kBlackAfter{true, true, false, true, true, true, false};
}  // namespace

KeyboardPicture::KeyboardPicture(QWidget* parent) : QWidget(parent) {
    setCursor(Qt::PointingHandCursor);
    setToolTip(QStringLiteral("Click or drag to play; lower on a key plays louder"));
}

void KeyboardPicture::setHeld(int key) {
    if (key == held_) return;
    held_ = key;
    update();
}

void KeyboardPicture::paintEvent(QPaintEvent*) {
    QPainter p(this);
    const double white = width() / static_cast<double>(Keybd::kWhiteKeys);
    const QColor heldColour(0x4a, 0x90, 0xd9);
    for (int k = 0; k < Keybd::kWhiteKeys; ++k) {
        const int key = k / 7 * 12 + kWhiteSemitone[static_cast<size_t>(k % 7)];
        const QRectF r(k * white, 0, white, height() - 1);
        p.fillRect(r, key == held_ ? heldColour : QColor(Qt::white));
        p.setPen(Qt::black);
        p.drawRect(r);
    }
    for (int k = 0; k < Keybd::kWhiteKeys - 1; ++k) {
        if (!kBlackAfter[static_cast<size_t>(k % 7)]) continue;
        const int key = k / 7 * 12 + kWhiteSemitone[static_cast<size_t>(k % 7)] + 1;
        const QRectF r((k + 0.7) * white, 0, 0.6 * white, height() * 0.6);
        p.fillRect(r, key == held_ ? heldColour : QColor(Qt::black));
    }
}

void KeyboardPicture::tell(Press press, QPointF at) {
    if (onMouse) onMouse(press, at.x() / std::max(1, width()), at.y() / std::max(1, height()));
}

void KeyboardPicture::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) tell(Press::Down, event->position());
}

void KeyboardPicture::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton) tell(Press::Drag, event->position());
}

void KeyboardPicture::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) tell(Press::Up, event->position());
}

}  // namespace quillmer::gui
