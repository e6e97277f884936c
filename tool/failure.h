#pragma once

#include <stdexcept>

namespace vrltool {

/// Bad input or failed work. The text is one line, what went wrong last and where it did before it:
/// `drawing.svg: <path id="wing">: path data offset 17: expected a number, found "x"`.
class Failure : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

}  // namespace vrltool
