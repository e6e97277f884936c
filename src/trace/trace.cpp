#include "trace/trace.h"

#include <array>
#include <cstring>
#include <utility>

#include "base/errors.h"
#include "trace/color_table.h"
#include "trace/pixel_map.h"
#include "trace/pixel_rows.h"
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
        RPPacked colour;
        std::uint8_t number;
    };

    std::uint8_t NumberOf(const std::uint8_t* pixel);

    const RPRaster* raster_;
    RPColorTable* table_;
    std::array<Numbered, 2> latest_ = {Numbered{kNoColour, 0}, Numbered{kNoColour, 0}};

    static constexpr RPPacked kNoColour = ~0U;  // differs from every colour in its alpha
};

RPPacked ColourOf(const std::uint8_t* pixel);

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
    const auto number_row = PixelRows().back().number;
    for (std::int32_t y = 0; y < pixels.Height(); ++y) {
        const std::uint8_t* source = raster_->Row(y);
        std::uint8_t* row = pixels.Row(y);
        const auto& [one, other] = latest_;
        if (number_row(source, row, pixels.Width(), {one.colour, other.colour, one.number, other.number})) continue;
        for (std::int32_t x = 0; x < pixels.Width(); ++x) row[x] = NumberOf(source + std::ptrdiff_t{kPixelBytes} * x);
    }
    return pixels;
}

std::uint8_t ColourNumbers::NumberOf(const std::uint8_t* pixel) {
    const RPPacked colour = ColourOf(pixel);
    if (colour == latest_[0].colour) return latest_[0].number;
    std::swap(latest_[0], latest_[1]);
    if (colour == latest_[0].colour) return latest_[0].number;
    const std::uint8_t number = table_->IndexOf({0, 0, raster_->Model(), {pixel[1], pixel[2], pixel[3]}});
    if (number == RPPixelMap::kOutside) throw kBrokenInvariant;  // more colours than the map can tell apart
    latest_[0] = {colour, number};
    return number;
}

// Red, green and blue of a pixel in one number; its order depends on the machine.
RPPacked ColourOf(const std::uint8_t* pixel) {
    RPPacked value;
    std::memcpy(&value, pixel, sizeof value);
    return value & ~kAlphaBits;
}

}  // namespace
