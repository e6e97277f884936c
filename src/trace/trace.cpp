#include "trace/trace.h"

#include <array>
#include <bit>
#include <cstring>
#include <utility>

#include "base/errors.h"
#include "trace/color_table.h"
#include "trace/pixel_map.h"
#include "trace/tracer.h"

namespace {

// The pixels of a picture as the numbers of their colours. Rows of no more than the two latest colours, as all rows of a
// bitmap are, are numbered without a look at the table.
class ColourNumbers {
 public:
    ColourNumbers(const RPRaster& raster, RPColorTable& table) : raster_(&raster), table_(&table) {}
    RPPixelMap AllPixels();

 private:
    struct Numbered {
        std::uint32_t colour;
        std::uint8_t number;
    };

    bool NumberKnownRow(const std::uint8_t* source, std::uint8_t* row) const;
    std::uint8_t NumberOf(const std::uint8_t* pixel);

    const RPRaster* raster_;
    RPColorTable* table_;
    std::array<Numbered, 2> latest_ = {Numbered{kNoColour, 0}, Numbered{kNoColour, 0}};

    static constexpr std::uint32_t kNoColour = ~0U;  // differs from every colour in its alpha
};

std::uint32_t ColourOf(const std::uint8_t* pixel);

}  // namespace

RPTrace::RPTrace(ts::auto_ptr<RPRaster>& source, std::int32_t smallest_area, bool is_second_kind)
    : raster(std::move(source)), minimum_area(smallest_area), second_kind(is_second_kind) {
    if (!raster) throw kFailedCheck;
    RPColorTable& colours = RPColorTable::OfThread();
    colours.Reset();
    RPTracePixels(ColourNumbers(*raster, colours).AllPixels(), *this);
    colours.Freeze(raster->Model(), second_kind);
    raster.reset();
}

namespace {

RPPixelMap ColourNumbers::AllPixels() {
    RPPixelMap pixels(raster_->Width(), raster_->Height());
    for (std::int32_t y = 0; y < pixels.Height(); ++y) {
        const std::uint8_t* source = raster_->Row(y);
        std::uint8_t* row = pixels.Row(y);
        if (NumberKnownRow(source, row)) continue;
        for (std::int32_t x = 0; x < pixels.Width(); ++x) row[x] = NumberOf(source + std::ptrdiff_t{4} * x);
    }
    return pixels;
}

// Numbers a row; false when it has a colour that is not one of the latest, then the numbers mean nothing.
bool ColourNumbers::NumberKnownRow(const std::uint8_t* source, std::uint8_t* row) const {
    const std::uint32_t first = latest_[0].colour, second = latest_[1].colour;
    const std::uint32_t second_number = latest_[1].number, difference = latest_[0].number ^ second_number;
    const std::int32_t width = raster_->Width();
    std::uint32_t unknown = 0;
    for (std::int32_t x = 0; x < width; ++x) {  // without branches, so that compilers use wide registers
        const std::uint32_t colour = ColourOf(source + std::ptrdiff_t{4} * x);
        const std::uint32_t is_first = colour == first ? ~0U : 0U, is_second = colour == second ? ~0U : 0U;
        unknown |= ~(is_first | is_second);
        row[x] = static_cast<std::uint8_t>(second_number ^ (is_first & difference));
    }
    return unknown == 0;
}

std::uint8_t ColourNumbers::NumberOf(const std::uint8_t* pixel) {
    const std::uint32_t colour = ColourOf(pixel);
    if (colour == latest_[0].colour) return latest_[0].number;
    std::swap(latest_[0], latest_[1]);
    if (colour == latest_[0].colour) return latest_[0].number;
    const std::uint8_t number = table_->IndexOf({0, 0, raster_->Model(), {pixel[1], pixel[2], pixel[3]}});
    if (number == RPPixelMap::kOutside) throw kBrokenInvariant;  // more colours than the map can tell apart
    latest_[0] = {colour, number};
    return number;
}

// Red, green and blue of a pixel in one number; its order depends on the machine.
std::uint32_t ColourOf(const std::uint8_t* pixel) {
    constexpr auto kColourBytes = std::bit_cast<std::uint32_t>(std::array<std::uint8_t, 4>{0, 255, 255, 255});
    std::uint32_t value;
    std::memcpy(&value, pixel, sizeof value);
    return value & kColourBytes;
}

}  // namespace
