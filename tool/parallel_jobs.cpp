#include "tool/parallel_jobs.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <new>
#include <thread>

#include "tool/interrupt.h"
#include "tool/work_progress.h"

namespace vrltool {
namespace {

constexpr std::chrono::milliseconds kGlance{50};  // between two looks at the progress and at requests to stop

class JobQueue {
 public:
    JobQueue(std::size_t count, const Job& job) : count_(count), job_(job), complaints_(count) {}

    void WorkUntilEmpty() {
        const JobCalls calls = {[this] { ++steps_done_; },
                                [this](const std::function<void()>& commit) {
                                    const std::scoped_lock lock(committing_);
                                    commit();
                                }};
        for (std::size_t i = next_++; i < count_; i = next_++) {
            complaints_[i] = ComplaintOf([&] { job_(i, calls); });
            const std::scoped_lock lock(waiting_);
            ++jobs_done_;
            done_.notify_one();
        }
    }

    void Watch(WorkProgress& progress, std::int32_t steps) {
        const auto total = static_cast<std::int32_t>(count_) * steps;
        std::unique_lock lock(waiting_);
        while (!done_.wait_for(lock, kGlance, [this] { return jobs_done_ == count_; })) progress.Report(steps_done_, total);
        ThrowIfInterrupted();  // a job that noticed first has ended
    }

    [[noreturn]] void EndProgram(const Interruption& interruption) {
        const std::scoped_lock lock(committing_);
        std::_Exit(ExitStatusOf(interruption));
    }

    const std::vector<std::optional<std::string>>& Complaints() const { return complaints_; }

 private:
    static std::optional<std::string> ComplaintOf(const std::function<void()>& work) {
        try {
            work();
            return std::nullopt;
        } catch (const Interruption&) {
            return std::nullopt;  // the watching thread ends the program
        } catch (const std::bad_alloc&) {
            return "not enough memory";
        } catch (const std::exception& error) {
            return error.what();
        } catch (int status) {
            return "a call of the host failed with status " + std::to_string(status);
        }
    }

    std::size_t count_;
    const Job& job_;
    std::vector<std::optional<std::string>> complaints_;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<std::int32_t> steps_done_ = 0;
    std::size_t jobs_done_ = 0;
    std::mutex waiting_, committing_;
    std::condition_variable done_;
};

}  // namespace

std::vector<std::optional<std::string>> RunJobs(std::size_t count, std::size_t threads, std::int32_t steps, const Job& job) {
    JobQueue queue(count, job);
    std::vector<std::jthread> workers;
    for (std::size_t i = 0; i < std::min(count, threads); ++i) workers.emplace_back([&] { queue.WorkUntilEmpty(); });
    try {
        WorkProgress progress(1);
        queue.Watch(progress, steps);
    } catch (const Interruption& interruption) {
        queue.EndProgram(interruption);
    }
    workers.clear();  // waits for them
    return queue.Complaints();
}

}  // namespace vrltool
