#pragma once
// The engine lock, with one addition to a plain mutex: work handed in by another thread
// while the lock is held runs as soon as the lock comes free. The thread that unlocks runs
// it, still holding the lock, before letting go; a device thread that brings input thus
// never waits for the engine, and its input never waits for a tick.

#include <atomic>
#include <functional>
#include <mutex>

namespace quillmer {

class EngineLock {
public:
    // What to run on release when raise() was called; it runs with the lock held.
    explicit EngineLock(std::function<void()> onRelease) : onRelease_(std::move(onRelease)) {}
    EngineLock(const EngineLock&) = delete;
    EngineLock& operator=(const EngineLock&) = delete;

    void lock() { mutex_.lock(); }
    bool try_lock() { return mutex_.try_lock(); }
    void unlock() {
        for (;;) {
            while (pending_.exchange(false, std::memory_order_acq_rel)) runWork();
            mutex_.unlock();
            // Raised after the look above but before the unlock: its raiser may have found
            // the lock taken, so take it back, unless someone else has it and will look.
            if (!pending_.load(std::memory_order_acquire) || !mutex_.try_lock()) return;
        }
    }

    // From any thread: the release work is due. Runs it here when the lock is free now.
    void raise() {
        pending_.store(true, std::memory_order_release);
        if (mutex_.try_lock()) unlock();
    }

private:
    void runWork() noexcept {
        try {
            onRelease_();
        } catch (...) {
            // The work handles its own failures; nothing may escape an unlock.
        }
    }

    std::mutex mutex_;
    std::atomic<bool> pending_{false};
    std::function<void()> onRelease_;
};

}  // namespace quillmer
