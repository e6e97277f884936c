#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <iterator>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

#include "tests/tool/png_files.h"
#include "tests/tool/program.h"
#include "tool/json_shapes.h"
#include "tool/outline_measure.h"

namespace vrltool {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;

TEST_F(Program, MaskWritesTheCoverage) {
    ASSERT_EQ(Run("mask square.svg --size 4x3 -o m.png").err, "");
    EXPECT_EQ(Samples("m.png"), (std::vector<std::uint32_t>{0, 0, 0, 0, 0, 255, 255, 0, 0, 255, 255, 0}));
    const auto one = [&](const std::string& options) {  // pixel (1, 1) moved to (0, 0), and what is beside the square
        EXPECT_EQ(Run("mask square.svg --size 3x1 -o m.png --transform 1,0,0,1,-1,-1 " + options).err, "");
        const std::vector<std::uint32_t> samples = Samples("m.png");
        return std::pair(samples.front(), samples.back());
    };
    EXPECT_EQ(one("--opacity 50"), std::pair(128U, 0U));
    EXPECT_EQ(one("--invert"), std::pair(0U, 255U));
    EXPECT_EQ(one("--depth 16"), std::pair(65535U, 0U));
    EXPECT_EQ(one("--depth 16 --opacity 25"), std::pair(16384U, 0U));  // 8192 * 65535 / 32768 = 16383.75
    EXPECT_EQ(one("--expand 1"), std::pair(255U, 255U));
    EXPECT_EQ(one("--expand -0.5"), std::pair(64U, 0U));
    EXPECT_EQ(one("--feather 0 --expand 0 --aspect 1 --quality draft --falloff linear --combine lighten"), std::pair(255U, 0U));
    Run("mask square.svg --size 3x1 -o m.png --transform -.5,0,0,2,2,-2");  // mirrored and squeezed: x from 0.5 to 1.5
    EXPECT_EQ(Samples("m.png"), (std::vector<std::uint32_t>{128, 128, 0}));
}

TEST_F(Program, MasksCombineInOrder) {
    Write("two.json", R"({"shapes": [
        {"vertices": [{"p": [0, 0]}, {"p": [2, 0]}, {"p": [2, 1]}, {"p": [0, 1]}]},
        {"vertices": [{"p": [1, 0]}, {"p": [3, 0]}, {"p": [3, 1]}, {"p": [1, 1]}]}]})");
    Write("cut.json",
          R"({"shapes": [{"vertices": [{"p": [1, 0]}, {"p": [3, 0]}, {"p": [3, 1]}, {"p": [1, 1]}], "mode": "subtract"},
        {"vertices": [{"p": [0, 0]}, {"p": [2, 0]}, {"p": [2, 1]}, {"p": [0, 1]}]}]})");
    const auto row = [&](const std::string& arguments) {
        EXPECT_EQ(Run("mask " + arguments + " --size 4x1 -o m.png").err, "");
        std::string text;
        for (const std::uint32_t sample : Samples("m.png")) text += sample == 255 ? '#' : sample == 0 ? '.' : '?';
        return text;
    };
    EXPECT_EQ(row("two.json"), "###.");
    EXPECT_EQ(row("two.json --combine lighten"), "###.");
    EXPECT_EQ(row("two.json --combine difference"), "#.#.");
    EXPECT_EQ(row("two.json --combine intersect"), ".#..");
    EXPECT_EQ(row("two.json --combine darken"), ".#..");
    EXPECT_EQ(row("two.json --combine subtract"), "...#");
    EXPECT_EQ(row("cut.json"), "##.#");  // a file's own mode wins; subtract starts from full
    EXPECT_EQ(row("cut.json --combine intersect"), "#...");
    Write("none.svg", "<svg/>");
    EXPECT_EQ(Run("mask none.svg --size 4x1 --invert -o m.png").err, "vrl: none.svg: there are no shapes in it\n");
    EXPECT_EQ(Samples("m.png"), std::vector<std::uint32_t>(4));  // no shape, no mask
}

