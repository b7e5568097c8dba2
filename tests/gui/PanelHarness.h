#pragma once
// Reaching into the module panels of a running program: panels by name, their parts by
// role, the connection list and the status dialog, and ticks of the patch in virtual time.

#include <QLabel>
#include <QListWidget>
#include <QMouseEvent>
#include <QKeyEvent>
#include <QPushButton>
#include <gtest/gtest.h>

#include "engine/Placement.h"
#include "gui/ConnectPopup.h"
#include "gui/ModuleStatusDialog.h"
#include "gui/PanelBoard.h"
#include "gui/Workspace.h"
#include "gui/panels/PanelFrame.h"
#include "gui/panels/StatusIcon.h"
#include "tests/gui/GuiHarness.h"

namespace quillmer::testing {

// Runs `count` ticks of the patch, then lets the panels read what changed.
inline void runTicks(GuiHarness& h, int count = 1) {
    int32_t period = 0;
    {
        auto held = h.engine().lock();
        period = h.engine().TickPeriod();
    }
    h.timers.advanceByMs(static_cast<int64_t>(period) * count);
    h.window().refresh();
}

inline gui::PanelFrame& panel(GuiHarness& h, const char* name) {
    h.window().refresh();
    gui::PanelFrame* frame = h.window().panels().frame(QLatin1String(name));
    if (!frame) throw std::runtime_error(std::string("no panel ") + name);
    return *frame;
}

inline Module& module(GuiHarness& h, const char* name) {
    auto held = h.engine().lock();
    Module* m = h.engine().findModule(name);
    if (!m) throw std::runtime_error(std::string("no module ") + name);
    return *m;
}

template <class W = QWidget>
W* part(gui::PanelFrame& frame, const char* role) {
    return frame.findChild<W*>(QLatin1String(role));
}

inline QString shownText(gui::PanelFrame& frame, const char* role) { return part<QLabel>(frame, role)->text(); }

// A press and a release of `button` at `at`, as the mouse makes them.
inline void click(QWidget* widget, QPoint at, Qt::MouseButton button = Qt::LeftButton) {
    const QPointF global(widget->mapToGlobal(at));
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(at), global, button, button, Qt::NoModifier);
    QApplication::sendEvent(widget, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(at), global, button, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &release);
}

// Typing, key by key.
inline void type(QWidget* widget, const QString& keys) {
    for (QChar c : keys) {
        QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
        QApplication::sendEvent(widget, &press);
    }
}

// Opens the connection list of button `row` and clicks the output called `source`.
inline void connectThroughList(GuiHarness& h, const char* name, int row, const char* source) {
    panel(h, name).inputButton(row)->click();
    gui::ConnectPopup& popup = h.window().panels().connectPopup();
    ASSERT_TRUE(popup.isVisible());
    const QList<QListWidgetItem*> found = popup.list()->findItems(QLatin1String(source), Qt::MatchExactly);
    ASSERT_EQ(found.size(), 1) << source;
    click(popup.list()->viewport(), popup.list()->visualItemRect(found[0]).center());
    EXPECT_FALSE(popup.isVisible());
}

inline gui::ModuleStatusDialog& openStatus(GuiHarness& h, const char* name) {
    panel(h, name).statusIcon()->clicked();
    gui::ModuleStatusDialog& dialog = h.window().panels().statusDialog();
    EXPECT_TRUE(dialog.isVisible());
    return dialog;
}

// A press on `handle`, a move by `by` pixels, a release: a drag as the mouse makes it.
inline void drag(QWidget* handle, QPoint by) {
    // The screen points are fixed before the panel starts to move under the mouse.
    const QPoint from(4, 4);
    const QPoint origin = handle->mapToGlobal(from);
    const auto send = [handle, from, origin](QEvent::Type type, QPoint offset, Qt::MouseButtons buttons) {
        QMouseEvent e(type, QPointF(from + offset), QPointF(origin + offset), Qt::LeftButton, buttons, Qt::NoModifier);
        QApplication::sendEvent(handle, &e);
    };
    send(QEvent::MouseButtonPress, QPoint(), Qt::LeftButton);
    send(QEvent::MouseMove, by / 2, Qt::LeftButton);
    send(QEvent::MouseMove, by, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, by, Qt::NoButton);
}

}  // namespace quillmer::testing
