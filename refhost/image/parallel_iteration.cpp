#include "refhost/image/parallel_iteration.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

#include "host/parallel.h"
#include "refhost/services/status.h"

namespace refhost {
namespace {

// One iteration: its steps are handed out one by one to whoever asks.
struct Iteration {
    std::int32_t count;
    void* context;
    GW_IterateStep step;
    std::atomic<std::int64_t> next{0};  // wide: every thread asks once too often
    std::atomic<int> status{0};

    void Work(std::int32_t thread_index) {
        while (status.load(std::memory_order_relaxed) == 0) {
            const std::int64_t index = next.fetch_add(1, std::memory_order_relaxed);
            if (index >= count) return;
            int none = 0;
            const int result = StatusOfStep(thread_index, static_cast<std::int32_t>(index));
            if (result != 0) status.compare_exchange_strong(none, result);
        }
    }

 private:
    int StatusOfStep(std::int32_t thread_index, std::int32_t index) {
        try {
            return step(context, thread_index, index);
        } catch (...) {
            return kStatusFailed;  // steps promise not to throw; an exception must not cross threads
        }
    }
};

// A lock that is only ever tried for, by its own holder too.
class Occupancy {
 public:
    bool try_lock() { return !occupied_.exchange(true, std::memory_order_acquire); }
    void unlock() { occupied_.store(false, std::memory_order_release); }

 private:
    std::atomic<bool> occupied_{false};
};

// Threads that help with one iteration at a time. They are started on first need and wait for ever after: the pool is
// never destroyed, because threads cannot be joined while a module is being unloaded.
class WorkerPool {
 public:
    static WorkerPool& Instance() {
        static WorkerPool* pool = new WorkerPool;
        return *pool;
    }

    void SetThreadCount(int count) { wanted_ = std::max(count, 1) - 1; }

    void Run(Iteration& iteration) {
        const std::unique_lock running(occupancy_, std::try_to_lock);
        if (!running) {  // nested in a step, or beside another caller's iteration
            iteration.Work(0);
            return;
        }
        const int helpers = std::min(wanted_.load(), iteration.count - 1);
        Start(helpers);
        {
            const std::scoped_lock lock(lock_);
            iteration_ = &iteration;
            invited_ = std::min(helpers, started_);
        }
        work_.notify_all();
        iteration.Work(0);
        std::unique_lock lock(lock_);
        invited_ = 0;  // who has not come by now is not needed
        done_.wait(lock, [&] { return active_ == 0; });
        iteration_ = nullptr;
    }

 private:
    void Start(int helpers) {
        try {
            for (; started_ < helpers; ++started_) std::thread([this, index = started_ + 1] { Serve(index); }).detach();
        } catch (const std::exception&) {
            // Fewer threads, then.
        }
    }

    void Serve(std::int32_t thread_index) {
        std::unique_lock lock(lock_);
        for (;;) {
            work_.wait(lock, [&] { return invited_ > 0; });
            --invited_;
            ++active_;
            Iteration& iteration = *iteration_;
            lock.unlock();
            iteration.Work(thread_index);
            lock.lock();
            if (--active_ == 0) done_.notify_one();
        }
    }

    Occupancy occupancy_;  // the caller's whose iteration the pool works on
    std::mutex lock_;      // guards what follows
    std::condition_variable work_, done_;
    Iteration* iteration_ = nullptr;
    int invited_ = 0;  // helpers that may still join the iteration
    int active_ = 0;   // helpers at work
    int started_ = 0;
    std::atomic<int> wanted_{static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U)) - 1};
};

}  // namespace

void SetThreadCount(int count) { WorkerPool::Instance().SetThreadCount(count); }

}  // namespace refhost

int GW_IterateGeneric(std::int32_t count, void* context, GW_IterateStep step) {
    refhost::Iteration iteration{count, context, step};
    if (count > 0) refhost::WorkerPool::Instance().Run(iteration);
    return iteration.status;
}
