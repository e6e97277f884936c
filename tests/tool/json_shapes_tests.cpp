#include <gmock/gmock.h>

#include <random>

#include "base/narrow.h"
#include "refhost/shape/feather_points.h"
#include "tests/tool/outline_text.h"
#include "tests/tool/random_shapes.h"
#include "tool/json_shapes.h"

namespace vrltool {
namespace {

using testing::ElementsAreArray;

TEST(JsonShapes, WrittenShapesReadBackBitForBit) {
    std::mt19937 random(20);
    std::vector<ShapeRecord> records;
    for (std::size_t size = 1; size < 60; ++size) {
        records.push_back({MakeShape(RandomOutline(size, size % 3 != 0, [&] { return RandomFloat(random); })), std::nullopt});
        std::vector<refhost::FeatherPoint> feather;
        for (std::size_t i = 1; i < size % 5; ++i) {
            const double position = static_cast<double>(size - 1) * static_cast<double>(random()) / std::mt19937::max();
            feather.push_back({position, NarrowToFloat(RandomFloat(random))});
        }
        refhost::SetFeatherPoints(*records.back().shape, feather);
        if (size % 7 != 0) records.back().mode = static_cast<CombineMode>(size % 7 - 1);
    }
    const std::vector<ShapeRecord> again = ReadJsonShapes(WriteJsonShapes(records));
    ASSERT_EQ(again.size(), records.size());
    for (std::size_t i = 0; i < records.size(); ++i) {
        EXPECT_EQ(PointBits(*again[i].shape), PointBits(*records[i].shape)) << i;
        EXPECT_EQ(again[i].shape->flags, records[i].shape->flags) << i;
        EXPECT_EQ(again[i].mode, records[i].mode) << i;
        EXPECT_THAT(refhost::FeatherPointsOf(*again[i].shape), ElementsAreArray(refhost::FeatherPointsOf(*records[i].shape)))
            << i;
    }
    EXPECT_TRUE(ReadJsonShapes(WriteJsonShapes({})).empty());
}

TEST(JsonShapes, WrittenFormIsTheShortestAndLeavesNothingOut) {
    const Outline outline = {{{{0.1, 1e30}, {-2.5, 0}, {1.0 / 3, 4}}}, false};
    EXPECT_EQ(WriteJsonShapes({{MakeShape(outline), CombineMode::kDarken}}),
              "{\"shapes\": [\n  {\"closed\": false, \"vertices\": [\n"
              "    {\"p\": [-2.5, 0], \"in\": [-2.5, 0], \"out\": [-2.5, 0]}], \"mode\": \"darken\"}]}\n");
    const ShapeRecord feathered = {MakeShape(outline), std::nullopt};
    refhost::SetFeatherPoints(*feathered.shape, {{0, 0.1F}, {0, -1e-3F}});
    EXPECT_THAT(WriteJsonShapes({feathered}), testing::EndsWith("\"out\": [-2.5, 0]}], \"feather\": [\n"
                                                                "    {\"position\": 0, \"radius\": 0.1},\n"
                                                                "    {\"position\": 0, \"radius\": -0.001}]}]}\n"));
    const Outline closed = {{{{0.1, 1e30}, {-2.5, 0}, {1.0 / 3, 4}}}, true};
    EXPECT_THAT(WriteJsonShapes({{MakeShape(closed), std::nullopt}}),
                testing::HasSubstr("{\"p\": [-2.5, 0], \"in\": [0.1, 1e+30], \"out\": [0.33333334, 4]}]}"));
}

TEST(JsonShapes, FeatherPointsLieFromTheFirstVertexToTheEnd) {
    const auto points = [](const std::string& closed) {
        return ReadJsonShapes(R"({"shapes": [{"vertices": [{"p": [0, 0]}, {"p": [1, 0]}, {"p": [0, 1]}], "closed": )" + closed +
                              R"(, "feather": [{"radius": -3, "position": 2}, {"position": 0, "radius": 2.5}]}]})");
    };
    for (const char* closed : {"true", "false"}) {
        EXPECT_THAT(refhost::FeatherPointsOf(*points(closed).at(0).shape),
                    ElementsAreArray(std::vector<refhost::FeatherPoint>{{0, 2.5F}, {2, -3}}));
    }
}

TEST(JsonShapes, MissingHandlesEqualTheAnchor) {
    const char* text = R"({"total_ms": 3, "shapes": [
        {"vertices": [{"p": [0, 0], "out": [1, 1]}, {"p": [4, 0]}, {"p": [4.5, 4e0], "in": [5, 5]}], "feather": []},
        {"closed": false, "vertices": [{"p": [0, 0]}, {"p": [4, 0]}]}]})";
    EXPECT_EQ(PathText(ReadJsonShapes(text)), "M0,0 C1,1 4,0 4,0 C4,0 5,5 4.5,4 Z M0,0 L4,0");
}

