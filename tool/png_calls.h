#pragma once

#include <png.h>

#include <cstddef>

namespace vrltool {

/// Calls into libpng, which reports an error by jumping out of its call: every call goes through `Succeeds`. The object is
/// libpng's error pointer.
class PngCalls {
 protected:
    /// False when `step` ended with a complaint, which `Complaint` then holds. `step` must hold no objects that need
    /// destruction, for the jump would skip it.
    template <class Step>
    bool Succeeds(png_structp png, Step step) {
        if (setjmp(png_jmpbuf(png)) != 0) return false;
        step();
        return true;
    }
    const char* Complaint() const { return complaint_; }

    [[noreturn]] static void OnError(png_structp png, const char* message);
    static void OnWarning(png_structp, const char*) {}

 private:
    char complaint_[80] = "";
};

}  // namespace vrltool
