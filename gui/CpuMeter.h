#pragma once
// The strip's "CPU Usage" box: how much of one processor this program used since the last
// look, from the kernel's account of the process (/proc/self/stat).

#include <QLabel>
#include <QTimer>
#include <cstdint>
#include <optional>

namespace quillmer::gui {

// The process's user plus system time in clock ticks, or nothing when it can't be read.
std::optional<uint64_t> processCpuTicks();
// The same from the text of a stat line (the command name may hold blanks and brackets).
std::optional<uint64_t> cpuTicksFromStat(const QByteArray& statLine);

class CpuMeter : public QLabel {
    Q_OBJECT
public:
    explicit CpuMeter(QWidget* parent = nullptr);
    // Percent of one processor over the last interval.
    int percent() const { return percent_; }

private:
    void sample();

    QTimer timer_;
    std::optional<uint64_t> lastTicks_;
    int64_t lastMicros_ = 0;
    int percent_ = 0;
};

}  // namespace quillmer::gui
