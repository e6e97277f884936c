#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "api/vrl.h"
#include "geometry/mask_path.h"
#include "geometry/offset_path.h"
#include "host/engine_binding.h"
#include "host/nub_error.h"
#include "refhost/engine/binding.h"
#include "refhost/services/faults.h"
#include "tests/support/quiet_reports.h"
#include "tests/support/shapes.h"
#include "tests/support/thrown_int.h"

using testing::ElementsAre;

namespace {

struct OffsetCall {
    std::vector<int> fixed;  // the arguments that never change, in order
    void* refcon;
    float distance, miter_limit, flatness, last;
    std::uint32_t join;
    NUBProgressObject* progress;
};
std::vector<OffsetCall>* g_calls = nullptr;  // where calls are noted, if anywhere
GRXOffsetPathProc g_engine_offset = nullptr;

const NUBErrorObject* RecordOffset(GRXOffsetCallback callback, void* none, void* refcon, std::int32_t entries,
                                   const M_Vector2T<float>* points, const PIVPointType* operators, std::int32_t zero1,
                                   float distance, std::int32_t zero2, std::uint32_t join, float miter_limit, std::int32_t one1,
                                   std::int32_t zero3, std::int32_t zero4, std::int32_t one2, float flatness, std::int32_t zero5,
                                   NUBProgressObject* progress, float last) {
    if (g_calls != nullptr) {
        g_calls->push_back({{none != nullptr, zero1, zero2, one1, zero3, zero4, one2, zero5},
                            refcon,
                            distance,
                            miter_limit,
                            flatness,
                            last,
                            join,
                            progress});
    }
    return g_engine_offset(callback, none, refcon, entries, points, operators, zero1, distance, zero2, join, miter_limit, one1,
                           zero3, zero4, one2, flatness, zero5, progress, last);
}

struct NotedCalls : std::vector<OffsetCall> {
    NotedCalls() { g_calls = this; }
    ~NotedCalls() { g_calls = nullptr; }
};

// The library looks the procedure up once for the life of the process, so the recorder takes its place before the first test.
class RecordedOffsets : public testing::Environment {
    void SetUp() override {
        NUBAddressProc proc = nullptr;
        HOB_GetNUBAddressProc(&proc);
        g_engine_offset =
            reinterpret_cast<GRXOffsetPathProc>(proc("GRXOffsetPathInterface", "GetOffsetPath", "GRXOffsetPathGetOffsetPathV4"));
        refhost::OverrideProcedure("GRXOffsetPathInterface", "GetOffsetPath", reinterpret_cast<void*>(&RecordOffset));
        NUB_T_MT::StartBinding(proc);
        NUB_T_MT::GetOffsetPath();
        refhost::RestoreProcedures();
    }
};
const auto* const g_recorded = testing::AddGlobalTestEnvironment(new RecordedOffsets);

VRLp_PathBounds BoundsWith(const DY_Shape& shape, double expansion, double aspect, const M_Matrix3* transform) {
    CGRXPath path;
    VRLp_PathBounds bounds = {};
    VRLp_MakeMaskPath(shape, true, expansion, aspect, transform, path, bounds);
    return bounds;
}

void ExpectBounds(const VRLp_PathBounds& b, float left, float top, float right, float bottom) {
    constexpr float kTolerance = 0.02F;  // pixels
    EXPECT_NEAR(b.left, left, kTolerance);
    EXPECT_NEAR(b.top, top, kTolerance);
    EXPECT_NEAR(b.right, right, kTolerance);
    EXPECT_NEAR(b.bottom, bottom, kTolerance);
}

using Shapes = std::vector<boost::shared_ptr<DY_Shape>>;

}  // namespace

TEST(OffsetPath, HandsTheEngineJoinDistanceAndItsFixedArguments) {
    struct Expected {
        std::uint32_t join, code;
        float miter_limit;
    };
    NotedCalls calls;
    for (const Expected expected : {Expected{1, 0, 4}, {2, 1, 1}, {3, 2, 1}, {0, 1, 1}, {7, 1, 1}}) {
        calls.clear();
        CGRXPath path;
        EXPECT_EQ(VRLp_OffsetShapePath(*Rectangle(0, 0, 50, 50), false, 2.5, 1, VRL_Join(expected.join), path), 0);
        ASSERT_EQ(calls.size(), 1U);
        EXPECT_EQ(calls[0].join, expected.code);
        EXPECT_EQ(calls[0].miter_limit, expected.miter_limit);
        EXPECT_EQ(calls[0].distance, 2.5F);
        EXPECT_THAT(calls[0].fixed, ElementsAre(0, 0, 0, 1, 0, 0, 1, 0));
        EXPECT_EQ(calls[0].flatness, 0.5F);
        EXPECT_EQ(calls[0].last, -1.0F);
        EXPECT_NE(calls[0].progress, nullptr);
    }
}

