#pragma once

#include <string>

namespace vrltool {

/// The text on one line: control characters, which a file or its name may have put into it, are spaces.
std::string OnOneLine(std::string text);

/// One line on standard error, with the program's name before it.
void PrintMessage(const std::string& text);

}  // namespace vrltool
