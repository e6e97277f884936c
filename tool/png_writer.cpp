#include "tool/png_writer.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "tool/failure.h"
#include "tool/png_calls.h"
#include "tool/world_rows.h"

namespace vrltool {
namespace {

struct PngFormat {
    std::int32_t width, height;
    int depth;
    int color_type;
};

class PngSink : PngCalls {
 public:
    explicit PngSink(OutputFile& file)
        : file_(file), png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning)) {
        info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
        if (info_ == nullptr) throw std::bad_alloc();
        png_set_write_fn(png_, this, OnWrite, OnFlush);
    }
    PngSink(const PngSink&) = delete;
    PngSink& operator=(const PngSink&) = delete;
    ~PngSink() { png_destroy_write_struct(&png_, &info_); }

    /// Rows with an alpha hold it before the colours.
    void Begin(const PngFormat& format, const PngAppearance& appearance) {
        Run([&] {
            png_set_IHDR(png_, info_, static_cast<png_uint_32>(format.width), static_cast<png_uint_32>(format.height),
                         format.depth, format.color_type, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                         PNG_FILTER_TYPE_DEFAULT);
            // Masks are flat areas and soft ramps: one filter serves both, and trying all five costs most of the time.
            if (format.color_type == PNG_COLOR_TYPE_GRAY) png_set_filter(png_, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
            png_write_info(png_, info_);
            for (const auto& [name, content] : appearance.chunks) {
                png_write_chunk(png_, reinterpret_cast<png_const_bytep>(name.data()), content.data(), content.size());
            }
            png_set_swap_alpha(png_);
        });
    }
    void Row(const std::uint8_t* bytes) {
        Run([&] { png_write_row(png_, bytes); });
    }
    void End() {
        Run([&] { png_write_end(png_, info_); });
    }

 private:
    template <class Step>
    void Run(Step step) {
        if (Succeeds(png_, step)) return;
        if (write_error_ != 0) file_.Fail(write_error_);
        throw Failure(std::string("writing PNG: ") + Complaint());
    }

    static void OnWrite(png_structp png, png_bytep data, std::size_t count) {
        PngSink& self = *static_cast<PngSink*>(png_get_io_ptr(png));
        if (std::fwrite(data, 1, count, self.file_.Stream()) == count) return;
        self.write_error_ = errno;
        png_error(png, "cannot write");
    }
    static void OnFlush(png_structp) {}

    OutputFile& file_;
    png_structp png_;
    png_infop info_ = nullptr;
    int write_error_ = 0;  // errno of a failed write
};

/// The samples as PNG holds them: over the full 16-bit range, high byte first.
void Stretch(std::span<const GW_Pixel16> samples, std::vector<std::uint8_t>& bytes) {
    constexpr std::uint32_t kMax = SampleTraits<GW_Pixel16>::kMax;
    constexpr std::uint32_t kPngMax = 65535;
    bytes.clear();
    for (const GW_Pixel16 sample : samples) {
        const std::uint32_t stretched = (sample * kPngMax + kMax / 2) / kMax;
        bytes.push_back(static_cast<std::uint8_t>(stretched >> 8));
        bytes.push_back(static_cast<std::uint8_t>(stretched & 0xFF));
    }
}

/// `row8` and `row16` give the samples of a row; the one for the format's depth is asked.
template <class Row8, class Row16>
void WriteRows(const PngFormat& format, const PngAppearance& appearance, Row8 row8, Row16 row16, OutputFile& file,
               WorkProgress& progress) {
    PngSink png(file);
    png.Begin(format, appearance);
    std::vector<std::uint8_t> stretched;
    for (std::int32_t y = 0; y < format.height; ++y) {
        progress.Report(y, format.height);
        if (format.depth == kDeepDepth) Stretch(row16(y), stretched);
        png.Row(format.depth == kDeepDepth ? stretched.data() : row8(y).data());
    }
    png.End();
}

bool HasGreyProfile(const PngAppearance& appearance) {
    return appearance.is_grey && std::ranges::find(appearance.chunks, "iCCP", &PngChunk::name) != appearance.chunks.end();
}

/// The first two components of every pixel, alpha and red.
template <class P>
std::span<const P> AlphaAndGrey(std::span<const P> row, std::vector<P>& kept) {
    kept.clear();
    for (std::size_t i = 0; i < row.size(); i += kComponents) kept.insert(kept.end(), {row[i], row[i + 1]});
    return kept;
}

}  // namespace

void WritePng(const GW_UnoBuffer& buffer, OutputFile& file, WorkProgress& progress) {
    const PngFormat format = {buffer.width, buffer.height, buffer.IsDeep() ? kDeepDepth : 8, PNG_COLOR_TYPE_GRAY};
    const auto width = static_cast<std::size_t>(buffer.width);
    const auto row8 = [&](std::int32_t y) { return std::span(buffer.Row<GW_Pixel8>(y), width); };
    const auto row16 = [&](std::int32_t y) { return std::span(buffer.Row<GW_Pixel16>(y), width); };
    WriteRows(format, {}, row8, row16, file, progress);
}

void WritePng(const GW_World& world, OutputFile& file, WorkProgress& progress, const PngAppearance& appearance) {
    const bool is_grey = HasGreyProfile(appearance);
    const PngFormat format = {world.width, world.height, IsDeep(world) ? kDeepDepth : 8,
                              is_grey ? PNG_COLOR_TYPE_GRAY_ALPHA : PNG_COLOR_TYPE_RGB_ALPHA};
    std::vector<GW_Pixel8> kept8;
    std::vector<GW_Pixel16> kept16;
    const auto row8 = [&](std::int32_t y) {
        const auto row = RowOf<const GW_Pixel8>(world, y);
        return is_grey ? AlphaAndGrey(row, kept8) : row;
    };
    const auto row16 = [&](std::int32_t y) {
        const auto row = RowOf<const GW_Pixel16>(world, y);
        return is_grey ? AlphaAndGrey(row, kept16) : row;
    };
    WriteRows(format, appearance, row8, row16, file, progress);
}

}  // namespace vrltool
