#include "tool/png_writer.h"

#include <png.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "tool/failure.h"

namespace vrltool {
namespace {

/// A libpng writer. libpng reports an error by jumping out of its call, so every call into it goes through `Run`.
class PngStream {
 public:
    explicit PngStream(OutputFile& file)
        : file_(file), png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning)) {
        info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
        if (info_ == nullptr) throw std::bad_alloc();
        png_set_write_fn(png_, this, OnWrite, OnFlush);
    }
    PngStream(const PngStream&) = delete;
    PngStream& operator=(const PngStream&) = delete;
    ~PngStream() { png_destroy_write_struct(&png_, &info_); }

    void Begin(const GW_UnoBuffer& buffer) {
        Run([&] {
            png_set_IHDR(png_, info_, static_cast<png_uint_32>(buffer.width), static_cast<png_uint_32>(buffer.height),
                         buffer.IsDeep() ? 16 : 8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                         PNG_FILTER_TYPE_DEFAULT);
            // Masks are flat areas and soft ramps: one filter serves both, and trying all five costs most of the time.
            png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
            png_write_info(png_, info_);
        });
    }
    void Row(const std::uint8_t* bytes) {
        Run([&] { png_write_row(png_, bytes); });
    }
    void End() {
        Run([&] { png_write_end(png_, info_); });
    }

 private:
    /// `step` must hold no objects that need destruction, for the jump would skip it.
    template <class Step>
    void Run(Step step) {
        if (setjmp(png_jmpbuf(png_)) != 0) {
            if (write_error_ != 0) file_.Fail(write_error_);
            throw Failure(std::string("writing PNG: ") + message_);
        }
        step();
    }

    [[noreturn]] static void OnError(png_structp png, const char* message) {
        PngStream& self = *static_cast<PngStream*>(png_get_error_ptr(png));
        std::strncpy(self.message_, message, sizeof self.message_ - 1);
        png_longjmp(png, 1);
    }
    static void OnWarning(png_structp, const char*) {}
    static void OnWrite(png_structp png, png_bytep data, std::size_t count) {
        PngStream& self = *static_cast<PngStream*>(png_get_io_ptr(png));
        if (std::fwrite(data, 1, count, self.file_.Stream()) == count) return;
        self.write_error_ = errno;
        png_error(png, "cannot write");
    }
    static void OnFlush(png_structp) {}

    OutputFile& file_;
    png_structp png_;
    png_infop info_ = nullptr;
    int write_error_ = 0;    // errno of a failed write
    char message_[80] = "";  // libpng's own complaint
};

/// A row as PNG holds it: 16-bit samples over the full range, high byte first.
void StretchRow(const GW_Pixel16* samples, std::vector<std::uint8_t>& bytes) {
    constexpr std::uint32_t kMax = SampleTraits<GW_Pixel16>::kMax;
    constexpr std::uint32_t kPngMax = 65535;
    for (std::size_t i = 0; i < bytes.size() / 2; ++i) {
        const std::uint32_t stretched = (samples[i] * kPngMax + kMax / 2) / kMax;
        bytes[2 * i] = static_cast<std::uint8_t>(stretched >> 8);
        bytes[2 * i + 1] = static_cast<std::uint8_t>(stretched & 0xFF);
    }
}

}  // namespace

void WritePng(const GW_UnoBuffer& buffer, OutputFile& file, WorkProgress& progress) {
    PngStream png(file);
    png.Begin(buffer);
    std::vector<std::uint8_t> stretched(buffer.IsDeep() ? static_cast<std::size_t>(buffer.width) * 2 : 0);
    for (std::int32_t y = 0; y < buffer.height; ++y) {
        progress.Report(y, buffer.height);
        if (buffer.IsDeep()) StretchRow(buffer.Row<GW_Pixel16>(y), stretched);
        png.Row(buffer.IsDeep() ? stretched.data() : buffer.Row<GW_Pixel8>(y));
    }
    png.End();
}

}  // namespace vrltool
