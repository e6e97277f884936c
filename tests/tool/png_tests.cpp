#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/tool/outline_text.h"
#include "tests/tool/png_files.h"
#include "tool/png_reader.h"
#include "tool/png_writer.h"
#include "tool/world_rows.h"

namespace vrltool {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Samples = std::vector<std::uint32_t>;

class Png : public testing::Test {
 protected:
    ~Png() override { std::filesystem::remove(path_); }

    std::unique_ptr<GW_World> Read() { return ReadPng(path_, progress_).world; }
    void Write(const GW_World& world) {
        OutputFile file(path_);
        WritePng(world, file, progress_);
        file.Commit();
    }

    std::string path_ = testing::TempDir() + "vrl_" + std::to_string(getpid()) + ".png";  // tests run side by side
    WorkProgress progress_{1};
};

template <class P>
Samples ComponentsOf(const GW_World& world) {
    Samples components;
    for (std::int32_t y = 0; y < world.height; ++y) {
        for (const P component : RowOf<P>(world, y)) components.push_back(component);
    }
    return components;
}

/// A 9 by 9 picture in which the given pixels follow each other, in another order in every row.
Samples Tiled(const std::vector<Samples>& pixels) {
    Samples samples;
    for (std::size_t i = 0; i < 81; ++i) {
        const Samples& pixel = pixels[(i + i / 9 * 2) % pixels.size()];
        samples.insert(samples.end(), pixel.begin(), pixel.end());
    }
    return samples;
}

TEST_F(Png, EveryKindOfPictureBecomesAlphaRedGreenBlue) {
    const struct {
        int color_type, depth;
        std::vector<std::uint8_t> palette;
        std::vector<std::uint16_t> clear;
        std::vector<Samples> pixels, expected;
    } cases[] = {
        {0, 1, {}, {}, {{0}, {1}}, {{255, 0, 0, 0}, {255, 255, 255, 255}}},
        {0, 4, {}, {3}, {{0}, {3}, {15}}, {{255, 0, 0, 0}, {0, 51, 51, 51}, {255, 255, 255, 255}}},
        {0, 8, {}, {}, {{7}, {200}}, {{255, 7, 7, 7}, {255, 200, 200, 200}}},
        {0, 16, {}, {}, {{65535}, {32768}, {1}}, {{32768, 32768, 32768, 32768}, {32768, 16384, 16384, 16384}, {32768, 1, 1, 1}}},
        {4, 8, {}, {}, {{10, 20}, {0, 255}}, {{20, 10, 10, 10}, {255, 0, 0, 0}}},
        {2, 8, {}, {1, 2, 3}, {{1, 2, 3}, {1, 2, 4}}, {{0, 1, 2, 3}, {255, 1, 2, 4}}},
        {2, 16, {}, {}, {{2, 65535, 0}, {3, 4, 5}}, {{32768, 1, 32768, 0}, {32768, 2, 2, 3}}},
        {6, 8, {}, {}, {{1, 2, 3, 4}, {5, 6, 7, 0}}, {{4, 1, 2, 3}, {0, 5, 6, 7}}},
        {6, 16, {}, {}, {{65535, 32767, 0, 2}, {0, 0, 2, 65535}}, {{1, 32768, 16384, 0}, {32768, 0, 0, 1}}},
        {3, 2, {9, 8, 7, 1, 2, 3, 4, 5, 6}, {0, 99}, {{0}, {1}, {2}}, {{0, 9, 8, 7}, {99, 1, 2, 3}, {255, 4, 5, 6}}},
        {3, 8, {9, 8, 7, 1, 2, 3}, {}, {{1}, {0}}, {{255, 1, 2, 3}, {255, 9, 8, 7}}},
    };
    for (const auto& c : cases) {
        for (const bool interlaced : {false, true}) {
            WritePngFile(path_, {9, 9, c.depth, c.color_type, Tiled(c.pixels), interlaced, c.palette, c.clear});
            const std::unique_ptr<GW_World> world = Read();
            EXPECT_EQ(world->Depth(), c.depth == 16 ? 16 : 8);
            EXPECT_EQ(c.depth == 16 ? ComponentsOf<GW_Pixel16>(*world) : ComponentsOf<GW_Pixel8>(*world), Tiled(c.expected))
                << "color type " << c.color_type << ", depth " << c.depth << ", interlaced " << interlaced;
        }
    }
}

TEST_F(Png, WrittenWorldsReadBackUnchanged) {
    const std::unique_ptr<GW_World> deep(GW_World::New(113, 73, 16, 0));  // 113 * 73 * 4 > 32769: every level is there
    std::uint32_t count = 0;
    for (std::int32_t y = 0; y < deep->height; ++y) {
        for (GW_Pixel16& sample : RowOf<GW_Pixel16>(*deep, y)) sample = static_cast<GW_Pixel16>(count++ % 32769);
    }
    Write(*deep);
    EXPECT_EQ(ComponentsOf<GW_Pixel16>(*Read()), ComponentsOf<GW_Pixel16>(*deep));
    const PngPicture picture = ReadPngFile(path_);
    EXPECT_EQ(picture.depth, 16);
    EXPECT_EQ(picture.color_type, 6);
    EXPECT_THAT(Samples(picture.samples.begin(), picture.samples.begin() + 4), testing::ElementsAre(2, 4, 6, 0));

    const std::unique_ptr<GW_World> shallow(GW_World::New(2, 1, 8, 0));
    for (std::uint8_t i = 0; i < 8; ++i) RowOf<GW_Pixel8>(*shallow, 0)[i] = i;
    Write(*shallow);
    EXPECT_EQ(ReadPngFile(path_).samples, (Samples{1, 2, 3, 0, 5, 6, 7, 4}));
}

TEST_F(Png, DamageIsToldWithTheFilesName) {
    WritePngFile(path_, {9, 9, 8, 2, Tiled({{1, 2, 3}}), false, {}, {}});
    std::string whole;
    {
        std::ifstream file(path_, std::ios::binary);
        whole.assign(std::istreambuf_iterator<char>(file), {});
    }
    const auto complaint = [&](const std::string& content) {
        std::ofstream(path_, std::ios::binary) << content;
        return FailureOf([&] { Read(); });
    };
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(complaint(whole.substr(0, length)), path_ + ": the file ends too early");
    }
    const auto damaged = [&](std::size_t offset, char byte) {
        std::string copy = whole;
        copy[offset] = byte;
        return copy;
    };
    for (std::size_t offset = 0; offset + 8 < whole.size(); ++offset) {  // but for the last chunk, which is empty
        EXPECT_THAT(complaint(damaged(offset, static_cast<char>(whole[offset] ^ 0x10))), StartsWith(path_ + ": ")) << offset;
    }
    std::ofstream(path_, std::ios::binary) << whole;
    EXPECT_EQ(ReadPng(path_, progress_).note, "");
    std::ofstream(path_, std::ios::binary) << whole << '\0';
    EXPECT_EQ(ReadPng(path_, progress_).note, "bytes that follow the end of the picture are left out");
    std::ofstream(path_, std::ios::binary) << whole << whole;
    EXPECT_EQ(ReadPng(path_, progress_).note, "another picture follows the first, which alone is read");
    EXPECT_THAT(complaint("GIF89a and more"), HasSubstr("Not a PNG file"));
    WritePngFile(path_, {32768, 1, 8, 0, Samples(32768), false, {}, {}});
    EXPECT_EQ(FailureOf([&] { Read(); }), path_ + ": the picture is larger than 32767 pixels each way");
}

}  // namespace
}  // namespace vrltool
