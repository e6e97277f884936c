#include "tool/message.h"

#include <cstdio>

namespace vrltool {

std::string OnOneLine(std::string text) {
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < ' ') c = ' ';
    }
    return text;
}

void PrintMessage(const std::string& text) { std::fprintf(stderr, "vrl: %s\n", OnOneLine(text).c_str()); }

}  // namespace vrltool
