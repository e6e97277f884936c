#include "tests/tool/png_reading.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstdio>

namespace vrltool {

GreyPicture ReadGreyPng(const std::string& path) {
    GreyPicture picture;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (file == nullptr || setjmp(png_jmpbuf(png)) != 0) {
        ADD_FAILURE() << "no PNG: " << path;
    } else {
        png_init_io(png, file);
        png_read_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
        EXPECT_EQ(png_get_color_type(png, info), PNG_COLOR_TYPE_GRAY);
        picture.width = static_cast<int>(png_get_image_width(png, info));
        picture.height = static_cast<int>(png_get_image_height(png, info));
        picture.depth = png_get_bit_depth(png, info);
        png_bytepp rows = png_get_rows(png, info);
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) {
                picture.samples.push_back(picture.depth == 16 ? rows[y][2 * x] * 256U + rows[y][2 * x + 1] : rows[y][x]);
            }
        }
    }
    png_destroy_read_struct(&png, &info, nullptr);
    if (file != nullptr) std::fclose(file);
    return picture;
}

}  // namespace vrltool
