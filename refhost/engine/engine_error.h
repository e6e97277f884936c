#pragma once

#include "host/engine.h"

namespace refhost {

/// Thrown inside the engine; the procedure that was called returns `error` to its caller.
struct EngineError {
    const NUBErrorObject* error;
};

// The engine's error objects. "QEL" 1 is exhausted memory by the binding's convention.
extern const NUBErrorObject kErrorOutOfMemory;
extern const NUBErrorObject kErrorBadPath;    // operators that do not make a path
extern const NUBErrorObject kErrorNotFinite;  // a coordinate or matrix entry that is NaN or infinite
extern const NUBErrorObject kErrorBadArgument;
extern const NUBErrorObject kErrorInjected;  // a fault armed by a test

}  // namespace refhost
