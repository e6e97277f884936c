#pragma once

#include "base/export.h"

namespace refhost {

/// Makes the calling thread the host's main thread: the one on which abort callbacks are consulted.
VRL_HOST_API void Initialize();

}  // namespace refhost
