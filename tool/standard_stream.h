#pragma once

#include <string>

namespace vrltool {

inline constexpr const char* kStandardStream = "-";  // as a file name: standard input or standard output

// What messages call a file.
inline std::string InputName(const std::string& path) {
    return path == kStandardStream ? "standard input" : path.empty() ? "\"\"" : path;
}
inline std::string OutputName(const std::string& path) {
    return path == kStandardStream ? "standard output" : path.empty() ? "\"\"" : path;
}

}  // namespace vrltool
