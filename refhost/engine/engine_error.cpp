#include "refhost/engine/engine_error.h"

namespace refhost {

// Constant-initialised, so that they outlive every error that points at them.
constinit const NUBErrorObject kErrorOutOfMemory = {"QEL", 1, "out of memory"};
constinit const NUBErrorObject kErrorBadPath = {"GRX", 1, "the operators do not make a path"};
constinit const NUBErrorObject kErrorNotFinite = {"GRX", 2, "a coordinate is not finite"};
constinit const NUBErrorObject kErrorBadArgument = {"GRX", 3, "an argument is out of range"};
constinit const NUBErrorObject kErrorInjected = {"GRX", 4, "injected failure"};

}  // namespace refhost
