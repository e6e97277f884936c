// Every host call and every allocation of a mask render fails once, at each position.

#include <gmock/gmock.h>

#include "api/vrl.h"
#include "refhost/engine/binding.h"
#include "refhost/services/faults.h"
#include "refhost/services/memory.h"
#include "refhost/services/reports.h"
#include "tests/support/shapes.h"

namespace {

struct Case {
    const char* name;
    int depth;
    bool feather, invert, transform;
};

class MaskFaults : public testing::TestWithParam<Case> {
 protected:
    MaskFaults() : objects_(refhost::LiveEngineObjects()) {
        refhost::SetReportSink([](const refhost::Report&) { return 0; });
    }
    ~MaskFaults() override {
        refhost::DisarmFaults();
        refhost::SetReportSink({});
    }

    std::int32_t Render(const GW_ProgressInfo* progress = nullptr) {
        VRL_MaskParams params = PlainParams();
        if (GetParam().feather) params.feather_x = params.feather_y = 3 * 65536;
        params.invert = GetParam().invert;
        params.progress = progress;
        const M_Matrix3 matrix = {{{1, 0.25, 0}, {0, 1, 0}, {-3, -2, 1}}};
        return VRL_MaskWithShape(shape_.get(), &params, GetParam().transform ? &matrix : nullptr, &buffer_, nullptr);
    }

    void ExpectNothingLeftOver() const {
        ASSERT_EQ(refhost::AccountedBytes(), 0);
        ASSERT_EQ(refhost::LiveEngineObjects(), objects_);
        ASSERT_EQ(refhost::QuietErrorDepth(), 0);
    }

    std::unique_ptr<DY_Shape> shape_ = Blob(30, 8, 8, 7);  // more vertices than fit the record without heap blocks
    GW_UnoBuffer buffer_{16, 16, GetParam().depth};
    int objects_;
};

}  // namespace

TEST_P(MaskFaults, EveryFailingHostCallEndsTheRenderWithItsStatus) {
    constexpr int kStatus = 77;
    ASSERT_EQ(Render(), 0);
    int nth = 1;
    for (;; ++nth) {
        refhost::FailAnyHostCall(nth, kStatus);
        const std::int32_t status = Render();
        refhost::DisarmFaults();
        ExpectNothingLeftOver();
        if (!refhost::FaultStruck()) break;
        // An engine procedure's failure is an exception that the host translates; inside the purge loop the host tries again.
        ASSERT_THAT(status, testing::AnyOf(kStatus, -1, 0)) << nth;
        ASSERT_EQ(Render(), 0);
    }
    EXPECT_GT(nth, 30);  // the vertices alone are that many
    for (const auto call : {refhost::HostCall::kPurgeLoop, refhost::HostCall::kShapeGetBezPoints}) {
        refhost::FailHostCall(call, 2, kStatus);
        EXPECT_EQ(Render(), kStatus);
        ExpectNothingLeftOver();
    }
}

TEST_P(MaskFaults, EveryFailingAllocationEndsTheRenderWithoutALeak) {
    constexpr int kForGood = 1 << 30;
    ASSERT_EQ(Render(), 0);
    int nth = 1;
    for (;; ++nth) {
        refhost::FailAllocations(nth, kForGood);
        const std::int32_t status = Render();
        refhost::DisarmFaults();
        ExpectNothingLeftOver();
        if (!refhost::FaultStruck()) break;
        ASSERT_EQ(status, -4) << nth;
        refhost::FailAllocations(nth, 1);  // one failure: the purge loop gets over it
        const std::int32_t once = Render();
        refhost::DisarmFaults();
        ASSERT_THAT(once, testing::AnyOf(0, -4));
        ExpectNothingLeftOver();
    }
    EXPECT_GT(nth, 8);
    EXPECT_EQ(Render(), 0);
}

TEST_P(MaskFaults, AStopFromEitherCallbackIsTheStatusAtEveryStep) {
    static int polls_left;
    const auto abort = [](void*) -> std::int32_t { return --polls_left == 0 ? 23 : 0; };
    const auto progress = [](void*, std::int32_t, std::int32_t) -> std::int32_t { return --polls_left == 0 ? 23 : 0; };
    for (const GW_ProgressInfo& callbacks :
         {GW_ProgressInfo{nullptr, abort, nullptr}, GW_ProgressInfo{nullptr, nullptr, progress}}) {
        int polls = 1;
        for (;; ++polls) {
            polls_left = polls;
            const std::int32_t status = Render(&callbacks);
            ExpectNothingLeftOver();
            if (polls_left > 0) break;
            ASSERT_EQ(status, 23) << polls;
        }
        EXPECT_GT(polls, 16);  // every row, at the least
    }
}

INSTANTIATE_TEST_SUITE_P(Masks, MaskFaults,
                         testing::Values(Case{"plain", 8, false, false, false}, Case{"feathered", 8, true, false, false},
                                         Case{"inverted", 16, true, true, false}, Case{"transformed", 16, true, false, true}),
                         [](const auto& instance) { return instance.param.name; });