TEST_F(Program, ApplyMultipliesTheMasksIntoTheAlpha) {
    std::vector<std::uint32_t> layer;
    for (std::uint32_t i = 0; i < 12; ++i) layer.insert(layer.end(), {i, 100 + i, 200 + i, i == 5 ? 0 : 100 + i});
    WritePngFile((folder_ / "l.png").string(), {4, 3, 8, 6, layer, false, {}, {}});
    const auto alphas = [&](const std::string& arguments) {
        EXPECT_EQ(Run("apply " + arguments + " -o m.png").err, "");
        const std::vector<std::uint32_t> samples = Samples("m.png");
        std::vector<std::uint32_t> alpha;
        for (std::size_t i = 0; i < samples.size(); i += 4) {
            alpha.push_back(samples[i + 3]);
            for (std::size_t j = i; j < i + 3; ++j) EXPECT_EQ(samples[j], layer[j]) << arguments;
        }
        return alpha;
    };
    using Alphas = std::vector<std::uint32_t>;
    EXPECT_EQ(alphas("l.png square.svg"), (Alphas{0, 0, 0, 0, 0, 0, 106, 0, 0, 109, 110, 0}));
    EXPECT_EQ(alphas("l.png square.svg --invert"), (Alphas{100, 101, 102, 103, 104, 0, 0, 107, 108, 0, 0, 111}));
    EXPECT_EQ(alphas("l.png square.svg --transform 1,0,0,1,1,-2"), (Alphas{0, 0, 102, 103, 0, 0, 0, 0, 0, 0, 0, 0}));
    Write("two.svg", "<svg><path d='M0 0H2V1H0ZM1 0H3V1H1Z'/></svg>");
    // Masks of 128; where they overlap 128 + 127 * 128 / 255 = 192.
    EXPECT_EQ(alphas("l.png two.svg --opacity 50"), (Alphas{50, 76, 51, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    Write("none.svg", "<svg/>");
    EXPECT_THAT(Run("apply l.png none.svg -o m.png").err, HasSubstr("no shapes"));
    for (std::size_t i = 3; i < 48; i += 4) EXPECT_EQ(Samples("m.png").at(i), 0U);

    EXPECT_EQ(Run("apply l.png two.svg --touched -o m.png").out, "0 0 2 1\n1 0 3 1\n");
    EXPECT_EQ(Run("apply - two.svg -o - < l.png").out, Content(folder_ / "m.png"));
    EXPECT_EQ(Run("apply l.png - -o - < two.svg").out, Content(folder_ / "m.png"));
    WritePngFile((folder_ / "deep.png").string(), {3, 1, 16, 0, {0, 5, 65535}, false, {}, {}});
    EXPECT_EQ(Run("apply deep.png two.svg --opacity 50 -o m.png").err, "");
    // 16-bit alphas of round(32768 * 128 / 255) = 16448 and, where the masks overlap, 16448 + round(16320 * 128 / 255).
    EXPECT_EQ(Samples("m.png"), (Alphas{0, 0, 0, 32895, 6, 6, 6, 49279, 65535, 65535, 65535, 32895}));
}

TEST_F(Program, FeatherPointsSoftenTheEdge) {
    const std::string square =
        R"({"shapes": [{"vertices": [{"p": [10, 10]}, {"p": [50, 10]}, {"p": [50, 50]}, {"p": [10, 50]}], )";
    const auto sample = [&](const std::string& options, const std::string& feather, std::size_t x) {
        Write("soft.json", square + "\"feather\": [" + feather + "]}]}");
        EXPECT_EQ(Run("mask soft.json --size 60x60 -o m.png " + options).err, "");
        return static_cast<double>(Samples("m.png").at(30 * 60 + x));
    };
    // A radius of 8 makes 8 rings, 0 to 7 pixels from the inner edge; a pixel has the share of rings that cover it.
    const std::string out = R"({"position": 0, "radius": 8})", in = R"({"position": 4, "radius": -8})";
    EXPECT_NEAR(sample("--falloff linear", out, 52), 255 * 5 / 8.0, 1);
    EXPECT_NEAR(sample("--falloff linear", in, 47), 255 * 2 / 8.0, 1);
    EXPECT_NEAR(sample("--falloff linear --expand 1", out, 52), 255 * 6 / 8.0, 1);
    EXPECT_NEAR(sample("--falloff smooth", out, 52), 255 * (3 - 2 * 5 / 8.0) * 25 / 64, 1);
    const std::string both = R"({"position": 1.5, "radius": 8}, {"position": 3.5, "radius": -8})";  // right and left sides
    EXPECT_GT(sample("", both, 53), 60);
    EXPECT_EQ(sample("", both, 48), 255);
    EXPECT_EQ(sample("", both, 8), 0);
    EXPECT_LT(sample("", both, 12), 200);

    // Turned, the feather reaches beyond the rectangle that the mask is said to touch; combined, all of it is there.
    Write("after.json", R"({"shapes": [{"vertices": [{"p": [0, 0]}]}, )" + square.substr(12) + "\"feather\": [" + out + "]}]}");
    const std::string turned = " --size 90x90 --transform .7,.7,-.7,.7,45,3 -o ";
    Run("mask after.json" + turned + "after.png");
    Write("soft.json", square + "\"feather\": [" + out + "]}]}");
    Run("mask soft.json" + turned + "soft.png");
    EXPECT_TRUE(Content(folder_ / "after.png") == Content(folder_ / "soft.png"));
}

TEST_F(Program, ApplyKeepsColourProfileAndResolution) {
    std::vector<PngChunk> chunks;
    for (const char* name : {"iCCP", "sRGB", "gAMA", "cHRM", "cICP", "pHYs"}) {
        chunks.push_back({name, {1, 2, 0, static_cast<std::uint8_t>(chunks.size())}});
    }
    const auto head = [&](const std::string& name) {  // what follows the first chunk up to the pixels
        const std::string content = Content(folder_ / name);
        return content.substr(33, content.find("IDAT") - 33 - 4);
    };
    const auto cut = [&](PngPicture layer) {
        WritePngFile((folder_ / "l.png").string(), layer);
        EXPECT_EQ(Run("apply l.png square.svg --transform 1,0,0,1,-1,-1 -o m.png").err, "");
        EXPECT_EQ(head("m.png"), head("l.png"));
        EXPECT_EQ(head("m.png").size(), 16 * layer.chunks.size());
        return ReadPngFile((folder_ / "m.png").string());
    };
    EXPECT_EQ(cut({3, 1, 8, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9}, false, {}, {}, chunks}).color_type, 6);
    // Only a picture of grey may have a profile for grey.
    using Samples = std::vector<std::uint32_t>;
    const PngPicture grey = cut({3, 1, 8, 0, {7, 8, 9}, false, {}, {}, chunks});
    EXPECT_EQ(grey.color_type, 4);
    EXPECT_EQ(grey.samples, (Samples{7, 255, 8, 255, 9, 0}));
    EXPECT_EQ(cut({3, 1, 16, 0, {7, 65535, 9}, false, {}, {}, chunks}).samples, (Samples{8, 65535, 65535, 65535, 10, 0}));
    chunks.erase(chunks.begin());
    EXPECT_EQ(cut({3, 1, 8, 0, {7, 8, 9}, false, {}, {}, chunks}).color_type, 6);
}

// An opaque layer's alpha is the mask itself; moved points are rounded, and rings spaced, a little differently.
TEST_F(Program, ApplyRendersTheMaskThatMaskDoes) {
    Write("blob.json",
          R"({"shapes": [{"vertices": [{"p": [5, 20], "out": [5, -9]}, {"p": [50, 30], "in": [40, 2]}, {"p": [20, 45]}],
                                       "feather": [{"position": 0.5, "radius": 6}, {"position": 2, "radius": -4}]}]})");
    WritePngFile((folder_ / "l.png").string(), {60, 50, 8, 0, std::vector<std::uint32_t>(60 * 50, 9), false, {}, {}});
    for (const std::string options : {"--expand 3 --opacity 70", "--feather 4,2 --invert", "--transform 0.9,0.1,-0.1,0.9,4,-2"}) {
        EXPECT_EQ(Run("apply l.png blob.json -o cut.png " + options).err, "");
        EXPECT_EQ(Run("mask blob.json --size 60x50 -o m.png " + options).err, "");
        const std::vector<std::uint32_t> cut = Samples("cut.png"), mask = Samples("m.png");
        for (std::size_t i = 0; i < mask.size(); ++i) ASSERT_NEAR(cut[4 * i + 3], mask[i], 4) << options << ", pixel " << i;
    }
}

