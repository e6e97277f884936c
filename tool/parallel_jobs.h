#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vrltool {

/// To be called from inside a job.
struct JobCalls {
    std::function<void()> step_done;  // once after every step of the job
    /// Runs `commit`, which puts files in their places: no two at a time, and a stop waits for it.
    std::function<void(const std::function<void()>& commit)> commit;
};

using Job = std::function<void(std::size_t index, const JobCalls& calls)>;

/// Runs the jobs 0 to `count` - 1 on up to `threads` threads, each in `steps` steps. The calling thread draws the progress
/// and, on a request to stop, ends the program at once between two commits: calls that cannot be stopped are left behind.
/// One failed job does not stop the others. Returns a complaint for each job that failed, no value for the others.
std::vector<std::optional<std::string>> RunJobs(std::size_t count, std::size_t threads, std::int32_t steps, const Job& job);

}  // namespace vrltool
