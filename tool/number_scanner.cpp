#include "tool/number_scanner.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>

#include "tool/failure.h"

namespace vrltool {
namespace {

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsSign(char c) { return c == '+' || c == '-'; }

}  // namespace

char NumberScanner::Peek() {
    while (offset_ < text_.size() && IsSpace(text_[offset_])) ++offset_;
    return offset_ < text_.size() ? text_[offset_] : '\0';
}

bool NumberScanner::StartsNumber() {
    const char next = Peek();
    return IsDigit(next) || next == '.' || IsSign(next);
}

bool NumberScanner::Accept(char wanted) {
    if (Peek() != wanted) return false;
    ++offset_;
    return true;
}

std::string_view NumberScanner::Word() {
    Peek();
    const std::size_t start = offset_;
    while (offset_ < text_.size() && IsLetter(text_[offset_])) ++offset_;
    return text_.substr(start, offset_ - start);
}

double NumberScanner::Number() {
    if (!StartsNumber()) FailExpecting("a number");
    const char* const end = text_.data() + text_.size();
    const char* const start = text_.data() + offset_;
    const char* const digits = IsSign(*start) ? start + 1 : start;
    // from_chars would also take "inf", "nan" and a second minus sign.
    if (digits == end || !(IsDigit(*digits) || *digits == '.')) FailExpecting("a number");

    double value = 0;
    const std::from_chars_result result = std::from_chars(digits, end, value);
    if (result.ec == std::errc::invalid_argument) FailExpecting("a number");
    if (result.ec == std::errc::result_out_of_range) {
        value = std::strtod(std::string(digits, result.ptr).c_str(), nullptr);  // tells 1e-999 from 1e999
    }
    if (!std::isfinite(value)) FailExpecting("a finite number");
    offset_ += static_cast<std::size_t>(result.ptr - start);
    return *start == '-' ? -value : value;
}

bool NumberScanner::Flag() {
    if (Accept('0')) return false;
    if (Accept('1')) return true;
    FailExpecting("a flag, 0 or 1");
}

void NumberScanner::FailExpecting(std::string_view what) {
    Peek();
    constexpr std::size_t kShown = 12;  // characters: enough to find the place, short enough for one line
    const std::string_view rest = text_.substr(offset_, kShown);
    std::string message = "offset " + std::to_string(offset_) + ": expected ";
    message.append(what).append(", found ");
    throw Failure(rest.empty() ? message + "the end" : message + '"' + std::string(rest) + '"');
}

}  // namespace vrltool