TEST_F(Program, InsetMovesEveryShape) {
    Write("shapes.json", R"({"shapes": [
        {"vertices": [{"p": [10, 10]}, {"p": [20, 10]}, {"p": [20, 20]}, {"p": [10, 20]}],
         "feather": [{"position": 1, "radius": 3}]},
        {"vertices": [{"p": [30, 10]}, {"p": [40, 10]}, {"p": [40, 14.5]}, {"p": [50, 14.5]}, {"p": [50, 10]}, {"p": [60, 10]},
                      {"p": [60, 20]}, {"p": [50, 20]}, {"p": [50, 15.5]}, {"p": [40, 15.5]}, {"p": [40, 20]}, {"p": [30, 20]}],
         "mode": "subtract"}]})");
    const auto inset = [&](const std::string& arguments) {
        const Outcome outcome = Run("inset shapes.json -o - " + arguments);
        EXPECT_EQ(outcome.err, "");
        return ReadJsonShapes(outcome.out);
    };
    const auto area = [](const ShapeRecord& record) { return SignedArea(OutlineOf(*record.shape)); };
    // The square grown by 2: four sides of 10 by 2 and four corners within 2 by 2.
    EXPECT_NEAR(area(inset("--distance -2 --join miter").at(0)), 196, 0.01);
    EXPECT_NEAR(area(inset("--distance -2 --join bevel").at(0)), 188, 0.01);
    EXPECT_NEAR(area(inset("--distance -2").at(0)), 180 + 4 * std::numbers::pi, 0.1);
    EXPECT_NEAR(area(inset("--distance -2 --join miter --aspect 2").at(0)), 18 * 14, 0.01);

    const std::vector<ShapeRecord> pieces = inset("--distance 1");  // the bar between the blocks of the second shape goes
    ASSERT_EQ(pieces.size(), 3U);
    EXPECT_NEAR(area(pieces[0]), 64, 0.01);
    EXPECT_EQ(pieces[0].mode, std::nullopt);
    EXPECT_EQ(pieces[0].shape->GetFeatherPtCount(0), 0);
    EXPECT_EQ(pieces[1].mode, CombineMode::kSubtract);
    EXPECT_EQ(pieces[2].mode, CombineMode::kSubtract);
    EXPECT_EQ(ReadJsonShapes(Run("inset shapes.json -o - --distance 6").out).size(), 0U);

    Write("canvas.svg", "<svg width='10' viewBox='0 0 5 20'><rect x='1' y='1' width='2' height='2'/></svg>");
    EXPECT_THAT(Run("inset canvas.svg --distance -9 -o - --format svg").out,
                HasSubstr("width=\"10\" height=\"40\" viewBox=\"0 0 10 40\" overflow=\"visible\">"));
}

