// Arguments at and beyond the edge of what makes sense: first each odd value alone, then mixtures of them, others in every
// repetition with --gtest_shuffle --gtest_repeat.

#include <gmock/gmock.h>

#include <ctime>
#include <limits>
#include <random>
#include <utility>

#include "api/vrl.h"
#include "refhost/engine/binding.h"
#include "refhost/shape/feather_points.h"
#include "tests/faults/export_calls.h"
#include "tests/support/memory_peak.h"
#include "tests/support/shapes.h"
#include "tests/support/thrown_int.h"
#include "tests/support/worlds.h"

namespace {

template <class T>
constexpr T kInf = std::numeric_limits<T>::infinity();
template <class T>
constexpr T kNaN = std::numeric_limits<T>::quiet_NaN();
template <class T>
constexpr T kDenormal = std::numeric_limits<T>::denorm_min();
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();

/// Chooses the arguments of one call, the first of each list being the usual one.
class Chooser {
 public:
    /// All usual but one: the `odd`th odd value of all lists in turn.
    static Chooser OneOdd(int odd) { return Chooser(odd, 0); }
    /// Each at random, half of them usual.
    static Chooser Mixed(unsigned seed) { return Chooser(-1, seed); }

    template <class T>
    T Of(std::initializer_list<T> values) {
        const int odd_ones = static_cast<int>(values.size()) - 1;
        int choice = 0;
        if (odd_ < 0) {
            choice = random_() % 2 == 0 ? 0 : static_cast<int>(random_() % values.size());
        } else if (odd_ >= seen_ && odd_ < seen_ + odd_ones) {
            choice = odd_ - seen_ + 1;
        }
        seen_ += odd_ones;
        chosen_ += ' ' + std::to_string(choice);
        return values.begin()[choice];
    }
    bool PastTheLast() const { return odd_ >= seen_; }
    const std::string& Chosen() const { return chosen_; }

 private:
    Chooser(int odd, unsigned seed) : odd_(odd), random_(seed) {}

    int odd_, seen_ = 0;
    std::mt19937 random_;
    std::string chosen_;
};

class Hostile : public testing::Test {
 protected:
    /// `call` makes one call and expects what it should come to.
    void TryAll(unsigned mixtures, const std::function<void(Chooser&)>& call) {
        int calls = 0;
        const auto attempt = [&](Chooser chooser) {
            const std::clock_t start = std::clock();  // of the processor, by the clock on Windows
            call(chooser);
            EXPECT_LT(std::clock() - start, kMostSeconds * CLOCKS_PER_SEC) << chooser.Chosen();
            EXPECT_FALSE(HasFailure()) << chooser.Chosen();
            ++calls;
            return chooser.PastTheLast();
        };
        for (int odd = 0; !attempt(Chooser::OneOdd(odd)) && !HasFailure();) ++odd;
        const auto first_seed = static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()) * mixtures;
        for (unsigned i = 0; i < mixtures && !HasFailure(); ++i) attempt(Chooser::Mixed(first_seed + i));
        support::ExpectNothingLeftOver(objects_);
        RecordProperty("calls", calls);
    }
    /// The code of `work`, which takes no more than `bytes` of memory and what a small call needs. It gets no more than it
    /// would on a small machine.
    static int CodeWithin(std::int64_t bytes, const std::function<int()>& work) {
        constexpr std::int64_t kSmallCall = std::int64_t{48} << 20, kSmallMachine = std::int64_t{256} << 20;
        bytes += kSmallCall;
        int code = 0;
        EXPECT_LE(support::MemoryPeakOf([&] { code = support::CodeOf(work); }, std::min(bytes, kSmallMachine)), bytes);
        return code;
    }

    static constexpr int kMostSeconds = 120;  // under sanitizers, on all threads, or on a busy machine by the clock
    support::QuietReports quiet_;
    int objects_ = refhost::LiveEngineObjects();
};

struct Size {
    std::int32_t width, height;
};

Size AnySize(Chooser& choose) {
    return choose.Of<Size>({{16, 16}, {0, 0}, {0, 16}, {16, 0}, {1, 1}, {32767, 1}, {1, 32767}, {65, 5}});
}

