#include <algorithm>
#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <thread>

#include "tests/tool/program.h"
#include "tool/json_shapes.h"
#include "tool/outline_measure.h"

namespace vrltool {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class TraceProgram : public Program {
 protected:
    std::string Path(const std::string& name) const { return (folder_ / name).string(); }

    /// A disc of radius 10 with a round hole of radius 4, 255 on 0, `channels` samples a pixel all alike.
    void WriteRing(const std::string& name, int depth, int color_type, int channels) {
        PngPicture picture = {kSide, kSide, depth, color_type, {}, false, {}, {}};
        const std::uint32_t full = (1U << depth) - 1;
        for (int i = 0; i < kSide * kSide; ++i) {
            const double x = i % kSide + 0.5 - kSide / 2.0, y = i / kSide + 0.5 - kSide / 2.0;
            const double square = x * x + y * y;
            picture.samples.insert(picture.samples.end(), static_cast<std::size_t>(channels),
                                   square < 100 && square > 16 ? full : 0);
        }
        WritePngFile(Path(name), picture);
    }

    static constexpr int kSide = 24;
};

TEST_F(TraceProgram, EveryKindOfPictureGivesItsOutlines) {
    WriteRing("grey.png", 8, 0, 1);
    WriteRing("rgb.png", 8, 2, 3);
    WriteRing("grey_alpha.png", 8, 4, 2);
    WriteRing("rgba.png", 8, 6, 4);
    WriteRing("bits.png", 1, 0, 1);
    for (const std::string name : {"grey", "rgb", "grey_alpha", "rgba", "bits"}) {
        ASSERT_EQ(Run("trace " + name + ".png -o " + name + ".json").err, "");
        const std::vector<ShapeRecord> shapes = ReadJsonShapes(Content(folder_ / (name + ".json")));
        ASSERT_EQ(shapes.size(), 2U) << name;
        EXPECT_NEAR(SignedArea(OutlineOf(*shapes[0].shape)), 314, 16) << name;
        EXPECT_NEAR(SignedArea(OutlineOf(*shapes[1].shape)), 50, 8) << name;
    }
    ASSERT_EQ(Run("trace grey.png -o - --invert --transform 2,0,0,2,1,0").status, 0);
    const std::vector<ShapeRecord> shapes = ReadJsonShapes(Content(log_ / "out"));
    ASSERT_EQ(shapes.size(), 3U);
    EXPECT_NEAR(TightBounds(OutlineOf(*shapes[0].shape)).right, 2 * kSide + 1, 2);
    EXPECT_EQ(Run("trace grey.png -o - --min-area 60 | grep -c closed").out, "1\n");
    EXPECT_EQ(Run("trace rgba.png -o - --channel alpha --threshold 0 | grep -c closed").out, "1\n");

    std::ofstream(Path("two.png")) << Content(folder_ / "grey.png") << Content(folder_ / "bits.png");
    const Outcome two = Run("trace two.png -o -");
    EXPECT_EQ(two.err, "vrl: two.png: another picture follows the first, which alone is read\n");
    EXPECT_EQ(two.out, Content(folder_ / "grey.json"));
    PngPicture roof = {kSide, kSide, 1, 0, {}, false, {}, {}};  // its curves leave the picture on the left
    for (int i = 0; i < kSide * kSide; ++i) roof.samples.push_back(i / kSide >= std::abs(i % kSide - 11) ? 1 : 0);
    WritePngFile(Path("roof.png"), roof);
    EXPECT_THAT(Run("trace roof.png -o - --format svg").out, HasSubstr("viewBox=\"0 0 24 24\" overflow=\"visible\">"));
}

TEST_F(TraceProgram, DeepPicturesAreReducedOnlyWhenAsked) {
    WriteRing("deep.png", 16, 0, 1);
    const Outcome refused = Run("trace deep.png -o deep.svg");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "vrl: deep.png: has 16 bits a sample, tracing takes 8; --reduce reduces them\n");
    EXPECT_FALSE(fs::exists(Path("deep.svg")));
    const Outcome reduced = Run("trace deep.png -o deep.svg --reduce");
    EXPECT_EQ(reduced.status, 0);
    EXPECT_EQ(reduced.err, "vrl: deep.png: reduced from 16 to 8 bits\n");
    WriteRing("grey.png", 8, 0, 1);
    Run("trace grey.png -o grey.svg --reduce");
    EXPECT_EQ(Content(folder_ / "deep.svg"), Content(folder_ / "grey.svg"));
}