TEST_F(Program, EmptyResultsAreTold) {
    WritePngFile((folder_ / "l.png").string(), {3, 1, 8, 0, {1, 2, 3}, false, {}, {}});
    const std::string empty =
        "vrl: square.svg: the mask is empty; try another --transform, --expand or --opacity (vrl info tells where its shapes "
        "are)\n";
    const auto told = [&](const std::string& arguments) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0) << arguments;
        return outcome.err;
    };
    EXPECT_EQ(told("mask square.svg --size 1x1 -o m.png"), empty);
    EXPECT_EQ(told("mask square.svg --size 4x3 --depth 16 --expand -1 -o m.png"), empty);
    EXPECT_EQ(told("mask square.svg --size 1x1 --invert -o m.png"), "");
    EXPECT_EQ(told("apply l.png square.svg -o m.png"), empty);
    EXPECT_EQ(told("inset square.svg --distance 1 -o m.svg"),
              "vrl: square.svg: nothing is left of it; try a smaller --distance\n");
    EXPECT_THAT(told("trace l.png -o m.svg"), MatchesRegex("vrl: l\\.png: there is nothing to trace; try [^\n]*\n"));
    EXPECT_EQ(told("trace l.png -o m.svg --threshold 0"), "");
}

TEST_F(Program, InfoCountsFeatherPointsWhereThereAreSome) {
    Write("soft.json", R"({"shapes": [{"vertices": [{"p": [1, 0]}, {"p": [3, 0]}]},
        {"vertices": [{"p": [1, 0]}, {"p": [3, 0]}],
         "feather": [{"position": 0, "radius": 1}, {"position": 1.5, "radius": 2}]}]})");
    EXPECT_THAT(Run("info soft.json").out,
                MatchesRegex("[^\n]* mode  feather points\n[^\n]* - +0\n[^\n]* - +2\n2 shapes: [^\n]*\n"));
    EXPECT_THAT(Run("info square.svg").out, Not(HasSubstr("feather")));
}

