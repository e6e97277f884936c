#include "tests/tool/png_files.h"

#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <cstdio>

namespace vrltool {
namespace {

std::size_t ChannelsOf(int color_type) {
    if (color_type == PNG_COLOR_TYPE_PALETTE) return 1;
    return (color_type & PNG_COLOR_MASK_COLOR ? 3U : 1U) + (color_type & PNG_COLOR_MASK_ALPHA ? 1U : 0U);
}

void SetClear(png_structp png, png_infop info, const PngPicture& picture) {
    const std::vector<std::uint16_t>& clear = picture.clear;
    if (clear.empty()) return;
    const std::vector<png_byte> alpha(clear.begin(), clear.end());
    const png_color_16 color = {0, clear[0], clear[clear.size() / 2], clear.back(), clear[0]};
    const int count = picture.palette.empty() ? 1 : static_cast<int>(alpha.size());
    png_set_tRNS(png, info, picture.palette.empty() ? nullptr : alpha.data(), count, &color);
}

void SetPalette(png_structp png, png_infop info, const PngPicture& picture) {
    std::vector<png_color> colors;
    for (std::size_t i = 0; i + 2 < picture.palette.size(); i += 3) {
        colors.push_back({picture.palette[i], picture.palette[i + 1], picture.palette[i + 2]});
    }
    if (!colors.empty()) png_set_PLTE(png, info, colors.data(), static_cast<int>(colors.size()));
}

void SetChunks(png_structp png, png_infop info, const PngPicture& picture) {
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_ALWAYS, nullptr, 0);
    for (const auto& [name, content] : picture.chunks) {
        png_unknown_chunk chunk = {{}, const_cast<png_bytep>(content.data()), content.size(), PNG_HAVE_IHDR};
        std::copy_n(name.data(), 4, chunk.name);
        png_set_unknown_chunks(png, info, &chunk, 1);
    }
}

/// A byte a sample, two for 16 bits, high byte first.
std::vector<png_byte> BytesOf(const PngPicture& picture) {
    std::vector<png_byte> bytes;
    for (const std::uint32_t sample : picture.samples) {
        if (picture.depth == 16) bytes.push_back(static_cast<png_byte>(sample >> 8));
        bytes.push_back(static_cast<png_byte>(sample & 0xFF));
    }
    return bytes;
}

}  // namespace

PngPicture ReadPngFile(const std::string& path) {
    PngPicture picture;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, [](png_structp, png_const_charp) {});
    png_infop info = png_create_info_struct(png);
    if (file == nullptr || setjmp(png_jmpbuf(png)) != 0) {
        ADD_FAILURE() << "no PNG: " << path;
    } else {
        png_init_io(png, file);
        png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
        picture.width = static_cast<int>(png_get_image_width(png, info));
        picture.height = static_cast<int>(png_get_image_height(png, info));
        picture.depth = png_get_bit_depth(png, info);
        picture.color_type = png_get_color_type(png, info);
        const std::size_t samples = static_cast<std::size_t>(picture.width) * ChannelsOf(picture.color_type);
        png_bytepp rows = png_get_rows(png, info);
        for (int y = 0; y < picture.height; ++y) {
            for (std::size_t i = 0; i < samples; ++i) {
                picture.samples.push_back(picture.depth == 16 ? rows[y][2 * i] * 256U + rows[y][2 * i + 1] : rows[y][i]);
            }
        }
    }
    png_destroy_read_struct(&png, &info, nullptr);
    if (file != nullptr) std::fclose(file);
    return picture;
}

void WritePngFile(const std::string& path, const PngPicture& picture) {
    std::vector<png_byte> bytes = BytesOf(picture);
    std::vector<png_bytep> rows;
    const std::size_t stride = bytes.size() / static_cast<std::size_t>(picture.height);
    for (std::size_t start = 0; start < bytes.size(); start += stride) rows.push_back(bytes.data() + start);

    std::FILE* file = std::fopen(path.c_str(), "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (file == nullptr || setjmp(png_jmpbuf(png)) != 0) {
        ADD_FAILURE() << "cannot write " << path;
    } else {
        png_init_io(png, file);
        png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width), static_cast<png_uint_32>(picture.height), picture.depth,
                     picture.color_type, picture.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        SetPalette(png, info, picture);
        SetClear(png, info, picture);
        SetChunks(png, info, picture);
        png_set_rows(png, info, rows.data());
        png_write_png(png, info, PNG_TRANSFORM_PACKING, nullptr);
    }
    png_destroy_write_struct(&png, &info);
    if (file != nullptr) std::fclose(file);
}

}  // namespace vrltool
