// The panels of the controls, displays, pads, note boxes and pictures. The pictures are
// drawn here; every gesture goes to the module.

#include <QFont>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>

#include "engine/Engine.h"
#include "gui/panels/PanelSpec.h"
#include "modules/panels/Ball.h"
#include "modules/panels/CtrlOut32.h"
#include "modules/panels/InfoBoxes.h"
#include "modules/panels/Meter.h"
#include "modules/panels/MousePad.h"
#include "modules/panels/Picture.h"
#include "modules/panels/ValueControls.h"

namespace quillmer::gui {

namespace {

const QColor kInk(120, 220, 140);
const QColor kPeak(240, 200, 60);
const QColor kDim(70, 70, 80);

bool pressed(const Gesture& g) { return g.kind == Gesture::Kind::Press || g.kind == Gesture::Kind::Move; }

ControlSpec drawn(const char* objectName, QString tip, int widthTwips, int heightTwips, Reader read, Painter paint,
                  Editor edit = nullptr) {
    ControlSpec c;
    c.kind = ControlKind::Drawn;
    c.objectName = QLatin1String(objectName);
    c.tip = std::move(tip);
    c.widthTwips = widthTwips;
    c.heightTwips = heightTwips;
    c.read = std::move(read);
    c.paint = std::move(paint);
    c.edit = std::move(edit);
    return c;
}

ControlSpec upDown(const char* objectName, QString tip, int minimum, int maximum, Reader read, Editor edit) {
    ControlSpec c;
    c.kind = ControlKind::UpDown;
    c.objectName = QLatin1String(objectName);
    c.tip = std::move(tip);
    c.minimum = minimum;
    c.maximum = maximum;
    c.widthTwips = 720;
    c.read = std::move(read);
    c.edit = std::move(edit);
    return c;
}

ControlSpec choice(const char* objectName, QString tip, std::vector<QString> rows, Reader read, Editor edit,
                   int widthTwips = 1200) {
    ControlSpec c;
    c.kind = ControlKind::Choice;
    c.objectName = QLatin1String(objectName);
    c.tip = std::move(tip);
    c.choices = std::move(rows);
    c.widthTwips = widthTwips;
    c.read = std::move(read);
    c.edit = std::move(edit);
    return c;
}

ControlSpec button(const char* objectName, QString caption, QString tip, Dialog dialog, Editor edit = nullptr) {
    ControlSpec c;
    c.kind = ControlKind::Button;
    c.objectName = QLatin1String(objectName);
    c.caption = std::move(caption);
    c.tip = std::move(tip);
    c.widthTwips = 900;
    c.dialog = dialog;
    c.edit = std::move(edit);
    return c;
}

Shown selected(int row) {
    Shown s;
    s.selected = row;
    return s;
}

void changed(Module& m, Engine& e) {
    m.viewChanged = true;
    e.MarkPatchChanged(true);
}

// A number in large digits, centred.
void bigNumber(QPainter& p, const QRect& r, int n) {
    QFont f = p.font();
    f.setPixelSize(std::max(10, r.height() * 2 / 3));
    f.setBold(true);
    p.setFont(f);
    p.setPen(kInk);
    p.drawText(r, Qt::AlignCenter, QString::number(n));
}

// A picture file scaled into the box, or its name when it can't be read.
void pictureFile(QPainter& p, const QRect& r, const std::string& path) {
    const QString file = QString::fromStdString(path);
    QPixmap picture;
    if (!QPixmapCache::find(file, &picture) && picture.load(file)) QPixmapCache::insert(file, picture);
    if (picture.isNull()) {
        p.setPen(kDim);
        p.drawText(r, Qt::AlignCenter | Qt::TextWordWrap, path.empty() ? QStringLiteral("No picture") : file.section('/', -1));
        return;
    }
    p.drawPixmap(r, picture.scaled(r.size(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

const std::vector<QString> kChannels{QStringLiteral("Bright"), QStringLiteral("Red"), QStringLiteral("Green"),
                                     QStringLiteral("Blue")};

// The reading controls that Image and ImgOut share.
template <class T>
void addReadingControls(std::vector<ControlSpec>& controls) {
    controls.push_back(choice("cbChannel", QStringLiteral("What a pixel gives"), kChannels,
                              [](const Module& m) { return selected(as<T>(m).reading.channel); },
                              [](Module& m, Engine& e, const Gesture& g) {
                                  as<T>(m).reading.channel = g.item;
                                  changed(m, e);
                              },
                              900));
    controls.push_back(switchControl("chkInvert", QStringLiteral("Inv"), QStringLiteral("Dark pixels give high values"),
                                     [](const Module& m) { return Shown::ofOn(as<T>(m).reading.invert); },
                                     [](Module& m, Engine& e, const Gesture& g) {
                                         as<T>(m).reading.invert = g.number != 0;
                                         changed(m, e);
                                     },
                                     540));
    controls.push_back(upDown("udRange", QStringLiteral("Top of the output range (0 = 127)"), 0, 127,
                              [](const Module& m) { return Shown::ofNumber(as<T>(m).reading.range); },
                              [](Module& m, Engine& e, const Gesture& g) {
                                  as<T>(m).reading.range = g.number;
                                  changed(m, e);
                              }));
}

void addValuePanels(const PanelAdder& add) {
    PanelSpec value;
    value.controls.push_back(upDown("UpDown1", QStringLiteral("Value to output"), 0, 127,
                                    [](const Module& m) { return Shown::ofNumber(as<Value>(m).value()); },
                                    [](Module& m, Engine& e, const Gesture& g) {
                                        as<Value>(m).set(g.number);
                                        e.MarkPatchChanged(true);
                                    }));
    add("Value", std::move(value));

    PanelSpec number;
    number.controls.push_back(drawn("bxNumber", QStringLiteral("Drag up or down to change"), 1500, 600,
                                    [](const Module& m) { return Shown::ofNumber(as<Number>(m).value()); },
                                    [](QPainter& p, const QRect& r, const Shown& s) { bigNumber(p, r, s.number); },
                                    [](Module& m, Engine& e, const Gesture& g) {
                                        auto& n = as<Number>(m);
                                        if (g.kind == Gesture::Kind::Press) n.press(g.y);
                                        if (g.kind == Gesture::Kind::Move) n.dragTo(g.y);
                                        e.MarkPatchChanged(true);
                                    }));
    add("Number", std::move(number));

    PanelSpec bar;
    bar.controls.push_back(outputBox());
    bar.controls.push_back(drawn("shBar", QStringLiteral("Click or drag to set the value"), 1920, 300,
                                 [](const Module& m) { return Shown::ofNumber(as<Bar>(m).value()); },
                                 [](QPainter& p, const QRect& r, const Shown& s) {
                                     p.fillRect(QRect(r.left(), r.top(), r.width() * s.number / 127, r.height()), kInk);
                                 },
                                 [](Module& m, Engine& e, const Gesture& g) {
                                     if (!pressed(g)) return;
                                     as<Bar>(m).point(g.x, g.number);
                                     e.MarkPatchChanged(true);
                                 }));
    add("Bar", std::move(bar));

    PanelSpec vbar;
    vbar.controls.push_back(outputBox());
    vbar.controls.push_back(drawn("shBar", QStringLiteral("Click or drag to set the value"), 480, 1920,
                                  [](const Module& m) { return Shown::ofNumber(as<VBar>(m).value()); },
                                  [](QPainter& p, const QRect& r, const Shown& s) {
                                      const int h = r.height() * s.number / 127;
                                      p.fillRect(QRect(r.left(), r.bottom() + 1 - h, r.width(), h), kInk);
                                  },
                                  [](Module& m, Engine& e, const Gesture& g) {
                                      if (!pressed(g)) return;
                                      as<VBar>(m).point(g.y, g.item);
                                      e.MarkPatchChanged(true);
                                  }));
    add("VBar", std::move(vbar));

    PanelSpec btn;
    btn.controls.push_back(outputBox());
    btn.controls.push_back(drawn("cmdButton", QStringLiteral("Press: the on-value goes out"), 1200, 480,
                                 [](const Module& m) { return Shown::ofOn(as<Button>(m).lit()); },
                                 [](QPainter& p, const QRect& r, const Shown& s) {
                                     p.fillRect(r.adjusted(3, 3, -3, -3), s.on ? kInk : kDim);
                                 },
                                 [](Module& m, Engine&, const Gesture& g) {
                                     if (g.kind == Gesture::Kind::Press) as<Button>(m).press();
                                     if (g.kind == Gesture::Kind::Release) as<Button>(m).release();
                                 }));
    btn.controls.push_back(switchControl("chkLatch", QStringLiteral("Latch"), QStringLiteral("In: each click turns it on or off"),
                                         [](const Module& m) { return Shown::ofOn(as<Button>(m).latching); },
                                         [](Module& m, Engine& e, const Gesture& g) {
                                             as<Button>(m).latching = g.number != 0;
                                             changed(m, e);
                                         },
                                         720));
    btn.controls.push_back(upDown("udOn", QStringLiteral("The value while on"), 1, 127,
                                  [](const Module& m) { return Shown::ofNumber(as<Button>(m).onValue()); },
                                  [](Module& m, Engine& e, const Gesture& g) {
                                      as<Button>(m).setOnValue(g.number);
                                      e.MarkPatchChanged(true);
                                  }));
    add("Button", std::move(btn));

    PanelSpec strobe;
    strobe.controls.push_back(outputLamp());
    strobe.controls.push_back(button("cmdStrobe", QStringLiteral("Strobe"), QStringLiteral("One tick of 127"), Dialog::None,
                                     [](Module& m, Engine&, const Gesture&) { as<Strobe>(m).click(); }));
    add("Strobe", std::move(strobe));
}

void addMeterPanel(const PanelAdder& add) {
    PanelSpec meter;
    meter.inputColumns = 4;
    meter.controls.push_back(drawn("shMeters", QStringLiteral("Click to drop the peaks"), 1920, 1440,
                                   [](const Module& m) {
                                       Shown s;
                                       for (int i = 0; i < Meter::kMeters; ++i) {
                                           s.row.push_back(as<Meter>(m).level(i));
                                           s.row.push_back(as<Meter>(m).peak(i));
                                       }
                                       return s;
                                   },
                                   [](QPainter& p, const QRect& r, const Shown& s) {
                                       const int w = r.width() / Meter::kMeters;
                                       for (int i = 0; i < Meter::kMeters && s.row.size() >= 8; ++i) {
                                           const QRect col(r.left() + i * w + 2, r.top(), w - 4, r.height());
                                           const int level = col.height() * s.row[static_cast<size_t>(2 * i)] / 127;
                                           const int peak = col.height() * s.row[static_cast<size_t>(2 * i + 1)] / 127;
                                           p.fillRect(QRect(col.left(), col.bottom() + 1 - level, col.width(), level), kInk);
                                           p.fillRect(QRect(col.left(), col.bottom() - peak, col.width(), 2), kPeak);
                                       }
                                   },
                                   [](Module& m, Engine&, const Gesture& g) {
                                       if (g.kind == Gesture::Kind::Press) as<Meter>(m).clearPeaks();
                                   }));
    add("Meter", std::move(meter));
}

void addSliderBankPanel(const PanelAdder& add) {
    PanelSpec bank;
    std::vector<QString> channels;
    for (int cp = 0; cp < 64; ++cp) channels.push_back(QStringLiteral("%1 %2").arg(cp % 16 + 1).arg(QChar('A' + cp / 16)));
    bank.controls.push_back(button("cmdShow", QStringLiteral("Sliders"), QStringLiteral("Show or hide the 32 sliders"),
                                   Dialog::ControlSliders));
    bank.controls.push_back(choice("cbChannel", QStringLiteral("MIDI channel and port"), channels,
                                   [](const Module& m) { return selected(as<CtrlOut32>(m).chanPort()); },
                                   [](Module& m, Engine& e, const Gesture& g) {
                                       as<CtrlOut32>(m).setChanPort(g.item);
                                       e.MarkPatchChanged(true);
                                   },
                                   900));
    ControlSpec title;
    title.kind = ControlKind::EditBox;
    title.objectName = QStringLiteral("txTitle");
    title.tip = QStringLiteral("Title of the slider window");
    title.textual = true;
    title.newRow = true;
    title.widthTwips = 1800;
    title.read = [](const Module& m) { return Shown::ofText(as<CtrlOut32>(m).title); };
    title.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<CtrlOut32>(m).title = g.text;
        changed(m, e);
    };
    bank.controls.push_back(std::move(title));
    add("CtrlOut32", std::move(bank));
}

void addBallPanels(const PanelAdder& add) {
    PanelSpec ball;
    ball.controls.push_back(outputBox());
    ball.controls.push_back(drawn("shBox", QStringLiteral("Click to start the ball there"), 1920, 1920,
                                  [](const Module& m) {
                                      const auto& b = as<Ball>(m);
                                      Shown s;
                                      s.row = {static_cast<int>(b.x()), static_cast<int>(b.y()), b.wall(Ball::Left),
                                               b.wall(Ball::Right), b.wall(Ball::Floor), b.wall(Ball::Ceiling)};
                                      return s;
                                  },
                                  [](QPainter& p, const QRect& r, const Shown& s) {
                                      if (s.row.size() < 6) return;
                                      auto px = [&](int v) { return r.left() + v * (r.width() - 1) / 127; };
                                      auto py = [&](int v) { return r.bottom() - v * (r.height() - 1) / 127; };
                                      p.setPen(kDim);
                                      p.drawRect(QRect(QPoint(px(s.row[2]), py(s.row[5])), QPoint(px(s.row[3]), py(s.row[4]))));
                                      p.setBrush(kInk);
                                      p.setPen(Qt::NoPen);
                                      p.drawEllipse(QPoint(px(s.row[0]), py(s.row[1])), 4, 4);
                                  },
                                  [](Module& m, Engine& e, const Gesture& g) {
                                      if (g.kind != Gesture::Kind::Press) return;
                                      auto& b = as<Ball>(m);
                                      b.setSetting(Ball::kStartX, HeldValue::valueAt(g.x, g.number));
                                      b.setSetting(Ball::kStartY, HeldValue::valueAt(g.item - 1 - g.y, g.item));
                                      e.MarkPatchChanged(true);
                                  }));
    const std::pair<Ball::Setting, const char*> numbers[] = {
        {Ball::kSpeedX, "X speed (64 = still)"}, {Ball::kSpeedY, "Y speed (64 = still)"}, {Ball::kGravity, "Gravity"}};
    bool first = true;
    for (const auto& [setting, tip] : numbers) {
        ControlSpec c = upDown("udSetting", QString::fromLatin1(tip), 0, 127,
                               [setting](const Module& m) { return Shown::ofNumber(as<Ball>(m).setting(setting)); },
                               [setting](Module& m, Engine& e, const Gesture& g) {
                                   as<Ball>(m).setSetting(setting, g.number);
                                   e.MarkPatchChanged(true);
                               });
        c.newRow = first;
        first = false;
        ball.controls.push_back(std::move(c));
    }
    ball.controls.push_back(choice("cbAxis", QStringLiteral("The output"), {QStringLiteral("Height"), QStringLiteral("Across")},
                                   [](const Module& m) { return selected(as<Ball>(m).setting(Ball::kAxis)); },
                                   [](Module& m, Engine& e, const Gesture& g) {
                                       as<Ball>(m).setSetting(Ball::kAxis, g.item);
                                       e.MarkPatchChanged(true);
                                   },
                                   900));
    add("Ball", std::move(ball));

    PanelSpec ctrl;
    ctrl.inputColumns = 2;
    ctrl.controls.push_back(upDown("udBall", QStringLiteral("Number of the Ball"), 1, 128,
                                   [](const Module& m) { return Shown::ofNumber(as<BallCtrl>(m).ball() + 1); },
                                   [](Module& m, Engine& e, const Gesture& g) {
                                       as<BallCtrl>(m).setBall(g.number - 1);
                                       e.MarkPatchChanged(true);
                                   }));
    std::vector<QString> targets;
    for (const char* t : BallCtrl::kTargetNames) targets.push_back(QString::fromLatin1(t));
    ctrl.controls.push_back(choice("cbTarget", QStringLiteral("The Ball's setting"), targets,
                                   [](const Module& m) { return selected(as<BallCtrl>(m).target()); },
                                   [](Module& m, Engine& e, const Gesture& g) {
                                       as<BallCtrl>(m).setTarget(g.item);
                                       e.MarkPatchChanged(true);
                                   }));
    add("BallCtrl", std::move(ctrl));
}

void addPadPanels(const PanelAdder& add) {
    PanelSpec pad;
    pad.controls.push_back(drawn("shPad", QStringLiteral("Press and drag: x and y, 0..127"), 1920, 1920,
                                 [](const Module& m) {
                                     const auto& p = as<Mousexy>(m);
                                     Shown s;
                                     s.row = {p.reading(PadReading::X), p.reading(PadReading::Y)};
                                     s.on = p.reading(PadReading::Buttons) != 0;
                                     return s;
                                 },
                                 [](QPainter& p, const QRect& r, const Shown& s) {
                                     if (s.row.size() < 2) return;
                                     const int x = r.left() + s.row[0] * (r.width() - 1) / 127;
                                     const int y = r.bottom() - s.row[1] * (r.height() - 1) / 127;
                                     p.setPen(s.on ? kInk : kDim);
                                     p.drawLine(x, r.top(), x, r.bottom());
                                     p.drawLine(r.left(), y, r.right(), y);
                                 },
                                 [](Module& m, Engine&, const Gesture& g) {
                                     auto& p = as<Mousexy>(m);
                                     const int size = std::max(g.number, g.item);
                                     if (g.kind == Gesture::Kind::Press) p.press(g.x, g.y, size, g.button);
                                     if (g.kind == Gesture::Kind::Move) p.drag(g.x, g.y, size);
                                     if (g.kind == Gesture::Kind::Release) p.release();
                                 }));
    pad.controls.push_back(switchControl("chkSpring", QStringLiteral("Spring"),
                                         QStringLiteral("In: the point springs back to the middle when let go"),
                                         [](const Module& m) { return Shown::ofOn(as<Mousexy>(m).springBack()); },
                                         [](Module& m, Engine& e, const Gesture& g) {
                                             as<Mousexy>(m).setSpringBack(g.number != 0);
                                             e.MarkPatchChanged(true);
                                         }));
    add("Mousexy", std::move(pad));

    PanelSpec out;
    out.controls.push_back(outputBox());
    out.controls.push_back(upDown("udPad", QStringLiteral("Number of the Mouse Pad"), 1, 128,
                                  [](const Module& m) { return Shown::ofNumber(as<MouseOut>(m).pad() + 1); },
                                  [](Module& m, Engine& e, const Gesture& g) {
                                      as<MouseOut>(m).setPad(g.number - 1);
                                      e.MarkPatchChanged(true);
                                  }));
    std::vector<QString> readings;
    for (const char* r : MouseOut::kReadingNames) readings.push_back(QString::fromLatin1(r));
    out.controls.push_back(choice("cbReading", QStringLiteral("What goes out"), readings,
                                  [](const Module& m) { return selected(as<MouseOut>(m).readingChosen()); },
                                  [](Module& m, Engine& e, const Gesture& g) {
                                      as<MouseOut>(m).setReading(g.item);
                                      e.MarkPatchChanged(true);
                                  },
                                  900));
    add("MouseOut", std::move(out));
}

ControlSpec infoText(const char* tip) {
    ControlSpec edit;
    edit.kind = ControlKind::EditBox;
    edit.objectName = QStringLiteral("txText");
    edit.tip = QString::fromLatin1(tip);
    edit.textual = true;
    edit.newRow = true;
    edit.widthTwips = 2400;
    edit.read = [](const Module& m) { return Shown::ofText(as<InfoModule>(m).text); };
    edit.edit = [](Module& m, Engine& e, const Gesture& g) {
        as<InfoModule>(m).text = g.text;
        changed(m, e);
    };
    return edit;
}

ControlSpec pageChoice() {
    ControlSpec page = upDown("udPage", QStringLiteral("Page a click shows, 1..16 (0: none)"), 0, 16,
                              [](const Module& m) { return Shown::ofNumber(as<InfoModule>(m).extra); },
                              [](Module& m, Engine& e, const Gesture& g) {
                                  as<InfoModule>(m).extra = g.number;
                                  changed(m, e);
                              });
    return page;
}

Editor followOnClick() {
    return [](Module& m, Engine& e, const Gesture& g) {
        if (g.kind == Gesture::Kind::Release) as<InfoModule>(m).follow(e);
    };
}

Editor pictureChosen() {
    return [](Module& m, Engine& e, const Gesture& g) {
        if (g.text.empty()) return;
        as<InfoModule>(m).text = g.text;
        changed(m, e);
    };
}

void addInfoPanels(const PanelAdder& add) {
    PanelSpec info;
    info.controls.push_back(drawn("lblInfo", QString(), 2400, 900, [](const Module& m) { return Shown::ofText(as<InfoModule>(m).text); },
                                  [](QPainter& p, const QRect& r, const Shown& s) {
                                      p.setPen(Qt::white);
                                      p.drawText(r.adjusted(4, 2, -4, -2), Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
                                                 QString::fromStdString(s.text));
                                  }));
    info.controls.push_back(infoText("The note"));
    add("Info", std::move(info));

    PanelSpec pic;
    pic.controls.push_back(drawn("imgPicture", QString(), 2400, 1800, [](const Module& m) { return Shown::ofText(as<InfoModule>(m).text); },
                                 [](QPainter& p, const QRect& r, const Shown& s) { pictureFile(p, r, s.text); }));
    pic.controls.push_back(button("cmdPicture", QStringLiteral("Picture"), QStringLiteral("Choose the picture file"),
                                  Dialog::PictureFile, pictureChosen()));
    add("InfoPic", std::move(pic));

    PanelSpec link;
    link.controls.push_back(drawn("cmdLink", QStringLiteral("Click to show the page"), 2400, 480,
                                  [](const Module& m) { return Shown::ofText(as<InfoModule>(m).text); },
                                  [](QPainter& p, const QRect& r, const Shown& s) {
                                      p.fillRect(r.adjusted(2, 2, -2, -2), kDim);
                                      p.setPen(Qt::white);
                                      p.drawText(r, Qt::AlignCenter, QString::fromStdString(s.text));
                                  },
                                  followOnClick()));
    link.controls.push_back(infoText("The button's caption"));
    link.controls.push_back(pageChoice());
    add("InfoButton", std::move(link));

    PanelSpec picLink;
    picLink.controls.push_back(drawn("imgLink", QStringLiteral("Click to show the page"), 2400, 1800,
                                     [](const Module& m) { return Shown::ofText(as<InfoModule>(m).text); },
                                     [](QPainter& p, const QRect& r, const Shown& s) { pictureFile(p, r, s.text); },
                                     followOnClick()));
    picLink.controls.push_back(button("cmdPicture", QStringLiteral("Picture"), QStringLiteral("Choose the picture file"),
                                      Dialog::PictureFile, pictureChosen()));
    picLink.controls.push_back(pageChoice());
    add("InfoButPic", std::move(picLink));
}

void addPicturePanels(const PanelAdder& add) {
    PanelSpec image;
    image.inputColumns = 4;
    image.controls.push_back(outputBox());
    image.controls.push_back(drawn("imgPixels", QStringLiteral("The picture; the Pixels window draws on it"), 1920, 1920,
                                   [](const Module& m) {
                                       const auto& img = as<Image>(m);
                                       Shown s;
                                       s.number = static_cast<int>(img.changes());
                                       s.row.resize(static_cast<size_t>(kImageSize * kImageSize));
                                       for (int y = 0; y < kImageSize; ++y)
                                           for (int x = 0; x < kImageSize; ++x)
                                               s.row[static_cast<size_t>(y * kImageSize + x)] = img.pixel(x, y);
                                       return s;
                                   },
                                   [](QPainter& p, const QRect& r, const Shown& s) {
                                       if (s.row.size() != static_cast<size_t>(kImageSize * kImageSize)) return;
                                       QImage picture(kImageSize, kImageSize, QImage::Format_RGB32);
                                       for (int y = 0; y < kImageSize; ++y)
                                           for (int x = 0; x < kImageSize; ++x) {
                                               const uint32_t c = unpackColour(static_cast<uint16_t>(s.row[static_cast<size_t>(y * kImageSize + x)]));
                                               picture.setPixel(x, y, qRgb(static_cast<int>(c & 0xFF), static_cast<int>((c >> 8) & 0xFF),
                                                                           static_cast<int>(c >> 16)));
                                           }
                                       p.drawImage(r, picture);
                                   }));
    image.controls.push_back(button("cmdPixels", QStringLiteral("Pixels"), QStringLiteral("Open the pixel window"),
                                    Dialog::PixelWindow));
    image.controls.back().newRow = true;
    image.controls.push_back(button("cmdLoad", QStringLiteral("Load"), QStringLiteral("Load a picture file, scaled to 128 x 128"),
                                    Dialog::PictureFile, [](Module& m, Engine& e, const Gesture& g) {
                                        if (g.text.empty()) return;
                                        QImage file(QString::fromStdString(g.text));
                                        if (file.isNull()) return;
                                        file = file.convertToFormat(QImage::Format_RGB32);
                                        std::vector<uint32_t> rgb;
                                        rgb.reserve(static_cast<size_t>(file.width() * file.height()));
                                        for (int y = 0; y < file.height(); ++y)
                                            for (int x = 0; x < file.width(); ++x) {
                                                const QRgb c = file.pixel(x, y);
                                                rgb.push_back(static_cast<uint32_t>(qRed(c) | (qGreen(c) << 8) | (qBlue(c) << 16)));
                                            }
                                        if (as<Image>(m).loadPicture(rgb, file.width(), file.height())) e.MarkPatchChanged(true);
                                    }));
    addReadingControls<Image>(image.controls);
    add("Image", std::move(image));

    PanelSpec out;
    out.inputColumns = 4;
    out.controls.push_back(outputBox());
    out.controls.push_back(upDown("udImage", QStringLiteral("Number of the Image"), 1, 128,
                                  [](const Module& m) { return Shown::ofNumber(as<ImgOut>(m).image() + 1); },
                                  [](Module& m, Engine& e, const Gesture& g) {
                                      as<ImgOut>(m).setImage(g.number - 1);
                                      e.MarkPatchChanged(true);
                                  }));
    addReadingControls<ImgOut>(out.controls);
    add("ImgOut", std::move(out));
}

}  // namespace

void addDisplayPanels(const PanelAdder& add) {
    addValuePanels(add);
    addMeterPanel(add);
    addSliderBankPanel(add);
    addBallPanels(add);
    addPadPanels(add);
    addInfoPanels(add);
    addPicturePanels(add);
}

}  // namespace quillmer::gui
