#include "tool/png_reader.h"

#include <bit>
#include <cerrno>
#include <cstring>
#include <new>
#include <span>

#include "tool/failure.h"
#include "tool/input_stream.h"
#include "tool/interrupt.h"
#include "tool/option_values.h"
#include "tool/png_calls.h"
#include "tool/standard_stream.h"
#include "tool/world_rows.h"

namespace vrltool {
namespace {

class PngSource : PngCalls {
 public:
    explicit PngSource(std::FILE* file)
        : file_(file), png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning)) {
        info_ = png_ == nullptr ? nullptr : png_create_info_struct(png_);
        if (info_ == nullptr) throw std::bad_alloc();
        png_set_read_fn(png_, this, OnRead);
    }
    PngSource(const PngSource&) = delete;
    PngSource& operator=(const PngSource&) = delete;
    ~PngSource() { png_destroy_read_struct(&png_, &info_, nullptr); }

    void Begin() {
        Run([&] {
            KeepAppearance();
            png_read_info(png_, info_);
            AskForWorldPixels();
            passes_ = png_set_interlace_handling(png_);
            png_read_update_info(png_, info_);
        });
    }
    std::int64_t Width() const { return png_get_image_width(png_, info_); }
    std::int64_t Height() const { return png_get_image_height(png_, info_); }
    std::int32_t Depth() const { return png_get_bit_depth(png_, info_); }
    int Passes() const { return passes_; }  // over all rows

    PngAppearance Appearance() const {
        PngAppearance appearance;
        appearance.is_grey = is_grey_;
        png_unknown_chunkp chunks = nullptr;
        const int count = png_get_unknown_chunks(png_, info_, &chunks);
        for (const png_unknown_chunk& chunk : std::span(chunks, static_cast<std::size_t>(count))) {
            appearance.chunks.push_back({reinterpret_cast<const char*>(chunk.name), {chunk.data, chunk.data + chunk.size}});
        }
        return appearance;
    }

    void Row(std::uint8_t* bytes) {
        Run([&] { png_read_row(png_, bytes, nullptr); });
    }
    void End() {
        Run([&] { png_read_end(png_, nullptr); });
    }

 private:
    /// libpng hands over chunks that it is told not to know.
    void KeepAppearance() {
        constexpr png_byte kNames[] = "iCCP\0cICP\0sRGB\0gAMA\0cHRM\0pHYs";
        constexpr int kNameSize = 5;  // with the zero after it
        png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_ALWAYS, kNames, int{sizeof kNames} / kNameSize);
    }

    /// Alpha, red, green, blue in the machine's byte order.
    void AskForWorldPixels() {
        const bool has_alpha =
            (png_get_color_type(png_, info_) & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
        is_grey_ = (png_get_color_type(png_, info_) & PNG_COLOR_MASK_COLOR) == 0;
        constexpr png_uint_32 kOpaque = 0xFFFF;
        png_set_expand(png_);
        png_set_gray_to_rgb(png_);
        if (has_alpha) {
            png_set_swap_alpha(png_);
        } else {
            png_set_add_alpha(png_, kOpaque, PNG_FILLER_BEFORE);
        }
        if constexpr (std::endian::native == std::endian::little) png_set_swap(png_);
    }

    template <class Step>
    void Run(Step step) {
        if (Succeeds(png_, step)) return;
        ThrowIfInterrupted();
        throw Failure(read_error_ != 0 ? std::strerror(read_error_) : Complaint());
    }

    static void OnRead(png_structp png, png_bytep data, std::size_t count) {
        PngSource& self = *static_cast<PngSource*>(png_get_io_ptr(png));
        if (std::fread(data, 1, count, self.file_) == count) return;
        if (std::ferror(self.file_) != 0) self.read_error_ = errno;
        png_error(png, "the file ends too early");
    }

    std::FILE* file_;
    png_structp png_;
    png_infop info_ = nullptr;
    int passes_ = 1;
    bool is_grey_ = false;
    int read_error_ = 0;  // errno of a failed read
};

std::unique_ptr<GW_World> NewWorld(const PngSource& png) {
    if (png.Width() > kMaxSide || png.Height() > kMaxSide) {
        throw Failure("the picture is larger than " + std::to_string(kMaxSide) + " pixels each way");
    }
    const auto width = static_cast<std::int32_t>(png.Width()), height = static_cast<std::int32_t>(png.Height());
    std::unique_ptr<GW_World> world(GW_World::New(width, height, png.Depth(), 0));
    if (!world) throw std::bad_alloc();
    return world;
}

/// From PNG's 16-bit range to the world's.
void ShrinkRows(GW_World& world) {
    constexpr std::uint32_t kPngMax = 65535;
    constexpr std::uint32_t kMax = SampleTraits<GW_Pixel16>::kMax;
    for (std::int32_t y = 0; y < world.height; ++y) {
        for (GW_Pixel16& sample : RowOf<GW_Pixel16>(world, y)) {
            sample = static_cast<GW_Pixel16>((sample * kMax + kPngMax / 2) / kPngMax);
        }
    }
}

/// What follows the end of a picture.
std::string NoteOnRest(std::FILE* file) {
    constexpr std::size_t kSignatureSize = 8;
    png_byte bytes[kSignatureSize] = {};
    const std::size_t count = std::fread(bytes, 1, kSignatureSize, file);
    ThrowIfInterrupted();
    if (count == 0) return {};
    if (png_sig_cmp(bytes, 0, kSignatureSize) == 0) return "another picture follows the first, which alone is read";
    return "bytes that follow the end of the picture are left out";
}

PngContent ReadContent(std::FILE* file, WorkProgress& progress) {
    PngSource png(file);
    png.Begin();
    PngContent content = {NewWorld(png), png.Appearance(), {}};
    GW_World& world = *content.world;
    for (int pass = 0; pass < png.Passes(); ++pass) {
        for (std::int32_t y = 0; y < world.height; ++y) {
            progress.Report(y, world.height);
            png.Row(RowOf<std::uint8_t>(world, y).data());
        }
    }
    png.End();
    content.note = NoteOnRest(file);
    if (IsDeep(world)) ShrinkRows(world);
    return content;
}

}  // namespace

PngContent ReadPng(const std::string& path, WorkProgress& progress) {
    try {
        return ReadContent(OpenInput(path).get(), progress);
    } catch (const Failure& failure) {
        throw Failure(InputName(path) + ": " + failure.what());
    }
}

}  // namespace vrltool
