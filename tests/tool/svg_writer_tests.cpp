#include <gmock/gmock.h>

#include "tests/tool/outline_text.h"
#include "tests/tool/random_shapes.h"
#include "tool/path_data.h"
#include "tool/svg_reader.h"
#include "tool/svg_writer.h"

namespace vrltool {
namespace {

std::vector<ShapeRecord> RecordsOf(const std::string& path_data) {
    std::vector<ShapeRecord> records;
    for (const Outline& outline : ParsePathData(path_data)) records.push_back({MakeShape(outline), std::nullopt});
    return records;
}

TEST(SvgWriter, TheDrawingShowsTheCanvasOrAllCurves) {
    const auto head = [](const std::string& lead) { return "<svg xmlns=\"http://www.w3.org/2000/svg\" " + lead; };
    EXPECT_EQ(
        WriteSvgShapes(RecordsOf("M1.5 2.25 L4.1 2 C5 2.5 5 3 4.1 3.5 Z M2 2 C2 1 3 1 3 2 L2 2 Z M.5 .5 L1e-5 0.333333343")),
        head("width=\"5\" height=\"4\" viewBox=\"0 0 5 4\" overflow=\"visible\">\n<path fill-rule=\"evenodd\" d=\""
             "M1.5,2.25 L4.1,2 C5,2.5 5,3 4.1,3.5 Z\nM2,2 C2,1 3,1 3,2 Z\nM0.5,0.5 L1e-05,0.33333334\"/>\n</svg>\n"));
    EXPECT_THAT(WriteSvgShapes(RecordsOf("M-1.5 2 L4 2 L4 9.5 C4 9.5 0 9 -1.5 2 Z")),
                testing::AllOf(testing::StartsWith(head("width=\"6\" height=\"10\" viewBox=\"-2 0 6 10\" overflow=\"visible\">")),
                               testing::HasSubstr("L4,9.5 C4,9.5 0,9 -1.5,2 Z\"")));
    EXPECT_TRUE(ReadSvgShapes(WriteSvgShapes({})).empty());
    // What leaves a canvas does not move it.
    EXPECT_THAT(WriteSvgShapes(RecordsOf("M-1.5 2 L4 2 L4 9.5 Z"), {.canvas = M_FloatRect{0, 0, 3.5, 8}, .total_ms = {}}),
                testing::StartsWith(head("width=\"3.5\" height=\"8\" viewBox=\"0 0 3.5 8\" overflow=\"visible\">")));
}

TEST(SvgWriter, WrittenShapesReadBackBitForBit) {
    std::mt19937 random(21);
    std::vector<ShapeRecord> records;
    for (std::size_t size = 2; size < 60; ++size) {
        const Outline outline = RandomOutline(size, size % 3 != 0, [&] { return std::abs(RandomFloat(random)); });
        records.push_back({MakeShape(outline), std::nullopt});
    }
    const std::vector<ShapeRecord> again = ReadSvgShapes(WriteSvgShapes(records));
    ASSERT_EQ(again.size(), records.size());
    for (std::size_t i = 0; i < records.size(); ++i) {
        EXPECT_EQ(PointBits(*again[i].shape), PointBits(*records[i].shape)) << i;
        EXPECT_EQ(again[i].shape->flags, records[i].shape->flags) << i;
    }
}

}  // namespace
}  // namespace vrltool
