#include <gmock/gmock.h>

#include <string>

#include "tests/tool/outline_text.h"
#include "tool/svg_reader.h"

namespace vrltool {
namespace {

std::string Drawn(const std::string& svg) { return PathText(ReadSvgShapes(svg)); }
/// What is drawn of `content` in an <svg> with these attributes.
std::string Drawn(const std::string& attributes, const std::string& content) {
    return Drawn("<svg " + attributes + ">" + content + "</svg>");
}
const std::string kLine = "<path d='M1 0L3 2'/>";

TEST(SvgReader, BasicShapesAreOutlines) {
    EXPECT_EQ(Drawn("", "<rect x='1' y='2' width='5' height='3'/>"), "M1,2 L6,2 L6,5 L1,5 Z");
    EXPECT_EQ(Drawn("", "<rect width='0' height='3'/><circle/><ellipse rx='0' ry='3'/><polygon/>"), "");
    EXPECT_EQ(Drawn("", "<line x1='1' x2='3' y2='1in'/>"), "M1,0 L3,96");
    EXPECT_EQ(Drawn("", "<polyline points='0,0 4 0-4,4'/><polygon points='0 0 4 0 4 4 0 0'/>"),
              "M0,0 L4,0 L-4,4 M0,0 L4,0 L4,4 Z");
    EXPECT_EQ(Drawn("width='50' height='10'", "<line x1='10%' y1='10%' x2='1e1' y2='1pc'/>"), "M5,1 L10,16");

    // A circle of eight pieces starts on its right side and runs clockwise on screen; four corner arcs are the same.
    const std::vector<ShapeRecord> round = ReadSvgShapes(
        "<svg><circle cx='5' cy='6' r='4'/><rect x='1' y='2' width='8' height='8' rx='9'/><rect width='9' height='4' "
        "ry='1'/></svg>");
    const Outline circle = OutlineOf(*round.at(0).shape);
    ASSERT_EQ(circle.vertices.size(), 8U);
    EXPECT_EQ(PointText(circle.vertices[0].anchor), "9,6");
    EXPECT_EQ(PointText(circle.vertices[2].anchor), "5,10");
    EXPECT_EQ(PointText(circle.vertices[3].anchor), "2.172,8.828");
    EXPECT_EQ(PointText(OutlineOf(*round.at(1).shape).vertices[0].anchor), "5,2");
    EXPECT_EQ(OutlineOf(*round.at(1).shape).vertices.size(), 8U);
    EXPECT_EQ(OutlineOf(*round.at(2).shape).vertices.size(), 12U);
}

TEST(SvgReader, TransformsNest) {
    EXPECT_EQ(Drawn("", "<g transform='translate(10)'><path transform='scale(2)' d='M1 0L3 2'/></g>"), "M12,0 L16,4");
    const struct {
        const char* transform;
        const char* expected;
    } cases[] = {
        {"matrix(1 2 3 4 5 6)", "M6,8 L14,20"},
        {"translate(10,20)scale(2 3)", "M12,20 L16,26"},
        {" scale( 2 , 3 ) , translate(10 20) ", "M22,60 L26,66"},
        {"rotate(90)", "M0,1 L-2,3"},
        {"rotate(-90 1 0)", "M1,0 L3,-2"},
        {"skewX(45)", "M1,0 L5,2"},
        {"skewY(45)", "M1,1 L3,5"},
        {"", "M1,0 L3,2"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Drawn("", std::string("<g transform='") + c.transform + "'>" + kLine + "</g>"), c.expected) << c.transform;
    }
}

TEST(SvgReader, ViewBoxesMapToPixels) {
    const struct {
        const char* attributes;
        const char* expected;
    } cases[] = {
        {"viewBox='1 0 10 10'", "M0,0 L2,2"},
        {"viewBox='0 0 10 10' width='20'", "M2,0 L6,4"},
        {"viewBox='0,0,10,10' height='30px' width='100%'", "M3,0 L9,6"},
        {"viewBox='0 0 10 10' width='40' height='20'", "M12,0 L16,4"},
        {"viewBox='0 0 10 10' width='40' height='20' preserveAspectRatio='xMaxYMin'", "M22,0 L26,4"},
        {"viewBox='0 0 10 10' width='40' height='20' preserveAspectRatio='xMidYMax slice'", "M4,-20 L12,-12"},
        {"viewBox='0 0 10 10' width='40' height='20' preserveAspectRatio='none'", "M4,0 L12,4"},
        {"width='40' height='20'", "M1,0 L3,2"},
    };
    for (const auto& c : cases) EXPECT_EQ(Drawn(c.attributes, kLine), c.expected) << c.attributes;
    EXPECT_EQ(Drawn("", "<svg x='5' y='1' width='20' height='20' viewBox='0 0 10 10'>" + kLine + "</svg>"), "M7,1 L11,5");
    EXPECT_EQ(Drawn("viewBox='0 0 8 4'", "<svg x='50%' viewBox='0 0 4 4'>" + kLine + "</svg>"), "M7,0 L9,2");
}

TEST(SvgReader, UseRepeatsWhatItRefersTo) {
    const std::string symbol = "<symbol id='s' viewBox='0 0 10 10'>" + kLine + "</symbol>";
    EXPECT_EQ(Drawn("", "<defs>" + symbol + "</defs>"), "");
    EXPECT_EQ(Drawn("", symbol + "<use href='#s' x='5' width='20' height='20' transform='scale(2)'/>"), "M14,0 L22,8");
    EXPECT_EQ(
        Drawn("", "<defs><g id='g' transform='scale(2)'>" + kLine + "</g></defs><use xlink:href='#g' y='1'/><use href='#g'/>"),
        "M2,1 L6,5 M2,0 L6,4");
    EXPECT_EQ(Drawn("", "<use href='#v' width='20' height='20'/><defs><svg id='v' width='10' height='10' viewBox='0 0 10 10'>" +
                            kLine + "</svg></defs>"),
              "M2,0 L6,4");
    EXPECT_EQ(
        Drawn("", "<defs><path id='a' d='M0 0L1 1'/><g id='b'><use href='#a'/><use href='#a' x='5'/></g></defs><use href='#b'/>"),
        "M0,0 L1,1 M5,0 L6,1");
}

TEST(SvgReader, OnlyWhatShowsIsRead) {
    const struct {
        std::string content;
        bool drawn;
    } cases[] = {
        {"<path fill='none' d='M1 0L3 2'/>", true},
        {"<a>" + kLine + "</a>", true},
        {"<svg:path d='M1 0L3 2'/>", true},
        {"<g visibility='hidden'><path style='fill:red; visibility : visible' d='M1 0L3 2'/></g>", true},
        {"<switch><foreignObject requiredExtensions='x'/><g>" + kLine + "</g>" + kLine + "</switch>", true},
        {"<g style='fill:red;display:none'><path style='display:inline' d='M1 0L3 2'/></g>", false},
        {"<g visibility='hidden'>" + kLine + "</g>", false},
        {"<path visibility='visible' style='visibility:collapse' d='M1 0L3 2'/>", false},
        {"<other:path d='M1 0L3 2'/>", false},
        {"<text>" + kLine + "</text><metadata>" + kLine + "</metadata>", false},
    };
    for (const auto& c : cases) EXPECT_EQ(Drawn("", c.content), c.drawn ? "M1,0 L3,2" : "") << c.content;
    for (const char* tag : {"clipPath", "mask", "pattern", "marker", "linearGradient", "symbol", "defs"}) {
        EXPECT_EQ(Drawn("", std::string("<") + tag + ">" + kLine + "</" + tag + ">"), "") << tag;
    }
}

TEST(SvgReader, ComplaintsNameElementAndFinding) {
    const struct {
        std::string content;
        const char* expected;
    } cases[] = {
        {"\n<path id='p' d='M0'/>", "<path id=\"p\">: path data offset 2: expected a number, found the end"},
        {"\n<path d='M0'/>", "<path> at line 2: path data offset 2: expected a number, found the end"},
        {"<rect width='-1'/>", "<rect> at line 1: width: must not be negative"},
        {"<rect width='5furlong'/>", "<rect> at line 1: width: \"5furlong\" is not a length"},
        {"<polygon points='1 2 3'/>", "<polygon> at line 1: points: offset 5: expected a number, found the end"},
        {"<g id='g' transform='scale(1 2 3)'/>", "<g id=\"g\">: transform: no transform \"scale\" with 3 values"},
        {"<g transform='scale 1'/>", "<g> at line 1: transform: offset 6: expected \"(\", found \"1\""},
        {"<svg viewBox='0 0 0 1'/>", "<svg> at line 1: viewBox: width and height must be above 0"},
        {"<svg viewBox='0 0 1 1' preserveAspectRatio='xMid'/>",
         "<svg> at line 1: preserveAspectRatio: unknown alignment \"xMid\""},
        {"<use href='other.svg#a'/>", "<use> at line 1: only references to this file's own elements can be drawn"},
        {"<use href='#a'/>", "<use> at line 1: nothing has the id \"a\""},
        {"<g id='a'><use href='#a'/></g>", "<use> at line 1: refers to itself"},
        {"<defs><g id='a'><use id='u' href='#b'/></g><g id='b'><use href='#a'/></g></defs><use href='#a'/>",
         "<use> at line 1: refers to itself"},
        {"<path transform='scale(1e39)' d='M0 0L1 1'/>", "<path> at line 1: a coordinate is out of range"},
    };
    for (const auto& c : cases) EXPECT_EQ(FailureOf([&] { Drawn("", c.content); }), c.expected) << c.content;
    EXPECT_THAT(FailureOf([] { Drawn("<svg>\n<g"); }), testing::StartsWith("not well-formed XML at line 2: "));
    EXPECT_EQ(FailureOf([] { Drawn("<html/>"); }), "not an SVG drawing: the outermost element is <html>");
}

TEST(SvgReader, HostileFilesFailInsteadOfExhaustingMemory) {
    std::string deep = "<svg>";
    for (int i = 0; i < 100000; ++i) deep += "<g>";
    for (int i = 0; i < 100000; ++i) deep += "</g>";
    EXPECT_EQ(FailureOf([&] { Drawn(deep + "</svg>"); }), "elements are nested deeper than 256");

    std::string bomb = "<g id='l0'>" + kLine + "</g>";
    for (int level = 1; level < 30; ++level) {
        const std::string use = "<use href='#l" + std::to_string(level - 1) + "'/>";
        bomb += "<g id='l" + std::to_string(level) + "'>" + use + use + "</g>";
    }
    EXPECT_THAT(FailureOf([&] { Drawn("", "<defs>" + bomb + "</defs><use href='#l29'/>"); }),
                testing::HasSubstr("multiply beyond"));
}

TEST(SvgReader, TheCanvasIsThereWhenTheDrawingHasASize) {
    const auto canvas = [](const std::string& attributes) {
        const std::optional<M_FloatRect> rect =
            ReadSvgDrawing("<svg " + attributes + "><svg width='3' height='4'/></svg>").canvas;
        return rect ? std::pair(rect->right, rect->bottom) : std::pair(0.0, 0.0);
    };
    EXPECT_EQ(canvas("width='30' height='1in'"), std::pair(30.0, 96.0));
    EXPECT_EQ(canvas("width='30' viewBox='5 5 10 20'"), std::pair(30.0, 60.0));
    EXPECT_EQ(canvas("width='100%' height='100%' viewBox='0 0 10 20'"), std::pair(10.0, 20.0));
    for (const char* unknown : {"", "width='30'", "width='30' height='50%'", "width='0' height='4'"}) {
        EXPECT_EQ(canvas(unknown), std::pair(0.0, 0.0)) << unknown;
    }
}

}  // namespace
}  // namespace vrltool
