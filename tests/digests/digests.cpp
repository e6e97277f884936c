// Digests of a fixed set of renders, insets and traces: one line "NAME DIGEST" for each. They are the same for every compiler,
// build type and number of threads. vrl_digests FILE compares them with those recorded in FILE and tells which ones differ.

#include <bit>
#include <cinttypes>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "api/vrl.h"
#include "refhost/refhost.h"
#include "refhost/shape/feather_points.h"
#include "tests/support/shapes.h"
#include "tests/support/worlds.h"

namespace {

using Shapes = std::vector<boost::shared_ptr<DY_Shape>>;

/// 64-bit FNV-1a of 32-bit words, whatever their order in memory.
class Digest {
 public:
    void Add(std::uint32_t word) {
        for (int byte = 0; byte < 4; ++byte, word >>= 8) hash_ = (hash_ ^ (word & 255U)) * 0x100000001b3U;
    }
    void Add(std::int32_t number) { Add(static_cast<std::uint32_t>(number)); }
    void Add(float number) { Add(std::bit_cast<std::uint32_t>(number)); }
    std::string Text() const {
        char text[17];
        std::snprintf(text, sizeof text, "%016" PRIx64, hash_);
        return text;
    }

 private:
    std::uint64_t hash_ = 0xcbf29ce484222325U;
};

// Inputs come from whole numbers, so that they owe nothing to anybody's sine or random distribution.

/// A number of `lowest` to `highest` in sixteenths.
float Sixteenths(std::mt19937& random, int lowest, int highest) {
    return static_cast<float>(lowest) + static_cast<float>(random() % (16U * static_cast<std::uint32_t>(highest - lowest))) / 16;
}

/// A closed, self-overlapping outline through random points of a square. Handles reach `reach` of the way between a vertex's
/// neighbours: smooth, or straight sides and corners for 0.
std::unique_ptr<DY_Shape> Scribble(std::mt19937& random, int vertices, int size, float reach = 0.125F) {
    std::vector<WEX_Item> corners(static_cast<std::size_t>(vertices));
    for (WEX_Item& corner : corners) corner = {Sixteenths(random, 0, size), Sixteenths(random, 0, size)};
    std::vector<WEX_Item> items;
    const auto at = [&](std::size_t i) { return corners[i % corners.size()]; };
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const WEX_Item before = at(i + corners.size() - 1), here = at(i), next = at(i + 1), after = at(i + 2);
        items.insert(items.end(), {here,
                                   {here.x + (next.x - before.x) * reach, here.y + (next.y - before.y) * reach},
                                   {next.x - (after.x - here.x) * reach, next.y - (after.y - here.y) * reach}});
    }
    return ShapeOfItems(items);
}

std::unique_ptr<DY_Shape> Feathered(std::unique_ptr<DY_Shape> shape) {
    refhost::SetFeatherPoints(*shape, {{0.25, 9}, {1.5, -6}, {2.75, 3}});
    return shape;
}

/// White discs on black, soft by a dozen levels at the edge, some pixels changed at random.
std::unique_ptr<GW_World> Discs(std::mt19937& random, std::int32_t size, std::uint32_t specks) {
    auto world = std::make_unique<PaddedWorld>(size, size, 12);
    const std::int32_t centers[][3] = {
        {size / 3, size / 3, size / 4}, {size * 2 / 3, size / 2, size / 5}, {size / 2, size * 3 / 4, size / 6}};
    for (std::int32_t y = 0; y < size; ++y) {
        for (std::int32_t x = 0; x < size; ++x) {
            std::int32_t level = 0;
            for (const auto& [cx, cy, radius] : centers) {
                const std::int32_t inside = radius * radius - (x - cx) * (x - cx) - (y - cy) * (y - cy);
                level = std::max(level, std::clamp(128 + inside * 64 / radius, 0, 255));
            }
            if (random() % 1000 < specks) level = 255 - level;
            const auto sample = static_cast<std::uint8_t>(level);
            world->Set(x, y, {255, sample, static_cast<std::uint8_t>(255 - level), sample});
        }
    }
    return world;
}

using Report = std::vector<std::string>;

void AddLine(Report& report, const std::string& name, const Digest& digest) { report.push_back(name + ' ' + digest.Text()); }

template <class P>
void Render(Report& report, const std::string& name, const DY_Shape& shape, const VRL_MaskParams& params,
            const M_Matrix3* transform) {
    GW_UnoBuffer buffer(97, 83, kDepthOf<P>);
    M_LRect touched = {};
    Digest digest;
    digest.Add(VRL_MaskWithShape(&shape, &params, transform, &buffer, &touched));
    for (const std::int32_t edge : {touched.left, touched.top, touched.right, touched.bottom}) digest.Add(edge);
    for (const P sample : SamplesOf<P>(buffer)) digest.Add(std::uint32_t{sample});
    AddLine(report, "mask/" + name + '/' + std::to_string(kDepthOf<P>), digest);
}