TEST_F(Program, StandardStreamsServeAsFiles) {
    EXPECT_EQ(Run("mask square.svg --size 4x3 -o m.png --touched").out, "1 1 3 3\n");
    EXPECT_EQ(Run("mask - --size 4x3 -o - < square.svg").out, Content(folder_ / "m.png"));
    const Outcome info = Run("info - < square.svg");
    EXPECT_THAT(info.out, HasSubstr("1   closed         4  1.00  1.00   3.00    3.00  4.00  clockwise     -\n"));
    EXPECT_THAT(info.out, HasSubstr("1 shape: 1 closed, 0 open, 4 vertices\n"));
    EXPECT_THAT(Run("--version").out, StartsWith("vrl "));
    for (const char* command : {"", "mask ", "apply ", "inset ", "info "})
        EXPECT_THAT(Run(std::string(command) + "--help").out, HasSubstr("Examples:"));
}

TEST_F(Program, WrongUsageIsStatus2) {
    const std::string mask = "mask square.svg --size 4x3 -o m.png ";
    for (const std::string& arguments : {std::string(),
                                         std::string("bogus"),
                                         std::string("info"),
                                         std::string("mask square.svg -o m.png"),
                                         std::string("mask square.svg --size 4x3"),
                                         mask + "--size 0x3",
                                         mask + "--size 4x-3",
                                         mask + "--size 4",
                                         mask + "--size 40000x3",
                                         mask + "--size 4x3x2",
                                         mask + "--depth 12",
                                         mask + "--feather -1",
                                         mask + "--feather 1,2,3",
                                         mask + "--feather 1e9",
                                         mask + "--feather nan",
                                         mask + "--expand 32768",
                                         mask + "--expand 1px",
                                         mask + "--opacity 101",
                                         mask + "--opacity 1x",
                                         mask + "--aspect 0",
                                         mask + "--quality good",
                                         mask + "--falloff cubic",
                                         mask + "--transform 1,0,0,1,0",
                                         mask + "--transform 1,0,0,1,0,inf",
                                         mask + "--combine xor",
                                         mask + "extra",
                                         std::string("mask square.svg --size 4x3 -o square.svg"),
                                         std::string("mask square.svg --size 4x3 -o - --touched"),
                                         std::string("apply l.png square.svg -o - --touched"),
                                         std::string("apply l.png square.svg"),
                                         std::string("apply l.png -o m.png"),
                                         std::string("apply - - -o m.png"),
                                         std::string("apply l.png square.svg -o m.png --size 4x3"),
                                         std::string("apply l.png square.svg -o m.png --combine add"),
                                         std::string("inset square.svg -o m.json"),
                                         std::string("inset square.svg --distance 1"),
                                         std::string("inset square.svg --distance 1 -o m.png"),
                                         std::string("inset square.svg --distance one -o m.svg"),
                                         std::string("inset square.svg --distance 1 -o m.svg --aspect 0"),
                                         std::string("inset square.svg --distance 1 -o m.svg --join sharp"),
                                         std::string("trace -o m.svg"),
                                         std::string("trace l.png"),
                                         std::string("trace l.png -o m.png"),
                                         std::string("trace l.png k.png -o m.svg"),
                                         std::string("trace l.png a/l.png -o out/"),
                                         std::string("trace l.png -o m.svg --channel cyan"),
                                         std::string("trace l.png -o m.svg --threshold 101"),
                                         std::string("trace l.png -o m.svg --tolerance -1"),
                                         std::string("trace l.png -o m.svg --corner-angle nan"),
                                         std::string("trace l.png -o out/ --format pdf"),
                                         std::string("inset square.svg --distance 1 -o m.svg --format json"),
                                         std::string("trace l.png -o l.png --format svg"),
                                         std::string("trace l.png -o m.svg --stats=xml"),
                                         std::string("trace l.png -o m.svg --jobs 1.5"),
                                         std::string("trace l.png -o m.svg --jobs 0")}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_THAT(outcome.err, MatchesRegex("vrl: [^\n]*\n")) << arguments;
        EXPECT_EQ(outcome.out, "") << arguments;
    }
    // What is wrong comes first, not what is missing because of it; and names that were nearly right are told.
    const auto complaint = [&](const std::string& arguments) { return Run(arguments).err; };
    EXPECT_EQ(complaint("maks square.svg"), "vrl: \"maks\" is not a command; did you mean mask? (see vrl --help)\n");
    EXPECT_THAT(complaint("frob"), HasSubstr("there are mask, apply, inset, trace and info"));
    EXPECT_THAT(complaint("mask square.svg --sise 4x3 -o m.png"),
                HasSubstr("--sise is not an option of mask; did you mean --size?"));
    EXPECT_THAT(complaint(mask + "--comb=add"), HasSubstr("did you mean --combine?"));
    EXPECT_THAT(complaint(mask + "--feather"), HasSubstr("--feather needs a value (see vrl mask --help)"));
    EXPECT_THAT(complaint(mask + "--depth 8 --depth 8"), HasSubstr("--depth is given more than once"));
    EXPECT_THAT(complaint(mask + "--quality good"), HasSubstr("--quality: \"good\" is not draft or best"));
    EXPECT_THAT(complaint("mask square.svg --size 4x3 -o ''"), HasSubstr("-o: the name of the file is empty"));
    EXPECT_THAT(complaint(mask + "--overlay ''"), HasSubstr("--overlay: the name of the file is empty"));
    EXPECT_THAT(complaint("trace l.png -o m.png"),
                HasSubstr("-o: \"m.png\" does not end in .svg or .json, nor in / for a folder"));
    EXPECT_THAT(complaint("trace l.png -o m.svg --format json"), HasSubstr("-o: \"m.svg\" ends in .svg, but --format is json"));
    EXPECT_THAT(Run(mask + "--expand inf").err, HasSubstr("--expand: \"inf\" is not a number from -32767 to 32767"));
    EXPECT_EQ(Files().size(), 1U);
}

