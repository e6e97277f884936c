// All exports on many threads at once, with shared inputs.

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "api/vrl.h"
#include "refhost/engine/binding.h"
#include "tests/faults/export_calls.h"

using support::ExportCall;
using support::ExportCalls;
using support::Outcome;

namespace {

constexpr std::size_t kThreads = 8;

void OnAllThreads(const std::function<void(std::size_t thread)>& work) {
    std::vector<std::jthread> threads;
    for (std::size_t thread = 0; thread < kThreads; ++thread) threads.emplace_back([&, thread] { work(thread); });
}

/// Says stop, with this code, at the row or column `*refcon` reaches.
constexpr int kStop = 31;
std::int32_t StopAtZero(void* refcon, std::int32_t, std::int32_t) { return --*static_cast<int*>(refcon) == 0 ? kStop : 0; }

}  // namespace

TEST(Threads, MixedAndStoppedCallsAreAsAloneThroughLifeCycles) {
    const support::QuietReports quiet;
    const auto exports = ExportCalls();
    std::vector<Outcome> alone;
    for (const ExportCall& call : exports) alone.push_back(call.Run());
    const int objects = refhost::LiveEngineObjects();
    std::atomic<int> calls{0};
    for (int cycle = 0; cycle < 3; ++cycle) {
        OnAllThreads([&](std::size_t thread) {
            for (std::size_t i = 0; i < exports.size(); ++i) {
                const std::size_t which = (i * (2 * thread + 1) + thread) % exports.size();
                const ExportCall& call = exports[which];
                EXPECT_EQ(call.Run(), alone[which]) << call.name;
                int left = static_cast<int>(thread) + 1;
                const std::size_t trace = exports.size() - 1 - (thread + i) % 2;  // keeps numbers of colours for each thread
                EXPECT_EQ(exports[trace].Run(), alone[trace]) << exports[trace].name;
                const GW_ProgressInfo stop = {&left, nullptr, StopAtZero};
                const Outcome stopped = call.Run(&stop);
                EXPECT_EQ(stopped.code, left <= 0 ? kStop : 0) << call.name;
                calls += 3;
            }
        });
        support::ExpectNothingLeftOver(objects);
        VRL_Death();
        OnAllThreads([](std::size_t) { VRL_Birth(); });
        OnAllThreads([](std::size_t) { VRL_Birth(); });  // while bound already
    }
    RecordProperty("calls", calls);
}
