#include "platform/RealTimeTimerService.h"

#include <pthread.h>
#include <sched.h>

#include <cstdio>
#include <exception>

namespace quillmer {

namespace {
// Asks for SCHED_FIFO; a refusal (no privilege) leaves the thread as it is.
bool raiseToRealTime() {
    sched_param param{};
    param.sched_priority = sched_get_priority_min(SCHED_FIFO) + 10;
    return pthread_setschedparam(pthread_self(), SCHED_FIFO, &param) == 0;
}
}  // namespace

RealTimeTimerService::RealTimeTimerService() : thread_([this] { run(); }) {}

RealTimeTimerService::~RealTimeTimerService() { stop(); }

void RealTimeTimerService::stop() {
    {
        std::lock_guard<std::mutex> held(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    if (thread_.joinable()) thread_.join();
}

TimerId RealTimeTimerService::addTimer(std::string name, Callback onFire) {
    std::lock_guard<std::mutex> held(mutex_);
    const Clock::time_point now = Clock::now();
    timers_.push_back(Timer{std::move(name), std::move(onFire), {}, now, 0, now});
    return static_cast<TimerId>(timers_.size() - 1);
}

void RealTimeTimerService::start(TimerId timer, TimerPeriod period) {
    {
        std::lock_guard<std::mutex> held(mutex_);
        Timer& t = timers_.at(static_cast<size_t>(timer));
        t.period = period;
        t.anchor = Clock::now();
        t.firings = 1;
        t.due = t.dueOf(1);
    }
    wake_.notify_all();
}

void RealTimeTimerService::setInterval(TimerId timer, int32_t intervalMs) {
    start(timer, TimerPeriod::wholeMs(intervalMs));
}

void RealTimeTimerService::setExactInterval(TimerId timer, int64_t numeratorMs, int32_t denominator) {
    start(timer, TimerPeriod::exact(numeratorMs, denominator));
}

int32_t RealTimeTimerService::interval(TimerId timer) const {
    std::lock_guard<std::mutex> held(mutex_);
    return timers_.at(static_cast<size_t>(timer)).period.roundedMs();
}

int64_t RealTimeTimerService::nowMicros() const {
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start_).count();
}

void RealTimeTimerService::run() {
    realTime_ = raiseToRealTime();
    std::unique_lock<std::mutex> held(mutex_);
    while (!stopping_) {
        // The earliest running timer; ties go to the one made first.
        size_t next = timers_.size();
        for (size_t i = 0; i < timers_.size(); ++i)
            if (timers_[i].period.running() && (next == timers_.size() || timers_[i].due < timers_[next].due)) next = i;
        if (next == timers_.size()) {
            wake_.wait(held);
            continue;
        }
        const Clock::time_point due = timers_[next].due;
        if (Clock::now() < due) {
            wake_.wait_until(held, due);
            continue;  // look again: the timers may have changed
        }
        Timer& t = timers_[next];
        const Clock::time_point now = Clock::now();
        do t.due = t.dueOf(++t.firings);
        while (t.due <= now);  // drop what can't be delivered
        Callback call = t.onFire;
        const TimerId id = static_cast<TimerId>(next);
        held.unlock();
        if (observer_)
            observer_(static_cast<TimerId>(next), std::chrono::duration_cast<std::chrono::microseconds>(now - due).count());
        // Nothing may escape a timer callback: on this thread it would end the program.
        try {
            if (call) call();
        } catch (const std::exception& e) {
            std::fprintf(stderr, "quillmer: timer %d: %s\n", static_cast<int>(id), e.what());
        } catch (...) {
            std::fprintf(stderr, "quillmer: timer %d failed\n", static_cast<int>(id));
        }
        held.lock();
    }
}

}  // namespace quillmer