TEST_F(Program, FailedWorkIsStatus1AndLeavesNoFile) {
    Write("bad.svg", "<svg><path id='x' d='M0 0 L'/></svg>");
    Write("bad.json", "{\"shapes\": [\n\n");
    Write("cut.json", R"({"shapes": [{"vertices": [{"p": [1, 0]}], "mode": "subtract"}]})");
    const struct {
        std::string arguments, expected;
    } cases[] = {
        {"mask bad.svg --size 4x3 -o m.png", "vrl: bad\\.svg: <path id=\"x\">: path data offset 6: [^\n]*\n"},
        {"mask bad.json --size 4x3 -o m.png", "vrl: bad\\.json: not valid JSON: [^\n]*\n"},
        {"mask none.svg --size 4x3 -o m.png", "vrl: none\\.svg: No such file or directory\n"},
        {"info .", "vrl: \\.: Is a directory\n"},
        {"info /dev/null", "vrl: /dev/null: the file is empty\n"},
        {"info - <&-", "vrl: standard input: Bad file descriptor\n"},
        {"info square.svg >/dev/full", "vrl: standard output: No space left on device\n"},
        {"info square.svg >&-", "vrl: standard output: Bad file descriptor\n"},
        {"mask square.svg --size 4x3 -o - >&-", "vrl: standard output: Bad file descriptor\n"},
        {"mask square.svg --size 4x3 -o /dev/full", "vrl: /dev/full: No space left on device\n"},
        {"mask square.svg --size 4x3 -o none/m.png", "vrl: none/m\\.png: there is no such folder\n"},
        {"mask square.svg --size 4x3 -o .", "vrl: \\.: Is a directory\n"},
        {"inset bad.svg --distance 1 -o m.svg", "vrl: bad\\.svg: <path id=\"x\">: [^\n]*\n"},
        {"inset square.svg --distance 1 -o none/m.svg", "vrl: none/m\\.svg: there is no such folder\n"},
        {"inset square.svg --distance 1 -o - >/dev/full", "vrl: standard output: No space left on device\n"},
        {"trace none.png -o m.svg", "vrl: none\\.png: No such file or directory\n"},
        {"trace square.svg -o m.svg", "vrl: square\\.svg: Not a PNG file\n"},
        {"trace none.png square.svg -o .", "vrl: none\\.png: [^\n]*\nvrl: square\\.svg: [^\n]*\n"},
        {"trace none.png -o square.svg/out/", "vrl: square\\.svg/out/: Not a directory\n"},
        {"apply none.png square.svg -o m.png", "vrl: none\\.png: No such file or directory\n"},
        {"apply . square.svg -o m.png", "vrl: \\.: Is a directory\n"},
        {"apply - square.svg -o m.png </dev/null", "vrl: standard input: the file ends too early\n"},
        {"apply square.svg square.svg -o m.png", "vrl: square\\.svg: Not a PNG file\n"},
        {"apply l.png none.svg -o m.png", "vrl: none\\.svg: No such file or directory\n"},
        {"apply l.png cut.json -o m.png", "vrl: cut\\.json: shape 1 has the mode subtract, but apply can only add masks\n"},
    };
    for (const auto& c : cases) {
        const Outcome outcome = Run(c.arguments);
        EXPECT_EQ(outcome.status, 1) << c.arguments;
        EXPECT_THAT(outcome.err, MatchesRegex(c.expected));
    }
    EXPECT_EQ(Files().size(), 4U);
    Run("mask square.svg --size 4x3 -o m.png 2>&-");  // the file must not get the number of standard error, or the reverse
    EXPECT_EQ(Samples("m.png").size(), 12U);
}

