#pragma once

#include <vector>

#include "host/shape.h"

namespace refhost {

/// What stands behind a list's head in this host.
struct PointList : WEX_Head {
    std::vector<WEX_Item> items;
};

inline PointList& ListOf(WEX_Head** handle) { return *static_cast<PointList*>(*handle); }
inline const PointList& ListOf(const WEX_Head* const* handle) { return *static_cast<const PointList*>(*handle); }

}  // namespace refhost
