// What passes between the tool's program and the two libraries it loads, where the other tests have all in one program.

#include <gmock/gmock.h>

#include <new>

#include "api/vrl.h"
#include "host/nub_error.h"
#include "refhost/engine/binding.h"
#include "refhost/refhost.h"
#include "refhost/services/faults.h"
#include "refhost/services/reports.h"

namespace {

const NUBErrorObject* NoMemoryForPainter(NUBContainer**, std::int32_t, const M_Vector2T<float>*, const PIVPointType*,
                                         std::int32_t, std::int32_t, const PIVMatrix*, const PIVDeviceRect*) {
    static constexpr NUBErrorObject kOutOfMemory = {"QEL", 1, "out of memory"};
    return &kOutOfMemory;
}

}  // namespace

TEST(SharedLibrary, ExceptionsLeaveItAsTheTypesTheyAre) {
    refhost::Initialize();
    refhost::SetReportSink([](const refhost::Report&) { return 0; });
    refhost::FailHostCall(refhost::HostCall::kGetNUBAddressProc, 1, 31);
    EXPECT_THROW(VRL_Birth(), int);
    refhost::DisarmFaults();

    refhost::OverrideProcedure("GRXNewPathInterface", nullptr, nullptr);
    try {
        VRL_Birth();
        ADD_FAILURE();
    } catch (const NUB_T_MT::CNUBError& error) {
        EXPECT_STREQ(error.what(), "Missing Interface");
    }
    refhost::RestoreProcedures();

    refhost::OverrideProcedure("TAV_BezierPathRasterPainterInterface", "NewFill", reinterpret_cast<void*>(&NoMemoryForPainter));
    EXPECT_THROW(VRL_Birth(), std::bad_alloc);
    refhost::RestoreProcedures();

    VRL_Birth();
    DY_Shape diamond(kShapeTypeBezier, nullptr);
    constexpr WEX_Item kCorners[] = {{32, 2}, {62, 16}, {32, 30}, {2, 16}};
    for (int i = 0; i < 12; ++i) WEX_Insert(&kCorners[(i + 1) / 3 % 4], -1, diamond.GetPoints());
    std::vector<boost::shared_ptr<DY_Shape>> shapes;
    VRL_InsetShape(diamond, true, 2, 1, shapes);
    EXPECT_EQ(shapes.size(), 1U);
    VRL_Death();
    refhost::SetReportSink(nullptr);
    EXPECT_STREQ(VRL_G_zref->module, "VRL");
}