TEST(OffsetPath, ExpansionComesBeforeTheTransformAndKnowsThePixelAspect) {
    const auto rectangle = Rectangle(0, 0, 100, 50);
    ExpectBounds(BoundsWith(*rectangle, -3, 2, nullptr), 6, 3, 94, 47);
    ExpectBounds(BoundsWith(*rectangle, 3, 0.5, nullptr), -1.5F, -3, 101.5F, 53);
    const M_Matrix3 scaled = {{{2, 0, 0}, {0, 3, 0}, {10, 20, 1}}};
    ExpectBounds(BoundsWith(*rectangle, 3, 1, &scaled), 4, 11, 216, 179);
    ExpectBounds(BoundsWith(*rectangle, -26, 1, &scaled), 0, 0, 0, 0);  // nothing left

    NotedCalls calls;
    for (const double tiny : {5e-13, -5e-13, 0.0}) BoundsWith(*rectangle, tiny, 1, nullptr);
    EXPECT_TRUE(calls.empty());
    for (const double enough : {1e-12, -1e-12}) BoundsWith(*rectangle, enough, 1, nullptr);
    EXPECT_EQ(calls.size(), 2U);
}

TEST(OffsetPath, AsksTheHostForNothingItDoesNotNeed) {
    const auto rectangle = Rectangle(0, 0, 100, 50);
    const M_Matrix3 scaled = {{{2, 0, 0}, {0, 3, 0}, {10, 20, 1}}};
    const auto asks = [&](refhost::HostCall call, double expansion, double aspect, const M_Matrix3* transform) {
        refhost::FailHostCall(call, 1, 9);
        const int thrown = ThrownInt([&] { BoundsWith(*rectangle, expansion, aspect, transform); });
        refhost::DisarmFaults();
        return thrown == 9;
    };
    // The first point's address: of a copy that was moved, not of the shape as given.
    EXPECT_FALSE(asks(refhost::HostCall::kListGetConstAddress, 0, 1, nullptr));
    EXPECT_TRUE(asks(refhost::HostCall::kListGetConstAddress, 0, 1, &scaled));
    // A pixel aspect that is 1 but for the last bits of a float scales nothing.
    EXPECT_FALSE(asks(refhost::HostCall::kScaleMatrix, 3, 1 + 5e-7, nullptr));
    EXPECT_TRUE(asks(refhost::HostCall::kScaleMatrix, 3, 1 + 5e-6, nullptr));
}

TEST(InsetShape, PositiveDistancesShrinkAndPiecesAreAppended) {
    Shapes shapes = {boost::shared_ptr<DY_Shape>(new DY_Shape(kShapeTypeBezier, nullptr))};
    const boost::shared_ptr<DY_Shape> kept = shapes[0];
    VRL_InsetShape(*Rectangle(0, 0, 20, 10), true, 2, 1, shapes);
    ASSERT_EQ(shapes.size(), 2U);
    EXPECT_EQ(shapes[0], kept);
    EXPECT_FALSE(shapes[1]->IsOpen());
    EXPECT_EQ((*shapes[1]->GetPoints())->count, 12);
    EXPECT_NEAR(std::abs(AreaOfItems(*shapes[1])), 16 * 6, 0.5);

    VRL_InsetShape(*Rectangle(0, 0, 20, 10), true, 6, 1, shapes);
    EXPECT_EQ(shapes.size(), 2U);  // nothing left, nothing appended

    const support::QuietReports quiet;
    constexpr double kInfinity = std::numeric_limits<double>::infinity(), kNaN = std::numeric_limits<double>::quiet_NaN();
    for (const double aspect : {0.0, kInfinity, kNaN, 1e300, 1e-300}) {
        EXPECT_EQ(ThrownInt([&] { VRL_InsetShape(*Rectangle(0, 0, 20, 10), true, 2, aspect, shapes); }), 3) << aspect;
        VRL_MaskParams params = PlainParams();
        params.pixel_aspect = aspect;
        GW_UnoBuffer buffer(8, 8, 8);
        const bool is_float = std::abs(aspect) < 1;  // one of next to nothing counts as not set
        EXPECT_EQ(VRL_MaskWithShape(Rectangle(0, 0, 5, 5).get(), &params, nullptr, &buffer, nullptr), is_float ? 0 : 3) << aspect;
    }
    for (const double distance : {kInfinity, -kInfinity, kNaN, 1e300, -1e10}) {
        EXPECT_THROW(VRL_InsetShape(*Rectangle(0, 0, 20, 10), true, distance, 1, shapes), NUB_T_MT::CNUBError) << distance;
    }
    EXPECT_EQ(shapes.size(), 2U);
}
