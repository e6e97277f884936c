#pragma once

#include "base/export.h"

// What the engine answers when its procedures are asked for by name. Tests change it to see what a caller does then.

namespace refhost {

/// From now on the lookup of `method` of `interface_name` gives `address`, null for none; a null `method` stands for all
/// of the interface. Counts as an unregistration, so callers look up again. The two texts must outlive the override.
VRL_HOST_API void OverrideProcedure(const char* interface_name, const char* method, void* address);
/// Undoes all overrides.
VRL_HOST_API void RestoreProcedures();

/// Engine objects (paths, painters, progress objects) and blocks of the engine's memory alive in the process.
VRL_HOST_API int LiveEngineObjects();

}  // namespace refhost
