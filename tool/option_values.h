#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>

#include "host/geometry_records.h"

namespace vrltool {

// Values of command line options. Every reader throws CLI::ValidationError, with the text and what it should be.

/// Width and height of a picture in pixels.
struct PixelSize {
    std::int32_t width = 0, height = 0;
};

inline constexpr std::int32_t kMaxSide = 32767;  // pixels; coordinates of rows and runs beyond it are not dependable

PixelSize ParseSize(const std::string& text);  // "WxH"
double ParseNumber(const std::string& text, double low, double high);
std::int32_t ParseWhole(const std::string& text, std::int32_t low, std::int32_t high);
/// "X" or "X,Y", each from 0; one number stands for both.
M_Vector2T<double> ParseRadii(const std::string& text);
M_Matrix3 ParseMatrix(const std::string& text);  // "a,b,c,d,tx,ty"

/// The name of a file to write; "-" for standard output, by whatever name.
std::string ParseOutputName(const std::string& text);

/// The ending of a file's name in small letters, with its dot.
std::string EndingOf(const std::string& path);

/// Adds -o for a command that writes a picture. A name with another ending is refused: most likely it is that of the shapes,
/// which would be lost.
void AddPngOutput(CLI::App& command, std::string& output);

/// Adds an option whose value `read` takes from its text. A complaint gets the option's first name.
template <class Read>
CLI::Option* AddValue(CLI::App& command, const char* name, const char* value_name, const char* description, Read read) {
    const auto named_read = [name = std::string(name), read](const std::string& text) {
        try {
            read(text);
        } catch (const CLI::ValidationError& error) {
            throw CLI::ValidationError(name.substr(0, name.find(',')), error.what());
        }
    };
    return command.add_option_function<std::string>(name, named_read, description)->type_name(value_name);
}

/// Adds --aspect, the horizontal pixel aspect ratio.
void AddAspect(CLI::App& command, double& aspect);

/// The nearest 16.16 number; the value is within its range.
std::int32_t ToFixed(double value);

}  // namespace vrltool
