#include "tool/png_calls.h"

#include <cstring>

namespace vrltool {

void PngCalls::OnError(png_structp png, const char* message) {
    PngCalls& self = *static_cast<PngCalls*>(png_get_error_ptr(png));
    std::strncpy(self.complaint_, message, sizeof self.complaint_ - 1);
    png_longjmp(png, 1);
}

}  // namespace vrltool