TEST(JsonShapes, ComplaintsNameThePlace) {
    const auto shape = [](const std::string& fields) {
        return R"({"shapes": [{"vertices": [{"p": [1, 2]}]}, {)" + fields + "}]}";
    };
    const auto triangle = [](const std::string& feather) {
        return R"({"shapes": [{"vertices": [{"p": [0, 0]}, {"p": [1, 0]}, {"p": [0, 1]}], "feather": )" + feather + "}]}";
    };
    const struct {
        std::string text;
        const char* expected;
    } cases[] = {
        {"{}", "\"shapes\" is missing"},
        {"[]", "expected an object with the key \"shapes\""},
        {R"({"shapes": 3})", "shapes: expected an array"},
        {R"({"shapes": [3]})", "shapes[0]: expected an object"},
        {shape(""), "shapes[1]: \"vertices\" is missing"},
        {shape(R"("vertices": [])"), "shapes[1].vertices: a shape needs at least one vertex"},
        {shape(R"("vertices": [{}])"), "shapes[1].vertices[0]: \"p\" is missing"},
        {shape(R"("vertices": [{"p": [1, 2]}, {"p": [1]}])"), "shapes[1].vertices[1].p: expected two numbers, [x, y]"},
        {shape(R"("vertices": [{"p": [1, "2"]}])"), "shapes[1].vertices[0].p[1]: expected a number"},
        {shape(R"("vertices": [{"p": [1, 1e39]}])"), "shapes[1].vertices[0].p[1]: the number is out of range"},
        {shape(R"("vertices": [{"p": [1, 2], "in": null}])"), "shapes[1].vertices[0].in: expected two numbers, [x, y]"},
        {shape(R"("vertices": [{"p": [1, 2], "inn": [1, 2]}])"), "shapes[1].vertices[0]: unknown key \"inn\""},
        {shape(R"("vertices": [{"p": [1, 2]}], "closed": 1)"), "shapes[1].closed: expected true or false"},
        {shape(R"("vertices": [{"p": [1, 2]}], "mode": "xor")"),
         "shapes[1].mode: expected add, subtract, intersect, lighten, darken or difference"},
        {triangle("{}"), "shapes[0].feather: expected an array"},
        {triangle("[[1, 2]]"), "shapes[0].feather[0]: expected an object"},
        {triangle(R"([{"position": 0, "radius": 2}, {"position": 1}])"), "shapes[0].feather[1]: \"radius\" is missing"},
        {triangle(R"([{"position": 0, "radius": 1e39}])"), "shapes[0].feather[0].radius: the number is out of range"},
        {triangle(R"([{"position": 0, "radius": 1, "tension": 0}])"), "shapes[0].feather[0]: unknown key \"tension\""},
        {triangle(R"([{"position": -0.5, "radius": 1}])"),
         "shapes[0].feather[0].position: expected a number from 0 to 3, the count of segments"},
        {triangle(R"([{"position": 3.1, "radius": 1}])"),
         "shapes[0].feather[0].position: expected a number from 0 to 3, the count of segments"},
        {triangle(R"([{"position": 2.1, "radius": 1}], "closed": false)"),
         "shapes[0].feather[0].position: expected a number from 0 to 2, the count of segments"},
    };
    for (const auto& c : cases) EXPECT_EQ(FailureOf([&] { ReadJsonShapes(c.text); }), c.expected) << c.text;
    for (const char* text :
         {"", "{\"shapes\": [", "{\"shapes\": [1e999]}", "{\"shapes\": [NaN]}", "{\"shapes\": []} x", "{\"\xff\": 1}"}) {
        EXPECT_THAT(FailureOf([&] { ReadJsonShapes(text); }), testing::StartsWith("not valid JSON: ")) << text;
    }
    const std::string deep = "{\"shapes\": " + std::string(1000000, '[');
    EXPECT_THAT(FailureOf([&] { ReadJsonShapes(deep); }), testing::StartsWith("not valid JSON: "));
}

}  // namespace
}  // namespace vrltool
