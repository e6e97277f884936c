#include "tests/faults/export_calls.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <new>
#include <string>

#include "api/vrl.h"
#include "refhost/engine/binding.h"
#include "refhost/services/faults.h"
#include "refhost/services/memory.h"
#include "refhost/shape/feather_points.h"
#include "tests/support/shapes.h"
#include "tests/support/worlds.h"

namespace support {
namespace {

using Shapes = std::vector<boost::shared_ptr<DY_Shape>>;
using Arm = std::function<void()>;

constexpr std::int32_t kSide = 16;  // of buffers and layers, pixels
constexpr M_Matrix3 kSkewed = {{{1, 0.25, 0}, {0, 1.5, 0}, {-3, -2, 1}}};
constexpr M_Matrix3 kMirror = {{{-1, 0, 0}, {0, 1, 0}, {100, 5, 1}}};

struct Inputs {
    // More vertices than fit a path record without heap blocks.
    std::unique_ptr<DY_Shape> blob = Blob(30, 8, 8, 7), varying = Blob(6, 8, 8, 5), unknown = Rectangle(1, 1, 9, 9);
    std::unique_ptr<GW_World> picture = Speckled(20, 15), corner = Speckled(8, 6);

    Inputs() {
        refhost::SetFeatherPoints(*varying, {{0.5, 3}, {3, -2}});
        unknown->type = 1;
    }
    /// Two discs, one cut out of the other, and specks of four pixels.
    static std::unique_ptr<GW_World> Speckled(int width, int height) {
        std::string rows;
        for (int y = 0; y < height; ++y, rows += y < height ? " " : "") {
            for (int x = 0; x < width; ++x) {
                const auto is_in = [&](int cx, int cy, int r) { return (x - cx) * (x - cx) + (y - cy) * (y - cy) < r * r; };
                const bool is_speck = (x / 2 * 3 + y / 2 * 5) % 11 == 0;
                rows += (is_in(9, 7, 7) != is_in(11, 7, 4)) != is_speck ? '#' : '-';
            }
        }
        return Drawing(rows);
    }
};

const Inputs& Shared() {
    static const Inputs inputs;
    return inputs;
}

void Append(const M_LRect& rect, std::vector<float>& values) {
    for (const std::int32_t edge : {rect.left, rect.top, rect.right, rect.bottom}) values.push_back(static_cast<float>(edge));
}

void Append(const Shapes& shapes, std::vector<float>& values) {
    for (const auto& shape : shapes) {
        values.push_back(shape->IsOpen() ? 1 : 0);
        for (const WEX_Item item : ItemsOf(*shape)) values.insert(values.end(), {item.x, item.y});
    }
}

using ShapeOf = std::unique_ptr<DY_Shape> Inputs::*;

ExportCall IntoBuffer(const char* name, ShapeOf shape, int depth, VRL_MaskParams params, const M_Matrix3* transform) {
    return {name, true, [=](const GW_ProgressInfo* progress, const Arm& arm) {
                VRL_MaskParams mask = params;
                mask.progress = progress;
                GW_UnoBuffer buffer(kSide, kSide, depth);
                M_LRect touched = {};
                const DY_Shape* source = (Shared().*shape).get();
                Outcome outcome = {CodeOf([&] {
                                       arm();
                                       return VRL_MaskWithShape(source, &mask, transform, &buffer, &touched);
                                   }),
                                   {}};
                if (buffer.IsDeep()) {
                    outcome.result.assign(buffer.Row<GW_Pixel16>(0), buffer.Row<GW_Pixel16>(kSide));
                } else {
                    outcome.result.assign(buffer.Row<GW_Pixel8>(0), buffer.Row<GW_Pixel8>(kSide));
                }
                Append(touched, outcome.result);
                return outcome;
            }};
}

ExportCall IntoLayer(const char* name, ShapeOf shape, int depth, VRL_MaskParams params) {
    return {name, true, [=](const GW_ProgressInfo* progress, const Arm& arm) {
                VRL_MaskParams mask = params;
                mask.progress = progress;
                const std::unique_ptr<GW_World> world(GW_World::New(kSide, kSide, depth, 0));
                GW_LayerDef layer = {kSide, kSide, world.get()};
                constexpr M_LRect kUnwritten = {-7, -7, -7, -7};
                M_LRect touched = kUnwritten;
                const DY_Shape* source = (Shared().*shape).get();
                Outcome outcome = {CodeOf([&] {
                                       arm();
                                       return VRL_MaskWithWorld(source, &mask, &layer, &touched);
                                   }),
                                   {}};
                const auto* bytes = static_cast<const std::uint8_t*>(world->data);
                outcome.result.assign(bytes, bytes + world->row_bytes * kSide);
                EXPECT_TRUE(outcome.code == 0 || std::ranges::count(outcome.result, 0) == std::ssize(outcome.result))
                    << "a failed render must not be merged";
                Append(touched, outcome.result);
                return outcome;
            }};
}

/// What an export leaves of the outline it was at when it failed.
enum class OnFailure { kDropsOutline, kDeliversOutline };

/// An export that appends to a list of shapes, throwing when it fails.
ExportCall IntoList(const char* name, OnFailure on_failure, std::function<void(Shapes&)> work) {
    return {name, false, [on_failure, work = std::move(work)](const GW_ProgressInfo*, const Arm& arm) {
                Shapes shapes = {boost::shared_ptr<DY_Shape>(Rectangle(0, 0, 5, 4))};
                const auto before = shapes;
                Outcome outcome = {CodeOf([&] {
                                       arm();
                                       work(shapes);
                                       return 0;
                                   }),
                                   {}};
                EXPECT_TRUE(!shapes.empty() && shapes[0] == before[0]);
                for (const auto& shape : shapes) {
                    EXPECT_TRUE(shape && shape.use_count() == (shape == before[0] ? 2 : 1));
                    if (outcome.code != 0 && on_failure == OnFailure::kDeliversOutline && shape == shapes.back()) continue;
                    const std::int32_t points = (*shape->GetPoints())->count;
                    EXPECT_TRUE(points >= 3 && points % 3 == 0) << "a half-built shape of " << points;
                }
                Append(shapes, outcome.result);
                return outcome;
            }};
}

constexpr std::int32_t Fixed(double pixels) { return static_cast<std::int32_t>(pixels * 65536); }

std::vector<ExportCall> MakeExportCalls() {
    const VRL_MaskParams plain = {.quality = 1};
    const VRL_MaskParams grown = {.feather_x = Fixed(3), .feather_y = Fixed(2), .expansion = Fixed(1.5), .pixel_aspect = 1.5};
    const VRL_MaskParams inverted = {.feather_x = Fixed(1), .expansion = Fixed(-1), .invert = 1, .opacity = 50000, .quality = 1};
    const VRL_MaskParams clear = {.opacity = 0};
    VRL_AutoTraceParams trace = {.blur_radius = 1, .layer_transform = &kMirror, .minimum_area = 3};
    VRL_AutoTraceParams inverse_trace = {.invert = 1};
    using In = Inputs;
    return {
        IntoBuffer("plain8", &In::blob, 8, plain, nullptr),
        IntoBuffer("grown8", &In::blob, 8, grown, nullptr),
        IntoBuffer("inverted16", &In::blob, 16, inverted, nullptr),
        IntoBuffer("transformed16", &In::blob, 16, grown, &kSkewed),
        IntoBuffer("varying8", &In::varying, 8, grown, &kSkewed),
        IntoBuffer("varying16", &In::varying, 16, inverted, nullptr),
        IntoBuffer("clear8", &In::blob, 8, clear, nullptr),
        IntoBuffer("unknown16", &In::unknown, 16, plain, nullptr),
        IntoLayer("layer8", &In::blob, 8, plain),
        IntoLayer("layer_grown16", &In::blob, 16, grown),
        IntoLayer("layer_inverted8", &In::blob, 8, inverted),
        IntoLayer("layer_varying16", &In::varying, 16, grown),
        IntoLayer("layer_varying8", &In::varying, 8, inverted),
        IntoList("inset", OnFailure::kDeliversOutline,
                 [](Shapes& shapes) { VRL_InsetShape(*Shared().blob, true, 1, 1, shapes); }),
        IntoList("inset_join", OnFailure::kDeliversOutline,
                 [](Shapes& shapes) { VRL_InsetShapeJoin(*Shared().blob, true, -2, 1.5, kVRLJoinMiter, shapes); }),
        IntoList("trace", OnFailure::kDropsOutline,
                 [=](Shapes& shapes) { VRL_NewMasksFromWorld(Shared().picture.get(), &trace, shapes); }),
        // Its first pixel is black where the other's is white: the two number their colours differently.
        IntoList("trace_inverted", OnFailure::kDropsOutline,
                 [=](Shapes& shapes) { VRL_NewMasksFromWorld(Shared().corner.get(), &inverse_trace, shapes); }),
    };
}

}  // namespace

std::span<const ExportCall> ExportCalls() {
    static const std::vector<ExportCall> calls = MakeExportCalls();
    return calls;
}

const ExportCall& BirthCall() {
    static const ExportCall birth = {"birth", false, [](const GW_ProgressInfo*, const Arm& arm) -> Outcome {
                                         VRL_Death();
                                         const int code = CodeOf([&] {
                                             arm();
                                             VRL_Birth();
                                             return 0;
                                         });
                                         Outcome mask = ExportCalls()[0].Run();
                                         EXPECT_THAT(mask.code, testing::AnyOf(0, kThrewException));
                                         return code == 0 ? mask : Outcome{code, {}};
                                     }};
    return birth;
}

void ExpectNothingLeftOver(int objects) {
    EXPECT_EQ(refhost::AccountedBytes(), 0);
    EXPECT_EQ(refhost::LiveEngineObjects(), objects);
    EXPECT_EQ(refhost::QuietErrorDepth(), 0);
}

int CodeOf(const std::function<int()>& work) {
    int code = 0;
    try {
        code = work();
    } catch (int thrown) {
        code = thrown;
    } catch (const std::bad_alloc&) {
        code = kThrewNoMemory;
    } catch (const std::exception&) {
        code = kThrewException;
    }
    refhost::DisarmFaults();
    return code;
}

}  // namespace support