std::unique_ptr<DY_Shape> AnyShape(Chooser& choose) {
    std::vector<WEX_Item> items = ItemsOf(*Blob(8, 8, 8, 6));
    items.resize(choose.Of<std::size_t>({items.size(), 0, 3, 6, 4, 5, items.size() - 2}));
    constexpr float kAsIs = 0.125F;
    for (const std::size_t i : {std::size_t{0}, std::size_t{1}, std::size_t{4}}) {
        const float value = choose.Of<float>({kAsIs, kNaN<float>, kInf<float>, 1e30F, -3e38F, 1e9F, -40000, kDenormal<float>});
        if (value != kAsIs && i < items.size()) (i % 2 == 0 ? items[i].x : items[i].y) = value;
    }
    auto shape = ShapeOfItems(items, choose.Of({false, true}));
    const auto radius = choose.Of<float>({0, 4, -4, 1e30F, -1e30F, kNaN<float>, kInf<float>, kDenormal<float>, 1e9F, 2000});
    const auto position = choose.Of<double>({1.5, 0, -1, 8, 1e300, kNaN<double>, kDenormal<double>, 7.9999999999});
    if (radius != 0) refhost::SetFeatherPoints(*shape, {{5, 2}, {position, radius}, {position, -radius}, {2.5, -1}});
    return shape;
}

