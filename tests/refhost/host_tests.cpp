#include <gmock/gmock.h>

#include <thread>

#include "base/errors.h"
#include "host/scratch_buffer.h"
#include "host/services.h"
#include "refhost/services/memory.h"
#include "tests/support/quiet_reports.h"
#include "tests/support/shapes.h"
#include "tests/support/thrown_int.h"

using testing::ElementsAre;
using testing::ElementsAreArray;

TEST(ShapeModel, ListsEditAtBothEndsAndRefuseWhatIsNotThere) {
    const auto shape = Rectangle(0, 0, 2, 1);
    WEX_Head** list = shape->GetPoints();
    const WEX_Item item = {9, 9};
    EXPECT_EQ(WEX_Insert(&item, 0, list), 0);
    EXPECT_EQ(ItemsOf(*shape).front(), item);
    EXPECT_EQ((*list)->count, 13);
    EXPECT_EQ(WEX_Remove(0, list, 0, 0), 0);
    EXPECT_EQ(WEX_Remove(-1, list, 0, 0), 0);
    EXPECT_EQ((*list)->count, 11);
    WEX_Item read = {};
    const WEX_Item* address = nullptr;
    for (const int index : {-2, 12}) {
        EXPECT_NE(WEX_Insert(&item, index, list), 0);
        EXPECT_NE(WEX_Remove(index, list, 0, 0), 0);
        EXPECT_NE(WEX_GetItem(list, index, &read), 0);
        EXPECT_NE(WEX_GetConstAddress(list, index, &address), 0);
    }
    const std::unique_ptr<DY_Shape> clone(shape->Clone());
    EXPECT_EQ(WEX_Remove(-1, list, 0, 0), 0);
    EXPECT_EQ((*clone->GetPoints())->count, 11);
}

TEST(ShapeModel, DirectionOneRunsClockwiseAndKeepsTheFirstVertex) {
    // A bulging leaf whose chord has no area: only its curves tell the direction.
    const std::vector<WEX_Item> leaf = {{0, 0}, {1, 4}, {9, 4}, {10, 0}, {9, -4}, {1, -4}};
    const auto shape = ShapeOfItems(leaf);
    ASSERT_EQ(DY_SetPolyDir(1, shape.get()), 0);
    const std::vector<WEX_Item> clockwise = {leaf[0], leaf[5], leaf[4], leaf[3], leaf[2], leaf[1]};
    EXPECT_THAT(ItemsOf(*shape), ElementsAreArray(clockwise));
    ASSERT_EQ(DY_SetPolyDir(1, shape.get()), 0);
    EXPECT_THAT(ItemsOf(*shape), ElementsAreArray(clockwise));
    ASSERT_EQ(DY_SetPolyDir(0, shape.get()), 0);
    EXPECT_THAT(ItemsOf(*shape), ElementsAreArray(leaf));

    const auto flat = Polygon({{0, 0}, {5, 0}});
    const auto before = ItemsOf(*flat);
    ASSERT_EQ(DY_SetPolyDir(1, flat.get()), 0);
    EXPECT_THAT(ItemsOf(*flat), ElementsAreArray(before));
    EXPECT_EQ(DY_SetPolyDir(1, ShapeOfItems({}).get()), 0);
}

TEST(Services, QuietReportsAreLoggedButNotShown) {
    std::vector<std::string> shown;
    refhost::SetReportSink([&](const refhost::Report& report) {
        shown.push_back(report.text);
        return 3;
    });
    refhost::TakeReports();
    EXPECT_EQ(YQp_ReportErrString(0, 8, "loud"), 3);
    YQ_StartQuietErrorsOnCurrentThread(0);
    EXPECT_EQ(YQp_ReportErrString(0, 8, "quiet"), 0);
    std::thread([] { YQp_ReportErrString(0, 8, "elsewhere"); }).join();
    YQ_EndQuietErrorsOnCurrentThread();
    EXPECT_EQ(YQ_TranslateAndReportException(std::bad_alloc()), -4);
    EXPECT_EQ(YQ_TranslateAndReportException(QELException("too large")), -1);
    refhost::SetReportSink({});
    EXPECT_THAT(shown, ElementsAre("loud", "elsewhere", std::bad_alloc().what(), "too large"));
    EXPECT_EQ(refhost::TakeReports().size(), 5U);
}

TEST(ScratchBuffer, IsTakenThroughThePurgeLoopAndAccountedExactly) {
    const support::QuietReports quiet;
    std::vector<std::string> shown;
    refhost::SetReportSink([&](const refhost::Report& report) {
        shown.push_back(report.text);
        return 0;
    });
    {
        VRLp_ScratchBuffer<GW_Pixel16> buffer;
        buffer.Take(100);
        EXPECT_EQ(refhost::AccountedBytes(), 200);
        buffer.Take(7);  // a refill gives the old block back
        EXPECT_EQ(refhost::AccountedBytes(), 14);

        refhost::FailAllocations(1, 1);  // the second attempt succeeds
        buffer.Take(50);
        EXPECT_EQ(refhost::AccountedBytes(), 100);
        EXPECT_TRUE(refhost::FaultStruck());
        EXPECT_THAT(shown, testing::IsEmpty()) << "nothing that a later attempt repairs is shown";
        refhost::FailAllocations(1, 1000);
        const int status = ThrownInt([&] { buffer.Take(10); });
        refhost::DisarmFaults();
        EXPECT_EQ(status, -4);
        EXPECT_EQ(refhost::AccountedBytes(), 100);
        refhost::FailHostCall(refhost::HostCall::kStartQuietErrors, 1, 8);
        buffer.Take(20);  // a status of the first attempt is no reason to give up
        refhost::DisarmFaults();
        EXPECT_EQ(refhost::AccountedBytes(), 40);
        EXPECT_EQ(refhost::QuietErrorDepth(), 0);
    }
    EXPECT_EQ(refhost::AccountedBytes(), 0);
    EXPECT_EQ(YQ_PurgeLoop(
                  1, [](void*) { return 5; }, nullptr, 0),
              -4);
    EXPECT_THAT(shown, ElementsAre(std::bad_alloc().what())) << "what no attempt repairs is shown once";
}
