#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "api/vrl.h"
#include "host/parallel.h"
#include "refhost/image/parallel_iteration.h"
#include "tests/support/shapes.h"

namespace {

// A layer whose pixels all start with the given alpha.
template <class P>
struct Layer {
    Layer(int width, int height, P alpha)
        : world(GW_World::New(width, height, kDepthOf<P>, 0)), definition{width, height, world.get()} {
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) Pixel(x, y)[0] = alpha;
    }
    P* Pixel(int x, int y) {
        return reinterpret_cast<P*>(static_cast<std::uint8_t*>(world->data) + y * world->row_bytes) + 4 * x;
    }

    std::unique_ptr<GW_World> world;
    GW_LayerDef definition;
};

}  // namespace

template <class P>
class MaskWithWorld : public testing::Test {};
using SampleTypes = testing::Types<GW_Pixel8, GW_Pixel16>;
TYPED_TEST_SUITE(MaskWithWorld, SampleTypes);

TYPED_TEST(MaskWithWorld, MergesTheMaskIntoAlphaInsideTheTouchedRectangle) {
    constexpr int kMax = SampleTraits<TypeParam>::kMax;
    Layer<TypeParam> layer(8, 6, kMax / 5);
    const auto shape = Rectangle(1, 1, 4.5F, 4);
    VRL_MaskParams params = PlainParams();
    M_LRect touched = {};
    ASSERT_EQ(VRL_MaskWithWorld(shape.get(), &params, &layer.definition, &touched), 0);
    EXPECT_EQ(touched, (M_LRect{1, 1, 5, 4}));
    EXPECT_EQ(layer.Pixel(2, 2)[0], kMax);
    EXPECT_EQ(layer.Pixel(2, 2)[1], 0);  // colours stay
    EXPECT_EQ(layer.Pixel(0, 0)[0], kMax / 5);
    const double half = kMax / 5 + (kMax - kMax / 5) * 128.0 / 255;
    EXPECT_NEAR(layer.Pixel(4, 2)[0], half, 0.5);

    params.invert = 1;
    params.opacity = 32768;
    ASSERT_EQ(VRL_MaskWithWorld(shape.get(), &params, &layer.definition, &touched), 0);
    EXPECT_EQ(touched, (M_LRect{0, 0, 8, 6}));
    EXPECT_NEAR(layer.Pixel(7, 5)[0], kMax / 5 + (kMax - kMax / 5) * 128.0 / 255, 0.5);

    params.opacity = 0;
    ASSERT_EQ(VRL_MaskWithWorld(shape.get(), &params, &layer.definition, nullptr), 0);
    EXPECT_EQ(layer.Pixel(2, 2)[0], kMax);
}

TEST(ParallelIteration, EveryIndexRunsOnceTheCallerIsZeroAndTheFirstStatusStops) {
    for (const int threads : {1, 2, 8}) {
        refhost::SetThreadCount(threads);
        struct Seen {
            std::thread::id caller = std::this_thread::get_id();
            std::vector<std::atomic<int>> runs = std::vector<std::atomic<int>>(1000);
            std::atomic<bool> wrong{false};
        } seen;
        for (int round = 0; round < 20; ++round) {
            const int status = GW_IterateGeneric(1000, &seen, [](void* context, std::int32_t thread, std::int32_t index) -> int {
                auto& s = *static_cast<Seen*>(context);
                if ((thread == 0) != (std::this_thread::get_id() == s.caller)) s.wrong = true;
                ++s.runs[static_cast<std::size_t>(index)];
                return 0;
            });
            ASSERT_EQ(status, 0);
        }
        EXPECT_FALSE(seen.wrong);
        for (const auto& runs : seen.runs) ASSERT_EQ(runs, 20);

        std::atomic<int> started{0};
        EXPECT_EQ(GW_IterateGeneric(1000000, &started,
                                    [](void* context, std::int32_t, std::int32_t index) -> int {
                                        ++*static_cast<std::atomic<int>*>(context);
                                        return index == 5 ? 77 : 0;
                                    }),
                  77);
        EXPECT_LT(started, 1000000);
        EXPECT_EQ(GW_IterateGeneric(3, nullptr, [](void*, std::int32_t, std::int32_t) -> int { throw 1; }), -1);
        // Nested: the inner one runs in its caller.
        EXPECT_EQ(GW_IterateGeneric(4, nullptr,
                                    [](void*, std::int32_t, std::int32_t) -> int {
                                        return GW_IterateGeneric(
                                            4, nullptr, [](void*, std::int32_t thread, std::int32_t) -> int { return thread; });
                                    }),
                  0);
        EXPECT_EQ(GW_IterateGeneric(0, nullptr, nullptr), 0);
    }
    refhost::SetThreadCount(2);
}
