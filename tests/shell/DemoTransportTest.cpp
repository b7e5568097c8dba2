// The shipped demo obeys the transport: Stop holds its clocks, its sounding notes end at the
// stop and nothing more is played until Run, which carries on from where it stopped.

#include <gtest/gtest.h>

#include <map>

#include "tests/engine/FakeDevices.h"
#include "tests/shell/SessionHarness.h"

namespace quillmer::testing {
namespace {

struct Played {
    int noteOns = 0;
    std::map<int, int> sounding;  // channel * 128 + note -> count
    int stillSounding() const {
        int n = 0;
        for (const auto& [key, count] : sounding) n += count;
        return n;
    }
};

Played listen(const std::vector<SentMessage>& log, size_t from) {
    Played p;
    for (size_t i = from; i < log.size(); ++i) {
        const std::vector<uint8_t>& m = log[i].bytes;
        if (m.size() < 3) continue;
        const int kind = m[0] & 0xF0;
        const int key = (m[0] & 0x0F) * 128 + m[1];
        if (kind == 0x90 && m[2] > 0) {
            ++p.noteOns;
            ++p.sounding[key];
        } else if ((kind == 0x80 || (kind == 0x90 && m[2] == 0)) && p.sounding[key] > 0) {
            --p.sounding[key];
        }
    }
    return p;
}

std::vector<int> clockOutputs(Session& s) {
    std::vector<int> out;
    s.engine.forEachModule([&](Module& m) {
        if (m.Name.find("Clock-") != std::string::npos) out.push_back(s.engine.bus[m.OutBus]);
    });
    return out;
}

std::vector<int> stepperCounts(Session& s) {
    std::vector<int> out;
    s.engine.forEachModule([&](Module& m) {
        if (m.Name.find("Stepper-") != std::string::npos) out.push_back(s.engine.bus[m.OutBus]);
    });
    return out;
}

TEST(DemoTransport, StopHoldsTheClocksAndEndsTheNotesRunCarriesOn) {
    SessionHarness h;
    Session& s = h.session;
    std::vector<SentMessage> log;
    auto held = s.engine.lock();
    std::string error;
    ASSERT_TRUE(s.OpenFile(std::string(QUILLMER_SOURCE_DIR) + "/examples/demo.qmp", error)) << error;
    s.engine.ports.attachOutput(0, std::make_unique<FakeOutput>("port A", h.timers, &log));
    ASSERT_EQ(s.engine.bus[sysbus::Run], 127) << "the demo opens running";
    ASSERT_EQ(clockOutputs(s).size(), 3u);

    const auto run = [&](int ticks) {
        for (int i = 0; i < ticks; ++i) s.engine.tick();
    };
    run(400);
    const Played playing = listen(log, 0);
    EXPECT_GT(playing.noteOns, 20) << "the demo plays while running";

    s.engine.setRun(false);
    run(2);
    const std::vector<int> counts = stepperCounts(s);
    EXPECT_EQ(listen(log, 0).stillSounding(), 0) << "every note ended at the stop";
    const size_t atStop = log.size();
    run(500);
    EXPECT_EQ(listen(log, atStop).noteOns, 0) << "nothing plays while stopped";
    for (int out : clockOutputs(s)) EXPECT_EQ(out, 0);
    EXPECT_EQ(stepperCounts(s), counts) << "the counts hold where they stopped";

    s.engine.setRun(true);
    run(200);
    EXPECT_GT(listen(log, atStop).noteOns, 5) << "Run plays on";
    EXPECT_NE(stepperCounts(s), counts);
}

}  // namespace
}  // namespace quillmer::testing
