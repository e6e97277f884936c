#pragma once

#include <functional>

namespace vrltool {

/// What the program does once its arguments are understood. A command's file registers its arguments, and hands over its
/// work when the user names it.
/// @throws Failure, Interruption, and what the library and the host throw
using Command = std::function<void()>;

}  // namespace vrltool
