#include "tool/number_text.h"

#include <charconv>
#include <iterator>

namespace vrltool {
namespace {

template <class Number>
void AppendShortest(Number number, std::string& text) {
    char digits[32];  // the longest double takes 24
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr);
}

}  // namespace

void AppendNumber(float number, std::string& text) { AppendShortest(number, text); }
void AppendNumber(double number, std::string& text) { AppendShortest(number, text); }

}  // namespace vrltool
