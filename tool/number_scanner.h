#pragma once

#include <cstddef>
#include <string_view>

namespace vrltool {

/// Reads the numbers of SVG attribute text: path data, point lists, transforms, view boxes. Borrows the text.
class NumberScanner {
 public:
    explicit NumberScanner(std::string_view text) : text_(text) {}

    /// The next character after white space, 0 at the end of the text.
    char Peek();
    bool AtEnd() { return Peek() == 0 && offset_ == text_.size(); }
    bool StartsNumber();
    /// Steps over `wanted` when it is next.
    bool Accept(char wanted);
    /// Steps over one comma between values, where one is allowed but not needed.
    void SkipComma() { Accept(','); }
    /// The next word of letters, empty when none is next.
    std::string_view Word();

    /// @throws Failure  when no finite number is next
    double Number();
    /// A single 0 or 1, which needs no separator after it.
    /// @throws Failure
    bool Flag();

    /// @throws Failure  "offset N: expected `what`, found ..."
    [[noreturn]] void FailExpecting(std::string_view what);

 private:
    std::string_view text_;
    std::size_t offset_ = 0;
};

}  // namespace vrltool
