#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tool/shape_record.h"

namespace vrltool {

/// What became of one picture.
struct Traced {
    std::string image;  // its name for the user
    std::int32_t width = 0, height = 0;
    std::vector<ShapeRecord> shapes;
    double milliseconds = 0;             // of the library's call
    std::vector<std::string> notes;      // what the user should know about it
    std::optional<std::string> failure;  // why there are no shapes of it
};

/// A line a picture under a header; numbers in columns, then the name, so that whatever is in it moves no number. A picture
/// that failed has none.
std::string StatsTable(const std::vector<Traced>& pictures);

/// {"pictures": [...]} with a line and an object a picture: numbers and notes, or the error.
std::string StatsJson(const std::vector<Traced>& pictures);

}  // namespace vrltool
