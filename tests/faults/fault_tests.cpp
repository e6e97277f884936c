// Every export with every allocation and every host call failing, one at a time, and with a stop at every poll.

#include <gmock/gmock.h>

#include "refhost/engine/binding.h"
#include "refhost/image/parallel_iteration.h"
#include "refhost/services/faults.h"
#include "refhost/services/reports.h"
#include "tests/faults/export_calls.h"

using refhost::HostCall;
using support::Outcome;
using testing::AnyOf;

namespace {

constexpr int kStatus = 77;

class Faults : public testing::TestWithParam<support::ExportCall> {
 protected:
    Outcome Run(const std::function<void()>& arm = [] {}) const {
        refhost::TakeReports();  // a log that is empty grows in every run, not in some
        return GetParam().Run(nullptr, arm);
    }

    /// Arms the nth fault for n = 1, 2, ... until none strikes; each run, and every so often a clean one after it, goes through
    /// `expect`. Returns how many struck.
    int Walk(const std::function<void(int nth)>& arm, const std::function<void(const Outcome&)>& expect) const {
        for (int nth = 1;; ++nth) {
            SCOPED_TRACE(nth);
            const Outcome outcome = Run([&] { arm(nth); });
            if (!refhost::FaultStruck()) {
                EXPECT_EQ(outcome, clean_);
                return nth - 1;
            }
            expect(outcome);
            EXPECT_TRUE(outcome.code != 0 || outcome == clean_);
            support::ExpectNothingLeftOver(objects_);
            EXPECT_EQ(Run(), clean_);
            if (HasFailure()) return nth;
        }
    }

    support::QuietReports quiet_;
    Outcome clean_ = Run();  // also starts what the host keeps for good, as its threads
    int objects_ = refhost::LiveEngineObjects();
};

/// What the export comes to when the call fails with kStatus.
int CodeOfFailing(HostCall call) {
    switch (call) {
        case HostCall::kNewPath:
        case HostCall::kPathGetData:
        case HostCall::kPathTransform:
        case HostCall::kGetOffsetPath:
        case HostCall::kNewNullProgress:
        case HostCall::kNewFill:
        case HostCall::kPainterGetInfo:
            return support::kThrewException;
        case HostCall::kStartQuietErrors:  // the purge loop tries again
        case HostCall::kInverseMatrix:     // as for a matrix without inverse
            return 0;
        default:
            return kStatus;
    }
}

}  // namespace

TEST_P(Faults, EveryFailingHostCallEndsTheExportWithItsStatus) {
    ASSERT_EQ(clean_.code, 0);
    int by_call = 0;
    for (int i = 0; i <= static_cast<int>(HostCall::kPainterGetInfo); ++i) {
        SCOPED_TRACE(i);
        const auto call = static_cast<HostCall>(i);
        by_call += Walk([&](int nth) { refhost::FailHostCall(call, nth, kStatus); },
                        [&](const Outcome& outcome) { EXPECT_EQ(outcome.code, CodeOfFailing(call)); });
    }
    const int any = Walk([](int nth) { refhost::FailAnyHostCall(nth, kStatus); },
                         [](const Outcome& outcome) { EXPECT_THAT(outcome.code, AnyOf(kStatus, support::kThrewException, 0)); });
    EXPECT_EQ(any, by_call);
    EXPECT_GT(any, 0);
    RecordProperty("host_calls", by_call + any);
}

TEST_P(Faults, EveryFailingAllocationEndsTheExportWithoutALeak) {
    constexpr int kForGood = 1 << 30;
    const int struck = Walk([](int nth) { refhost::FailAllocations(nth, kForGood); },
                            [](const Outcome& outcome) { EXPECT_EQ(outcome.code, support::kThrewNoMemory); });
    const int once = Walk([](int nth) { refhost::FailAllocations(nth, 1); },
                          [](const Outcome& outcome) { EXPECT_THAT(outcome.code, AnyOf(0, support::kThrewNoMemory)); });
    EXPECT_EQ(struck, once);
    RecordProperty("allocations", struck + once);
}

namespace {

// The callbacks' side of a run: from poll `stop_at` on both say stop, each with its own code.
struct Polls {
    int stop_at, count = 0, first_code = 0;

    std::int32_t Answer(std::int32_t code) {
        if (++count < stop_at) return 0;
        if (first_code == 0) first_code = code;
        return code;
    }
};
std::int32_t Abort(void* polls) { return static_cast<Polls*>(polls)->Answer(23); }
std::int32_t Progress(void* polls, std::int32_t, std::int32_t) { return static_cast<Polls*>(polls)->Answer(29); }

}  // namespace

TEST_P(Faults, TheFirstStopOfEitherCallbackIsTheStatusAtEveryPoll) {
    if (!GetParam().polls) GTEST_SKIP() << "takes no callbacks";
    int stops = 0;
    for (const int threads : {1, 2}) {
        refhost::SetThreadCount(threads);
        for (const bool abort : {true, false}) {
            for (const bool progress : {true, false}) {
                for (int stop_at = 1;; ++stop_at, ++stops) {
                    Polls polls = {stop_at};
                    const GW_ProgressInfo callbacks = {&polls, abort ? Abort : nullptr, progress ? Progress : nullptr};
                    const Outcome outcome = GetParam().Run(&callbacks);
                    ASSERT_EQ(outcome.code, polls.first_code) << stop_at;
                    support::ExpectNothingLeftOver(objects_);
                    if (polls.first_code == 0) {
                        EXPECT_EQ(outcome, clean_);
                        break;
                    }
                    ASSERT_EQ(polls.count, stop_at) << "nothing asks again after a stop";
                }
            }
        }
    }
    const bool renders = GetParam().name != std::string("clear8") && GetParam().name != std::string("unknown16");
    EXPECT_EQ(stops > 6 * 16, renders);  // every row, at the least, for each pair of callbacks
    RecordProperty("stops", stops);
}

INSTANTIATE_TEST_SUITE_P(Exports, Faults, testing::ValuesIn(support::ExportCalls().begin(), support::ExportCalls().end()),
                         [](const auto& instance) { return instance.param.name; });
INSTANTIATE_TEST_SUITE_P(LifeCycle, Faults, testing::Values(support::BirthCall()),
                         [](const auto& instance) { return instance.param.name; });