M_Matrix3 AnyMatrix(Chooser& choose) {
    constexpr double kTurn = 0.6;
    return choose.Of<M_Matrix3>({{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
                                 {{{-1, kTurn, 0}, {0, 1, 0}, {16, 0, 1}}},
                                 {{{0, 0, 0}, {0, 0, 0}, {5, 5, 1}}},
                                 {{{1, 2, 0}, {2, 4, 0}, {0, 0, 1}}},
                                 {{{1e30, 0, 0}, {0, 1e30, 0}, {0, 0, 1}}},
                                 {{{1e300, 1e300, 0}, {-1e300, 1e300, 0}, {0, 0, 1}}},
                                 {{{1e-30, 0, 0}, {0, 1e-30, 0}, {8, 8, 1}}},
                                 {{{1, 0, 0}, {0, 1, 0}, {1e9, -1e9, 1}}},
                                 {{{kNaN<double>, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
                                 {{{kInf<double>, 0, 0}, {0, kInf<double>, 0}, {0, 0, 1}}},
                                 {{{1000, 0, 0}, {0, 0.001, 0}, {0, 0, 1}}}});
}

VRL_MaskParams AnyParams(Chooser& choose) {
    const auto feather = [&] { return choose.Of({0, 3 << 16, 1, -1, -65536, 0x7FFF, 40 << 16, 300 << 16, kMost, kLeast}); };
    VRL_MaskParams params;
    params.feather_x = feather();
    params.feather_y = feather();
    params.expansion = choose.Of({0, 1 << 16, -1 << 16, 1, -1, 5000 << 16, kMost, kLeast});
    params.pixel_aspect =
        choose.Of<double>({0, 1, 2, -1, 1e-3, 1e30, 1e-30, 1e300, kDenormal<double>, kNaN<double>, kInf<double>});
    params.invert = choose.Of<std::uint8_t>({0, 1, 255});
    params.opacity = choose.Of({65536, 0, 1, 128, 65537, -1, -65536, 200000, kMost, kLeast});
    params.variable_feather_option = choose.Of<std::uint8_t>({0, 1, 255});
    params.quality = choose.Of<std::uint8_t>({0, 1, 2, 255});
    return params;
}

/// What a mask may take: the picture, the rows above and below it that a wide feather looks at, and for a feather that varies
/// as well one number for each pixel looked at.
std::int64_t BytesFor(std::int32_t width, std::int32_t height, const VRL_MaskParams& params, const DY_Shape& shape) {
    constexpr std::int64_t kPixelBytes = 64, kSampleBytes = 2;
    const auto margins = [](std::int32_t feather) {
        return 4 * std::max((std::int64_t{feather} + 0xFFFF) >> 16, std::int64_t{0});
    };
    const std::int64_t rows = height + margins(params.feather_y);
    const std::int64_t numbers = shape.GetFeatherPtCount(0) == 0 ? 0 : rows * (width + margins(params.feather_x));
    return kPixelBytes * width * height + kSampleBytes * width * rows + std::min(numbers, std::int64_t{kMost}) * 4;
}

template <class P>
void ExpectSound(const GW_UnoBuffer& buffer, const M_LRect& touched) {
    for (const P sample : SamplesOf<P>(buffer)) ASSERT_LE(sample, SampleTraits<P>::kMax);
    ASSERT_TRUE(touched.left >= 0 && touched.top >= 0 && touched.right <= buffer.width && touched.bottom <= buffer.height);
}

}  // namespace

TEST_F(Hostile, MissingArgumentsAreRefusedAndReported) {
    constexpr int kMissing = 3;
    const auto shape = Blob(8, 8, 8, 6);
    const VRL_MaskParams params;
    const VRL_MaskParams clear = {.opacity = 0};
    GW_UnoBuffer buffer(16, 16, 8), negative(0, 0, 8), hollow(0, 0, 8);
    negative.width = negative.height = -16;
    hollow.width = hollow.height = 16;
    void** const samples = std::exchange(hollow.data, nullptr);
    const auto world = Drawing("#- -#");
    GW_LayerDef layer = {2, 2, world.get()}, empty_layer = {2, 2, nullptr};

    EXPECT_EQ(VRL_MaskWithShape(nullptr, &params, nullptr, &buffer, nullptr), kMissing);
    EXPECT_EQ(VRL_MaskWithShape(shape.get(), nullptr, nullptr, &buffer, nullptr), kMissing);
    for (GW_UnoBuffer* bad : {static_cast<GW_UnoBuffer*>(nullptr), &negative, &hollow}) {
        EXPECT_EQ(VRL_MaskWithShape(shape.get(), &params, nullptr, bad, nullptr), kMissing);
    }
    EXPECT_EQ(VRL_MaskWithWorld(nullptr, &params, &layer, nullptr), kMissing);
    EXPECT_EQ(VRL_MaskWithWorld(shape.get(), nullptr, &layer, nullptr), kMissing);
    EXPECT_EQ(VRL_MaskWithWorld(shape.get(), &params, nullptr, nullptr), kMissing);
    EXPECT_NE(VRL_MaskWithWorld(shape.get(), &params, &empty_layer, nullptr), 0);
    EXPECT_EQ(VRL_MaskWithShape(nullptr, &clear, nullptr, &buffer, nullptr), 0) << "a clear mask looks at no shape";

    std::vector<boost::shared_ptr<DY_Shape>> shapes;
    const VRL_AutoTraceParams trace;
    PaddedWorld hollow_world(2, 2, 0);
    hollow_world.data = nullptr;
    EXPECT_EQ(ThrownInt([&] { VRL_NewMasksFromWorld(nullptr, &trace, shapes); }), kMissing);
    EXPECT_EQ(ThrownInt([&] { VRL_NewMasksFromWorld(world.get(), nullptr, shapes); }), kMissing);
    EXPECT_EQ(ThrownInt([&] { VRL_NewMasksFromWorld(&hollow_world, &trace, shapes); }), kMissing);
    EXPECT_EQ(refhost::TakeReports().size(), 12U);
    hollow.data = samples;
}

TEST_F(Hostile, MasksEndInASoundBufferOrAStatus) {
    TryAll(100, [](Chooser& choose) {
        const VRL_MaskParams params = AnyParams(choose);
        const auto shape = AnyShape(choose);
        const M_Matrix3 matrix = AnyMatrix(choose);
        const auto [width, height] = AnySize(choose);
        const int depth = choose.Of({8, 16, 0});
        const bool has_matrix = choose.Of({true, false});
        std::vector<GW_Pixel8> first;
        for (const int garbage : {0x55, 0x2A}) {
            GW_UnoBuffer buffer(width, height, depth);
            std::fill_n(buffer.Row<std::uint8_t>(0), width * height * (buffer.IsDeep() ? 2 : 1), garbage);
            M_LRect touched = {};
            const int code = CodeWithin(BytesFor(width, height, params, *shape), [&] {
                return VRL_MaskWithShape(shape.get(), &params, has_matrix ? &matrix : nullptr, &buffer, &touched);
            });
            if (code != 0) {
                ASSERT_THAT(code, testing::AnyOf(-1, 3, -3, -4));
                return;
            }
            if (params.opacity >= 0 && params.opacity <= 65536) {
                buffer.IsDeep() ? ExpectSound<GW_Pixel16>(buffer, touched) : ExpectSound<GW_Pixel8>(buffer, touched);
            }
            const auto* bytes = buffer.Row<GW_Pixel8>(0);
            const std::vector<GW_Pixel8> samples(bytes, bytes + width * height * (buffer.IsDeep() ? 2 : 1));
            ASSERT_TRUE(first.empty() || samples == first) << "all samples are written, whatever the buffer held";
            first = samples;
        }
    });
}

TEST_F(Hostile, LayersAreMergedOrLeftAsTheyAre) {
    TryAll(60, [](Chooser& choose) {
        const auto [width, height] = AnySize(choose);
        PaddedWorld world(width, height, choose.Of({0, 4, 64}), choose.Of({8, 16}));
        GW_LayerDef layer = {width, height, &world};
        const VRL_MaskParams params = AnyParams(choose);
        const auto shape = AnyShape(choose);
        const std::vector<std::uint8_t> before = world.bytes;
        const int code = CodeWithin(BytesFor(width, height, params, *shape),
                                    [&] { return VRL_MaskWithWorld(shape.get(), &params, &layer, nullptr); });
        ASSERT_THAT(code, testing::AnyOf(0, -1, 3, -3, -4));
        ASSERT_TRUE(code == 0 || world.bytes == before);
        ASSERT_TRUE(world.PaddingUntouched());
    });
}

TEST_F(Hostile, InsetsAppendWholeShapesOrThrow) {
    TryAll(500, [](Chooser& choose) {
        const auto shape = AnyShape(choose);
        const auto distance =
            choose.Of<double>({1, 0, -1, 1e-12, -1e-6, 50, -1000, 1e6, -1e6, 1e300, kNaN<double>, kInf<double>, -kInf<double>});
        const auto aspect = choose.Of<double>({1, 2, 0, -1, 1e-3, 1e6, 1e30, kDenormal<double>, kNaN<double>, kInf<double>});
        const auto join = static_cast<VRL_Join>(choose.Of<std::uint32_t>({2, 1, 3, 0, 4, ~0U}));
        std::vector<boost::shared_ptr<DY_Shape>> shapes;
        CodeWithin(0, [&] {
            VRL_InsetShapeJoin(*shape, true, distance, aspect, join, shapes);
            return 0;
        });
        for (const auto& piece : shapes) ASSERT_EQ((*piece->GetPoints())->count % 3, 0);
    });
}

TEST_F(Hostile, TracesAppendClosedShapesOrThrow) {
    TryAll(100, [](Chooser& choose) {
        const auto [width, height] = AnySize(choose);
        PaddedWorld world(width, height, choose.Of({0, 1, 7, 4096}));
        for (std::int32_t i = 0; i < width * height; i += 1 + i % 7) {
            const auto level = static_cast<std::uint8_t>(37 * i);
            world.Set(i % width, i / width, {255, level, 200, static_cast<std::uint8_t>(255 - level)});
        }
        const M_Matrix3 matrix = AnyMatrix(choose);
        VRL_AutoTraceParams params;
        params.channel = choose.Of({1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 10, -1, kMost, kLeast});
        params.tolerance = choose.Of<float>({1, 0, -1, 1e-30F, 1e30F, kNaN<float>, kInf<float>, kDenormal<float>});
        params.threshold = choose.Of<float>({50, 0, 100, -1, 101, 1e30F, kNaN<float>, kInf<float>, -kInf<float>});
        params.blur_radius =
            choose.Of<float>({0, 1, -1, 1000, 1e30F, -1e30F, kNaN<float>, kInf<float>, -kInf<float>, kDenormal<float>});
        params.invert = choose.Of<std::uint8_t>({0, 1, 255});
        params.minimum_area = choose.Of<float>({0, 5, 0.5F, -1, 1e6F, 1e30F, -1e30F, kNaN<float>, kInf<float>});
        params.corner_angle = choose.Of<float>({40, 0, 50, 100, -1, 101, 1e30F, kNaN<float>, kInf<float>, kDenormal<float>});
        params.layer_transform = choose.Of({false, true}) ? &matrix : nullptr;
        std::vector<boost::shared_ptr<DY_Shape>> shapes;
        constexpr std::int64_t kNoisyPixelBytes = 4096;  // each pixel may be a region, with an outline of its own
        CodeWithin(kNoisyPixelBytes * width * height, [&] {
            VRL_NewMasksFromWorld(&world, &params, shapes);
            return 0;
        });
        for (const auto& shape : shapes) {
            const std::int32_t points = (*shape->GetPoints())->count;
            ASSERT_TRUE(!shape->IsOpen() && points >= 3 && points % 3 == 0);
        }
    });
}
