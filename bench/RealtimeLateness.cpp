// Lateness of the real-time tick: the engine ticks at tempo 120 on the real-time timer
// service for a while (10 s unless told otherwise) with a few hundred modules placed;
// prints the median and the 99th percentile of how late each tick fired.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

#include "engine/Engine.h"
#include "modules/BuiltTypes.h"
#include "platform/RealTimeTimerService.h"

using namespace quillmer;

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 10;
    RealTimeTimerService timers;
    Engine engine(timers, builtTypes());
    std::mutex samplesMutex;
    std::vector<int64_t> lateness;
    lateness.reserve(static_cast<size_t>(seconds) * 100);
    timers.setLatenessObserver([&](TimerId timer, int64_t lateMicros) {
        if (timer != engine.tickTimer()) return;
        std::lock_guard<std::mutex> held(samplesMutex);
        lateness.push_back(lateMicros);
    });
    {
        auto held = engine.lock();
        for (int i = 0; i < 300; ++i) engine.placeForBulk(*typeIdByName("Div"));
        engine.endBulk();
        engine.StartTimers();
    }
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    {
        auto held = engine.lock();
        engine.StopTimers();
    }
    timers.stop();

    std::sort(lateness.begin(), lateness.end());
    if (lateness.empty()) {
        std::fprintf(stderr, "no ticks ran\n");
        return 1;
    }
    const auto at = [&](double q) { return lateness[static_cast<size_t>(q * static_cast<double>(lateness.size() - 1))]; };
    std::printf("ticks: %zu in %d s at tempo 120 (period %d ms), real-time scheduling: %s\n", lateness.size(),
                seconds, engine.TickPeriod(), timers.realTimeScheduling() ? "yes" : "no");
    std::printf("lateness: median %lld us, 99th percentile %lld us, worst %lld us\n",
                static_cast<long long>(at(0.5)), static_cast<long long>(at(0.99)),
                static_cast<long long>(lateness.back()));
    return 0;
}
