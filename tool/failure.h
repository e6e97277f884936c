#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace vrltool {

/// Bad input or failed work. The text is one line, what went wrong last and where it did before it:
/// `drawing.svg: <path id="wing">: path data offset 17: expected a number, found "x"`.
class Failure : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Thrown when some of several files failed and the work on the others is done.
struct FailedFiles {
    std::vector<std::string> complaints;  // texts of the failures
};

}  // namespace vrltool
