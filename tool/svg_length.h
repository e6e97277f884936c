#pragma once

#include <string_view>

namespace vrltool {

/// A length attribute in user units (a CSS pixel is one). `whole` is what 100% means. Font units count 16 px to the em.
/// @throws Failure
double ParseLength(std::string_view text, double whole);

/// True for a length relative to what surrounds it: a percentage or "auto".
bool IsRelativeLength(std::string_view text);

}  // namespace vrltool
