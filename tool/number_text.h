#pragma once

#include <string>

namespace vrltool {

/// Appends the shortest text that reads back to the same number.
void AppendNumber(float number, std::string& text);
void AppendNumber(double number, std::string& text);

}  // namespace vrltool
