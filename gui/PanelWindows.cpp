#include "gui/PanelWindows.h"

#include <QColorDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QPushButton>
#include <QSlider>
#include <QTimer>
#include <QVBoxLayout>
#include <map>

#include "engine/Engine.h"
#include "modules/panels/CtrlOut32.h"
#include "modules/panels/Picture.h"

namespace quillmer::gui {

namespace {

constexpr int kRefreshMs = 33;

class SliderWindow : public QWidget {
public:
    SliderWindow(Engine& engine, PanelModuleFinder find, QWidget* parent)
        : QWidget(parent, Qt::Tool), engine_(engine), find_(std::move(find)) {
        setAttribute(Qt::WA_DeleteOnClose);
        setObjectName(QStringLiteral("ControlSliders"));
        auto* grid = new QGridLayout(this);
        for (int i = 0; i < CtrlOut32::kSliders; ++i) {
            auto* slider = new QSlider(Qt::Vertical, this);
            slider->setRange(0, 127);
            slider->setObjectName(QStringLiteral("slCtrl%1").arg(i));
            connect(slider, &QSlider::valueChanged, this, [this, i](int v) {
                if (quiet_) return;
                auto held = engine_.lock();
                if (Module* m = find_()) static_cast<CtrlOut32*>(m)->setValue(i, v);
            });
            auto* label = new QLabel(this);
            label->setAlignment(Qt::AlignCenter);
            grid->addWidget(slider, (i / 16) * 2, i % 16, Qt::AlignHCenter);
            grid->addWidget(label, (i / 16) * 2 + 1, i % 16);
            sliders_.push_back(slider);
            labels_.push_back(label);
        }
        connect(&timer_, &QTimer::timeout, this, &SliderWindow::refresh);
        timer_.start(kRefreshMs);
        refresh();
    }
    ~SliderWindow() override { timer_.stop(); }

    void refresh() {
        QString title;
        std::vector<int> values;
        std::vector<QString> labels;
        {
            auto held = engine_.lock();
            Module* m = find_();
            if (m == nullptr) {
                close();
                return;
            }
            const auto& bank = *static_cast<CtrlOut32*>(m);
            title = QString::fromStdString(bank.title.empty() ? bank.Name : bank.title);
            for (int i = 0; i < CtrlOut32::kSliders; ++i) {
                values.push_back(bank.value(i));
                const std::string& label = bank.labels[static_cast<size_t>(i)];
                labels.push_back(label.empty() ? QStringLiteral("CC%1").arg(bank.controller(i)) : QString::fromStdString(label));
            }
        }
        setWindowTitle(title);
        quiet_ = true;
        for (size_t i = 0; i < sliders_.size(); ++i) {
            if (!sliders_[i]->isSliderDown()) sliders_[i]->setValue(values[i]);
            labels_[i]->setText(labels[i]);
        }
        quiet_ = false;
    }

    // The bank remembers where its window stood and whether it was on show.
    void remember(bool shown) {
        auto held = engine_.lock();
        if (Module* m = find_()) {
            auto& bank = *static_cast<CtrlOut32*>(m);
            bank.setWindowShown(shown);
            bank.setWindowPlace(x(), y());
        }
    }

protected:
    void closeEvent(QCloseEvent* event) override {
        remember(false);
        QWidget::closeEvent(event);
    }

private:
    Engine& engine_;
    PanelModuleFinder find_;
    QTimer timer_;
    std::vector<QSlider*> sliders_;
    std::vector<QLabel*> labels_;
    bool quiet_ = false;
};

class PixelCanvas : public QWidget {
public:
    static constexpr int kScale = 4;
    PixelCanvas(Engine& engine, PanelModuleFinder find, QWidget* parent)
        : QWidget(parent), engine_(engine), find_(std::move(find)), picture_(kImageSize, kImageSize, QImage::Format_RGB32) {
        setFixedSize(kImageSize * kScale, kImageSize * kScale);
        setObjectName(QStringLiteral("PixelCanvas"));
        picture_.fill(Qt::black);
    }
    QColor pen = Qt::white;