TEST_F(TraceProgram, SeveralPicturesGoIntoAFolderAndOneFailureStopsNoOther) {
    for (const std::string name : {"a.png", "b.png", "c.png"}) WriteRing(name, 8, 0, 1);
    EXPECT_EQ(Run("trace a.png b.png c.png -o out/ --jobs 2").err, "");
    EXPECT_EQ(Content(folder_ / "out/a.svg"), Content(folder_ / "out/c.svg"));
    EXPECT_THAT(Content(folder_ / "out/b.svg"), StartsWith("<svg"));
    WriteRing("deep.png", 16, 0, 1);
    const Outcome outcome = Run("trace a.png deep.png none.png c.png -o out --format json --jobs 3 --stats");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("vrl: deep.png: has 16 bits a sample, tracing takes 8; --reduce reduces them\nvrl: "
                                       "none.png: No such file or directory\n"));
    EXPECT_THAT(outcome.err, HasSubstr("\n   24      24       2 "));
    EXPECT_THAT(outcome.err, HasSubstr("-  failed  deep.png\n"));
    EXPECT_THAT(Content(folder_ / "out/c.json"), StartsWith("{\"total_ms\": "));
    EXPECT_EQ(ReadJsonShapes(Content(folder_ / "out/c.json")).size(), 2U);
    EXPECT_FALSE(fs::exists(Path("out/deep.json")));
    EXPECT_EQ(std::distance(fs::directory_iterator(Path("out")), {}), 5);  // nothing half-written
}

TEST_F(TraceProgram, StatsAsJsonHaveAnObjectAPicture) {
    WriteRing("two rings.png", 8, 0, 1);
    WriteRing("deep.png", 16, 0, 1);
    const Outcome outcome = Run("trace 'two rings.png' none.png deep.png --reduce -o out/ --stats=json");
    EXPECT_EQ(outcome.status, 1);
    const auto stats = nlohmann::json::parse(outcome.err).at("pictures");
    EXPECT_EQ(stats.size(), 3U);
    EXPECT_EQ(stats.at(0).at("picture"), "two rings.png");
    EXPECT_EQ(stats.at(0).at("width"), kSide);
    EXPECT_EQ(stats.at(0).at("closed"), 2);
    EXPECT_GT(stats.at(0).at("ms"), 0.0);
    EXPECT_EQ(stats.at(1).at("error"), "none.png: No such file or directory");
    EXPECT_EQ(stats.at(2).at("notes").at(0), "reduced from 16 to 8 bits");
}

// The call cannot be stopped; the program ends without it.
TEST_F(TraceProgram, CtrlCEndsALongTrace) {
    PngPicture noise = {3000, 3000, 1, 0, {}, false, {}, {}};
    std::mt19937 random(1);
    std::ranges::generate_n(std::back_inserter(noise.samples), 3000 * 3000, [&] { return random() & 1U; });
    WritePngFile(Path("noise.png"), noise);
    const auto while_it_works = [] { std::this_thread::sleep_for(std::chrono::milliseconds(400)); };
    EXPECT_EQ(Interrupt({"trace", "noise.png", "-o", "noise.svg"}, while_it_works), 130);
    EXPECT_EQ(Files().size(), 2U);
}

}  // namespace
}  // namespace vrltool
