#pragma once

#include <cstdint>

#include "base/export.h"

namespace refhost {

/// Bytes reported to the memory account and not yet taken back.
VRL_HOST_API std::int64_t AccountedBytes();
/// All bytes ever added to the account.
VRL_HOST_API std::int64_t AccountedTotal();

}  // namespace refhost
