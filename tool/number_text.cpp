#include "tool/number_text.h"

#include <charconv>
#include <cmath>
#include <iterator>

namespace vrltool {
namespace {

template <class Number>
void AppendShortest(Number number, std::string& text) {
    char digits[32];  // the longest double takes 24
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr);
    if (number == 0 && std::signbit(number)) text.append(".0");  // -0 is a whole number in JSON, which has no sign at 0
}

}  // namespace

void AppendNumber(float number, std::string& text) { AppendShortest(number, text); }
void AppendNumber(double number, std::string& text) { AppendShortest(number, text); }

}  // namespace vrltool
