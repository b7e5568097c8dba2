#include "gui/CpuMeter.h"

#include <QDateTime>
#include <QFile>
#include <QList>
#include <unistd.h>

namespace quillmer::gui {

namespace {
constexpr int kSampleMs = 1000;
// Fields 14 and 15 of the stat line, counted after the command name: utime and stime.
constexpr int kUtimeAfterName = 11;
}  // namespace

std::optional<uint64_t> cpuTicksFromStat(const QByteArray& statLine) {
    const qsizetype close = statLine.lastIndexOf(')');
    if (close < 0) return std::nullopt;
    const QList<QByteArray> fields = statLine.mid(close + 2).split(' ');
    if (fields.size() <= kUtimeAfterName + 1) return std::nullopt;
    bool okUser = false;
    bool okSystem = false;
    const uint64_t user = fields[kUtimeAfterName].toULongLong(&okUser);
    const uint64_t system = fields[kUtimeAfterName + 1].toULongLong(&okSystem);
    if (!okUser || !okSystem) return std::nullopt;
    return user + system;
}

std::optional<uint64_t> processCpuTicks() {
    QFile stat(QStringLiteral("/proc/self/stat"));
    if (!stat.open(QIODevice::ReadOnly)) return std::nullopt;
    return cpuTicksFromStat(stat.readAll());
}

CpuMeter::CpuMeter(QWidget* parent) : QLabel(parent) {
    setToolTip(QStringLiteral("CPU Usage"));
    setAlignment(Qt::AlignCenter);
    setFrameShape(QFrame::StyledPanel);
    setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("100 %")) + 10);
    setText(QStringLiteral("0 %"));
    connect(&timer_, &QTimer::timeout, this, &CpuMeter::sample);
    timer_.start(kSampleMs);
    sample();
}

void CpuMeter::sample() {
    const std::optional<uint64_t> ticks = processCpuTicks();
    const int64_t now = QDateTime::currentMSecsSinceEpoch() * 1000;
    if (ticks && lastTicks_ && now > lastMicros_) {
        const double ticksPerSecond = static_cast<double>(sysconf(_SC_CLK_TCK));
        const double used = static_cast<double>(*ticks - *lastTicks_) / ticksPerSecond;
        const double elapsed = static_cast<double>(now - lastMicros_) / 1e6;
        percent_ = std::clamp(static_cast<int>(used / elapsed * 100.0 + 0.5), 0, 999);
        setText(QStringLiteral("%1 %").arg(percent_));
    }
    lastTicks_ = ticks;
    lastMicros_ = now;
}

}  // namespace quillmer::gui
