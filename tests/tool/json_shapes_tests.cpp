#include <gmock/gmock.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>

#include "tests/tool/outline_text.h"
#include "tool/json_shapes.h"

namespace vrltool {
namespace {

/// Finite floats of every magnitude, as likely as their bit patterns.
float RandomFloat(std::mt19937& random) {
    for (;;) {
        const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isfinite(value)) return value;
    }
}

std::vector<std::uint32_t> PointBits(const ShapeRecord& record) {
    std::vector<std::uint32_t> bits;
    for (int i = 0; i < (*record.shape->GetPoints())->count; ++i) {
        WEX_Item item{};
        WEX_GetItem(record.shape->GetPoints(), i, &item);
        bits.push_back(std::bit_cast<std::uint32_t>(item.x));
        bits.push_back(std::bit_cast<std::uint32_t>(item.y));
    }
    return bits;
}

TEST(JsonShapes, WrittenShapesReadBackBitForBit) {
    std::mt19937 random(20);
    std::vector<ShapeRecord> records;
    for (std::size_t size = 1; size < 60; ++size) {
        Outline outline;
        outline.closed = size % 3 != 0;
        const auto point = [&] {
            return Point{static_cast<double>(RandomFloat(random)), static_cast<double>(RandomFloat(random))};
        };
        for (std::size_t i = 0; i < size; ++i) outline.vertices.push_back({point(), point(), point()});
        records.push_back({MakeShape(outline), std::nullopt});
        if (size % 7 != 0) records.back().mode = static_cast<CombineMode>(size % 7 - 1);
    }
    const std::vector<ShapeRecord> again = ReadJsonShapes(WriteJsonShapes(records));
    ASSERT_EQ(again.size(), records.size());
    for (std::size_t i = 0; i < records.size(); ++i) {
        EXPECT_EQ(PointBits(again[i]), PointBits(records[i])) << i;
        EXPECT_EQ(again[i].shape->flags, records[i].shape->flags) << i;
        EXPECT_EQ(again[i].mode, records[i].mode) << i;
    }
    EXPECT_TRUE(ReadJsonShapes(WriteJsonShapes({})).empty());
}

TEST(JsonShapes, WrittenFormIsTheShortestAndLeavesNothingOut) {
    const Outline outline = {{{{0.1, 1e30}, {-2.5, 0}, {1.0 / 3, 4}}}, false};
    EXPECT_EQ(WriteJsonShapes({{MakeShape(outline), CombineMode::kDarken}}),
              "{\"shapes\": [\n  {\"closed\": false, \"vertices\": [\n"
              "    {\"p\": [-2.5, 0], \"in\": [-2.5, 0], \"out\": [-2.5, 0]}], \"mode\": \"darken\"}]}\n");
    const Outline closed = {{{{0.1, 1e30}, {-2.5, 0}, {1.0 / 3, 4}}}, true};
    EXPECT_THAT(WriteJsonShapes({{MakeShape(closed), std::nullopt}}),
                testing::HasSubstr("{\"p\": [-2.5, 0], \"in\": [0.1, 1e+30], \"out\": [0.33333334, 4]}]}"));
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
        {shape(R"("vertices": [{"p": [1, 2]}], "feather": [{"position": 0, "radius": 2}])"),
         "shapes[1].feather: feather points are not supported by this version"},
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
