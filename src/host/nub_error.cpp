#include "host/nub_error.h"

#include <cstring>
#include <new>

namespace NUB_T_MT {

void ThrowIfFailed(const NUBErrorObject* error) {
    if (error == nullptr) return;
    constexpr std::int32_t kOutOfMemory = 1;
    if (error->identifier == kOutOfMemory && std::strcmp(error->component, "QEL") == 0) throw std::bad_alloc();
    throw CNUBError(error->component, error->identifier, error->message);
}

}  // namespace NUB_T_MT