TEST_F(Program, OutputReplacesTheFileItself) {
    Write("real.png", "old");
    fs::permissions(folder_ / "real.png", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("real.png", folder_ / "link.png");
    EXPECT_EQ(Run("mask square.svg --size 4x3 -o link.png").status, 0);
    EXPECT_TRUE(fs::is_symlink(folder_ / "link.png"));
    EXPECT_EQ(fs::status(folder_ / "real.png").permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(Samples("real.png").size(), 12U);

    const auto refused = [&](const std::string& name, const std::string& complaint) {
        const Outcome outcome = Run("mask square.svg --size 1x1 -o " + name);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.err, "vrl: " + name + ": " + complaint + "\n");
    };
    fs::permissions(folder_ / "real.png", fs::perms::owner_read);
    refused("real.png", "is read-only");
    refused("link.png", "is read-only");
    EXPECT_EQ(Samples("real.png").size(), 12U);
    fs::create_symlink("none.png", folder_ / "dangling.png");
    refused("dangling.png", "is a link to a file that is not there");
    EXPECT_TRUE(fs::is_symlink(folder_ / "dangling.png"));
    EXPECT_EQ(Files().size(), 4U);
}

TEST_F(Program, StreamsAreWrittenInPlace) {
    const std::string inset = "inset square.svg --distance -1 -o ", shapes = Run(inset + "-").out;
    const std::string drawing = Run(inset + "- --format svg").out;
    EXPECT_THAT(shapes, StartsWith("{\"shapes\""));
    EXPECT_THAT(drawing, StartsWith("<svg"));
    const std::string pipe = folder_ / "pipe";
    mkfifo(pipe.c_str(), 0600);
    EXPECT_EQ(Run(inset + "pipe & timeout 10 cat " + pipe + "; wait").out, shapes);
    EXPECT_TRUE(fs::is_fifo(pipe));
    EXPECT_EQ(Run(inset + "/dev/stdout --format svg").out, drawing);
    EXPECT_EQ(Run(inset + "/dev/null").err, "");
    Write("log", "before\n");  // open files keep what they have
    Run(inset + "/dev/stdout >> log");
    Run(inset + "/dev/fd/3 3>> log");
    EXPECT_EQ(Content(folder_ / "log"), "before\n" + shapes + shapes);
    EXPECT_EQ(Run("mask square.svg --size 4x3 --touched -o /dev/stdout").status, 2);
}

// The work would take minutes; the signal comes once the output file is begun.
TEST_F(Program, CtrlCStopsTheWorkAndTidiesUp) {
    std::string svg = "<svg>";
    for (int i = 0; i < 10000; ++i) svg += "<circle cx='2000' cy='2000' r='1900'/>";
    Write("many.svg", svg + "</svg>");
    const auto until_begun = [&] {
        const auto start = std::chrono::steady_clock::now();
        const auto waited = [&] { return std::chrono::steady_clock::now() - start; };
        while (Files().size() < 3 && waited() < std::chrono::seconds(60))
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
    };
    EXPECT_EQ(Interrupt({"mask", "many.svg", "--size", "4000x4000", "--feather", "50", "-o", "m.png"}, until_begun), 130);
    EXPECT_EQ(Files().size(), 2U);
}

}  // namespace
}  // namespace vrltool