    // False once the Image has gone.
    bool refresh() {
        auto held = engine_.lock();
        const Module* m = find_();
        if (m == nullptr) return false;
        const auto& image = *static_cast<const Image*>(m);
        if (image.changes() == seen_ && seenOnce_) return true;
        seen_ = image.changes();
        seenOnce_ = true;
        for (int y = 0; y < kImageSize; ++y)
            for (int x = 0; x < kImageSize; ++x) {
                const uint32_t c = unpackColour(image.pixel(x, y));
                picture_.setPixel(x, y, qRgb(static_cast<int>(c & 0xFF), static_cast<int>((c >> 8) & 0xFF), static_cast<int>(c >> 16)));
            }
        update();
        return true;
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        p.drawImage(rect(), picture_);
    }
    void mousePressEvent(QMouseEvent* e) override { paintAt(e); }
    void mouseMoveEvent(QMouseEvent* e) override {
        if (e->buttons() != Qt::NoButton) paintAt(e);
    }

private:
    void paintAt(QMouseEvent* e) {
        const int x = static_cast<int>(e->position().x()) / kScale, y = static_cast<int>(e->position().y()) / kScale;
        const uint32_t colour = static_cast<uint32_t>(pen.red() | (pen.green() << 8) | (pen.blue() << 16));
        auto held = engine_.lock();
        if (Module* m = find_()) {
            static_cast<Image*>(m)->paint(x, y, e->buttons() & Qt::RightButton ? 0 : colour);
            engine_.MarkPatchChanged(true);
        }
    }
    Engine& engine_;
    PanelModuleFinder find_;
    QImage picture_;
    uint32_t seen_ = 0;
    bool seenOnce_ = false;
};

class PixelWindow : public QWidget {
public:
    PixelWindow(Engine& engine, PanelModuleFinder find, QWidget* parent) : QWidget(parent, Qt::Tool), engine_(engine), find_(find) {
        setAttribute(Qt::WA_DeleteOnClose);
        setObjectName(QStringLiteral("PixelWindow"));
        canvas_ = new PixelCanvas(engine, find, this);
        auto* penButton = new QPushButton(QStringLiteral("Pen..."), this);
        penButton->setToolTip(QStringLiteral("Colour of the pen; the right button draws black"));
        auto* clear = new QPushButton(QStringLiteral("Clear"), this);
        connect(penButton, &QPushButton::clicked, this, [this] {
            const QColor c = QColorDialog::getColor(canvas_->pen, this, QStringLiteral("Pen"));
            if (c.isValid()) canvas_->pen = c;
        });
        connect(clear, &QPushButton::clicked, this, [this] {
            auto held = engine_.lock();
            if (Module* m = find_()) {
                static_cast<Image*>(m)->fill(0);
                engine_.MarkPatchChanged(true);
            }
        });
        auto* buttons = new QHBoxLayout;
        buttons->addWidget(penButton);
        buttons->addWidget(clear);
        buttons->addStretch();
        auto* column = new QVBoxLayout(this);
        column->addWidget(canvas_);
        column->addLayout(buttons);
        {
            auto held = engine_.lock();
            if (Module* m = find_()) setWindowTitle(QStringLiteral("Pixels: ") + QString::fromStdString(m->Name));
        }
        connect(&timer_, &QTimer::timeout, this, [this] {
            if (!canvas_->refresh()) close();
        });
        timer_.start(kRefreshMs);
        canvas_->refresh();
    }

private:
    Engine& engine_;
    PanelModuleFinder find_;
    PixelCanvas* canvas_ = nullptr;
    QTimer timer_;
};

// The open windows, by the module they show.
std::map<const Module*, QPointer<QWidget>>& openWindows() {
    static std::map<const Module*, QPointer<QWidget>> windows;
    return windows;
}

}  // namespace

QWidget* toggleControlSliders(Engine& engine, PanelModuleFinder find, QWidget* parent) {
    const Module* key = nullptr;
    int left = 0, top = 0;
    {
        auto held = engine.lock();
        const Module* m = find();
        if (m == nullptr) return nullptr;
        key = m;
        left = static_cast<const CtrlOut32*>(m)->windowLeft();
        top = static_cast<const CtrlOut32*>(m)->windowTop();
    }
    QPointer<QWidget>& open = openWindows()[key];
    if (open) {
        open->close();
        return nullptr;
    }
    auto* window = new SliderWindow(engine, std::move(find), parent);
    if (left != 0 || top != 0) window->move(left, top);
    window->show();
    window->remember(true);
    open = window;
    return window;
}

QWidget* openPixelWindow(Engine& engine, PanelModuleFinder find, QWidget* parent) {
    const Module* key = nullptr;
    {
        auto held = engine.lock();
        key = find();
        if (key == nullptr) return nullptr;
    }
    QPointer<QWidget>& open = openWindows()[key];
    if (!open) open = new PixelWindow(engine, std::move(find), parent);
    open->show();
    open->raise();
    return open;
}

}  // namespace quillmer::gui