void Add(Digest& digest, const Shapes& shapes) {
    digest.Add(static_cast<std::uint32_t>(shapes.size()));
    for (const auto& shape : shapes) {
        digest.Add(std::uint32_t{shape->flags});
        for (const WEX_Item item : ItemsOf(*shape)) digest.Add(item.x), digest.Add(item.y);
    }
}

void Renders(Report& report) {
    std::mt19937 random(1);
    const std::pair<const char*, std::unique_ptr<DY_Shape>> shapes[] = {
        {"triangle", Polygon({{3.25F, 4.5F}, {91.75F, 20.125F}, {30, 80.0625F}})},
        {"scribble", Scribble(random, 9, 90)},
        {"many", Scribble(random, 120, 90)},
        {"feathered", Feathered(Polygon({{20, 15}, {75, 22}, {70, 66}, {24, 60}}))},
    };
    constexpr std::int32_t kOne = 65536;
    const std::pair<const char*, VRL_MaskParams> variants[] = {
        {"plain", {.quality = 1}},
        {"draft", {.feather_x = 3 * kOne, .feather_y = 5 * kOne / 2, .quality = 0}},
        {"soft", {.feather_x = 12 * kOne, .feather_y = 40 * kOne, .quality = 1}},
        {"faded", {.feather_y = kOne, .invert = 1, .opacity = kOne / 3, .quality = 1}},
        {"grown", {.expansion = 5 * kOne / 2, .pixel_aspect = 1.5, .quality = 1}},
        {"shrunk", {.feather_x = 2 * kOne, .expansion = -3 * kOne, .variable_feather_option = 1, .quality = 1}},
    };
    const M_Matrix3 turned = {{{0.75, 0.5, 0}, {-0.5, 0.75, 0}, {20.5, -3.25, 1}}};
    for (const auto& [shape_name, shape] : shapes) {
        for (const auto& [variant, params] : variants) {
            const std::string name = std::string(shape_name) + '/' + variant;
            Render<GW_Pixel8>(report, name, *shape, params, nullptr);
            Render<GW_Pixel16>(report, name, *shape, params, nullptr);
            Render<GW_Pixel8>(report, name + "/turned", *shape, params, &turned);
        }
    }
}

void Insets(Report& report) {
    std::mt19937 random(2);
    for (const auto& [vertices, reach] : {std::pair{4, 0.0F}, {9, 0.125F}, {60, 0.0F}}) {
        const auto shape = Scribble(random, vertices, 200, reach);
        for (const VRL_Join join : {kVRLJoinMiter, kVRLJoinRound, kVRLJoinBevel}) {
            for (const double distance : {-12.5, -1.0, 0.25, 4.0}) {
                Shapes pieces;
                VRL_InsetShapeJoin(*shape, true, distance, 1.25, join, pieces);
                Digest digest;
                Add(digest, pieces);
                AddLine(report, "inset/" + std::to_string(vertices) + '/' + std::to_string(join) + '/' + std::to_string(distance),
                        digest);
            }
        }
    }
}

void Traces(Report& report) {
    std::mt19937 random(3);
    const M_Matrix3 mirrored = {{{-1, 0, 0}, {0.25, 1, 0}, {100, 3, 1}}};
    const std::pair<const char*, VRL_AutoTraceParams> variants[] = {
        {"plain", {}},
        {"close", {.tolerance = 0.5F, .threshold = 30}},
        {"loose", {.tolerance = 2, .invert = 1, .corner_angle = 20}},
        {"blurred", {.blur_radius = 2.5F, .layer_transform = &mirrored}},
        {"merged", {.channel = kVRLTraceHue, .minimum_area = 12}},
    };
    for (const auto& [size, specks] : {std::pair{64, 0U}, {150, 10U}, {200, 200U}}) {
        const auto world = Discs(random, size, specks);
        for (const auto& [variant, params] : variants) {
            Shapes shapes;
            VRL_NewMasksFromWorld(world.get(), &params, shapes);
            Digest digest;
            Add(digest, shapes);
            AddLine(report, "trace/" + std::to_string(size) + '/' + variant, digest);
        }
    }
}

/// Prints what differs from the file's lines; true when nothing does.
bool SameAs(const char* path, const Report& lines) {
    std::ifstream file(path);
    std::size_t different = 0;
    std::string recorded;
    for (const std::string& line : lines) {
        if (std::getline(file, recorded) && recorded == line) continue;
        std::printf("now %s, recorded %s\n", line.c_str(), recorded.c_str());
        ++different;
        recorded.clear();
    }
    const bool has_more = static_cast<bool>(std::getline(file, recorded));
    std::printf("%zu results, %zu differ from those recorded%s\n", lines.size(), different, has_more ? ", which are more" : "");
    return different == 0 && !has_more;
}

}  // namespace

int main(int argc, char** argv) {
    refhost::Initialize();
    VRL_Birth();
    Report report;
    Renders(report);
    Insets(report);
    Traces(report);
    VRL_Death();
    if (argc > 1) return SameAs(argv[1], report) ? 0 : 1;
    for (const std::string& line : report) std::puts(line.c_str());
}
