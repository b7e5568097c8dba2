#pragma once
// A display refresh never writes over a field the user is typing into.

#include <QApplication>
#include <QLineEdit>
#include <QWidget>

namespace quillmer::gui {

// True while `field` (a line, or a spin or combo box with its line) has the focus and holds
// typed text not yet taken.
inline bool beingEdited(const QWidget* field) {
    const QWidget* focus = QApplication::focusWidget();
    if (!focus || !(focus == field || field->isAncestorOf(focus))) return false;
    const auto* line = qobject_cast<const QLineEdit*>(field);
    if (!line) line = field->findChild<QLineEdit*>();
    return !line || line->isModified();
}

}  // namespace quillmer::gui
