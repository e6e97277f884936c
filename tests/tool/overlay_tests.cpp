#include <algorithm>
#include <cmath>
#include <random>

#include "tests/tool/program.h"
#include "tool/cubic.h"
#include "tool/json_shapes.h"
#include "tool/outline.h"

namespace vrltool {
namespace {

using testing::HasSubstr;

using Rgba = std::vector<std::uint32_t>;
const Rgba kRed = {220, 0, 50, 255}, kBlue = {0, 90, 220, 255}, kBlack = {0, 0, 0, 255}, kGreen = {0, 140, 60, 255};
const Rgba kDimmedBlack = {128, 128, 128, 255}, kDimmedWhite = {255, 255, 255, 255};

class OverlayProgram : public Program {
 protected:
    void WriteBits(const std::string& name, int width, int height, const std::function<bool(int, int)>& is_set) {
        PngPicture picture = {width, height, 1, 0, {}, false, {}, {}};
        for (int i = 0; i < width * height; ++i) picture.samples.push_back(is_set(i % width, i / width) ? 1 : 0);
        WritePngFile((folder_ / name).string(), picture);
    }
    PngPicture Picture(const std::string& name) { return ReadPngFile((folder_ / name).string()); }
    static Rgba At(const PngPicture& picture, double x, double y) {
        const auto pixel = picture.samples.begin() + (static_cast<int>(y) * picture.width + static_cast<int>(x)) * 4;
        return {pixel, pixel + 4};
    }
};

TEST_F(OverlayProgram, TracedPicturesCarryOutlinesAnchorsAndHandles) {
    WriteBits("disc.png", 20, 16, [](int x, int y) { return std::hypot(x - 9.5, y - 7.5) < 6 || (x < 2 && y < 2); });
    ASSERT_EQ(Run("trace disc.png -o disc.json --overlay look.png --overlay-scale 20").err, "");
    const PngPicture look = Picture("look.png");
    ASSERT_EQ(std::pair(look.width, look.height), std::pair(400, 320));
    EXPECT_EQ(At(look, 399, 319), kDimmedBlack);
    EXPECT_EQ(At(look, 190, 150), kDimmedWhite);
    EXPECT_EQ(At(look, 80, 30), kDimmedBlack);  // between the shapes
    std::size_t smooth = 0, handles = 0, red = 0;
    for (const ShapeRecord& record : ReadJsonShapes(Content(folder_ / "disc.json"))) {
        const Outline outline = OutlineOf(*record.shape);
        Vertex before = outline.vertices.back();
        for (const Vertex& vertex : outline.vertices) {
            const auto& [in, anchor, out] = vertex;
            const Point middle = SplitAt({before.anchor, before.out, in, anchor}, 0.5).first[3];
            before = vertex;
            red += At(look, middle.x * 20, middle.y * 20) == kRed ? 1U : 0U;
            const Rgba colour = At(look, std::clamp(anchor.x * 20, 0.0, 399.0), std::clamp(anchor.y * 20, 0.0, 319.0));
            EXPECT_TRUE(colour == kBlack || colour == kBlue) << anchor.x << ' ' << anchor.y;
            smooth += colour == kBlue ? 1U : 0U;
            for (const Point& handle : {in, out}) {
                const bool outside = handle.x < 0 || handle.y < 0 || handle.x >= 20 || handle.y >= 16;
                if (outside || std::hypot(handle.x - anchor.x, handle.y - anchor.y) < 0.5) continue;
                EXPECT_EQ(At(look, handle.x * 20, handle.y * 20), kBlue) << handle.x << ' ' << handle.y;
                ++handles;
            }
        }
    }
    EXPECT_GE(handles, 6U);
    EXPECT_GE(smooth, 3U);  // of the disc
    EXPECT_GE(red, 3U);

    // Transformed shapes are drawn where they were traced, and a traced alpha is shown in place of the colours.
    Run("trace disc.png -o moved.json --transform 2,0,0,2,0,0 --overlay moved.png --overlay-scale 20");
    EXPECT_TRUE(Content(folder_ / "moved.png") == Content(folder_ / "look.png"));
    Run("trace disc.png -o all.json --channel alpha --overlay all.png --overlay-scale 20");
    EXPECT_EQ(At(Picture("all.png"), 80, 30), kDimmedWhite);
}

TEST_F(OverlayProgram, MasksCarryTheirFeatherPointsToo) {
    Write("soft.json", R"({"shapes": [{"vertices": [{"p": [1, 1]}, {"p": [1, 9]}, {"p": [9, 9]}, {"p": [9, 1]}],
        "feather": [{"position": 0.5, "radius": -2}, {"position": 2.5, "radius": 3}]}, {"vertices": [{"p": [15, 11]}]}]})");
    ASSERT_EQ(Run("mask soft.json --size 20x12 --depth 16 -o m.png --overlay look.png").err, "");
    const PngPicture look = Picture("look.png");
    ASSERT_EQ(std::pair(look.width, look.height), std::pair(640, 384));  // the factor is 32
    EXPECT_EQ(At(look, 32, 32), kBlack);
    EXPECT_EQ(At(look, 32, 64), kRed);
    EXPECT_EQ(At(look, 160, 200), kDimmedWhite);
    EXPECT_EQ(At(look, 600, 20), kDimmedBlack);
    // The outline runs counterclockwise: outwards of its left side is left, of its right side right.
    for (const double x : {1.0, 2.0, 3.0, 9.0, 10.5, 12.0}) EXPECT_EQ(At(look, 32 * x, 32 * 5), kGreen) << x;
    EXPECT_NE(At(look, 32 * 3.4, 32 * 5), kGreen);
    EXPECT_NE(At(look, 32 * 12.4, 32 * 5), kGreen);
    Run("mask soft.json --size 40x24 --transform 2,0,0,2,0,0 --aspect 2 -o m.png --overlay look.png --overlay-scale 16");
    EXPECT_EQ(At(Picture("look.png"), 32 * 14.9, 32 * 5), kGreen);  // a radius of 3 reaches 6 sideways
    EXPECT_EQ(Run("mask soft.json --size 4x4 -o m.png --overlay - --overlay-scale 1 > look.png").err, "");
    EXPECT_EQ(Picture("look.png").width, 4);
}

