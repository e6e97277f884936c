#include "host/image.h"
#include "refhost/image/line_feather.h"
#include "refhost/services/faults.h"

namespace {

template <GW_FeatherLineProc kernel>
int FeatherLine(unsigned char quality, std::int32_t length, std::int32_t lo, std::int32_t hi, std::int32_t radius, void* scratch,
                void* line) {
    if (const int status = refhost::InjectedStatus(refhost::HostCall::kFeatherLine)) return status;
    return kernel(quality, length, lo, hi, radius, scratch, line);
}

// Fills the two entries that mask rendering calls before anybody can call them.
const bool g_filled = [] {
    GWp_G_OverFuncs[kOverFeatherLine8] = reinterpret_cast<void*>(&FeatherLine<refhost::FeatherLine8>);
    GWp_G_OverFuncs[kOverFeatherLine16] = reinterpret_cast<void*>(&FeatherLine<refhost::FeatherLine16>);
    return true;
}();

}  // namespace

void* GWp_G_OverFuncs[kOverFuncCount] = {};
