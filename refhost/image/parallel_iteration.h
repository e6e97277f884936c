#pragma once

#include "base/export.h"

namespace refhost {

/// How many threads, the caller's included, a parallel iteration may use; by default as many as the machine has.
VRL_HOST_API void SetThreadCount(int count);

}  // namespace refhost