// Marks are rendered in large lots, along bridges from one to the next.
TEST_F(OverlayProgram, ThousandsOfAnchorsShowAndNothingBetweenThem) {
    std::mt19937 random(1);
    WriteBits("noise.png", 400, 300, [&](int x, int) { return (x < 100 || x >= 300) && random() % 2 == 0; });
    ASSERT_EQ(Run("trace noise.png -o noise.json --overlay look.png --overlay-scale 2").err, "");
    const PngPicture look = Picture("look.png");
    std::size_t anchors = 0, missing = 0;
    for (const ShapeRecord& record : ReadJsonShapes(Content(folder_ / "noise.json"))) {
        for (const Vertex& vertex : OutlineOf(*record.shape).vertices) {
            const Rgba colour = At(look, std::min(vertex.anchor.x * 2, 799.0), std::min(vertex.anchor.y * 2, 599.0));
            missing += colour == kDimmedBlack || colour == kDimmedWhite ? 1U : 0U;
            ++anchors;
        }
    }
    EXPECT_GT(anchors, 10000U);
    EXPECT_EQ(missing, 0U);
    for (double y = 0; y < 600; ++y) {
        for (double x = 260; x < 540; ++x) ASSERT_EQ(At(look, x, y), kDimmedBlack) << x << ' ' << y;
    }
}

TEST_F(OverlayProgram, OverlaysOfSeveralPicturesGoIntoAFolder) {
    for (const std::string name : {"a.png", "b.png"}) WriteBits(name, 8, 8, [](int x, int) { return x > 3; });
    const auto source = Content(folder_ / "a.png");
    EXPECT_EQ(Run("trace a.png b.png -o out/ --overlay . --jobs 2").err, "");
    EXPECT_TRUE(Content(folder_ / "a.overlay.png") == Content(folder_ / "b.overlay.png"));
    EXPECT_EQ(Picture("a.overlay.png").width, 256);
    EXPECT_TRUE(Content(folder_ / "a.png") == source);

    const auto refused = [&](const std::string& arguments, int status, const std::string& complaint) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, status) << arguments;
        EXPECT_THAT(outcome.err, HasSubstr(complaint));
        EXPECT_EQ(outcome.out, "");
    };
    refused("trace a.png b.png -o out/ --overlay x.png", 2, "several pictures need a folder for their overlays");
    refused("trace a.png -o - --overlay -", 2, "would both be written to standard output");
    refused("trace a.png -o x.svg --overlay x.svg", 2, "would both be written to x.svg");
    refused("trace a.png -o x.svg --overlay x.png --transform 1,0,2,0,0,0", 2, "--transform that can be undone");
    refused("trace a.png -o x.svg --overlay x.png --overlay-scale 2.5", 2, "--overlay-scale: \"2.5\" is not a whole number");
    refused("trace a.png -o x.svg --overlay-scale 2", 2, "--overlay");
    refused("trace a.png -o x.svg --overlay none/x.png", 1, "vrl: none/x.png: there is no such folder\n");
    refused("mask square.svg --size 4x4 -o x.png --overlay x.png", 2, "would both be written to x.png");
    refused("mask square.svg --size 4x4 -o x.png --overlay - --touched", 2, "standard output");
    refused("mask square.svg --size 4x900 -o x.png --overlay y.png --overlay-scale 64", 1,
            "vrl: y.png: the overlay would be larger than 32767 pixels each way\n");
    EXPECT_FALSE(fs::exists(folder_ / "x.svg"));
    EXPECT_FALSE(fs::exists(folder_ / "x.png"));
}

}  // namespace
}  // namespace vrltool
