#pragma once

#include <potracelib.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "bench/bitmaps.h"

/// A bitmap as libpotrace takes it, and its trace with the library's default parameters but for specks, which are kept.
class PotraceBitmap {
 public:
    using Result = std::unique_ptr<potrace_state_t, decltype(&potrace_state_free)>;

    explicit PotraceBitmap(const Bitmap& bitmap)
        : words_(static_cast<std::size_t>((bitmap.width + kBits - 1) / kBits) * static_cast<std::size_t>(bitmap.height)),
          input_{bitmap.width, bitmap.height, (bitmap.width + kBits - 1) / kBits, words_.data()} {
        parameters_->turdsize = 0;
        const std::uint8_t* set = bitmap.set.data();
        for (int y = 0; y < bitmap.height; ++y) {
            for (int x = 0; x < bitmap.width; ++x) {
                const potrace_word bit = *set++;
                words_[static_cast<std::size_t>(y * input_.dy + x / kBits)] |= bit << (kBits - 1 - x % kBits);
            }
        }
    }

    /// Null when it fails.
    Result Trace() const {
        Result result(potrace_trace(parameters_.get(), &input_), potrace_state_free);
        if (result && result->status != POTRACE_STATUS_OK) result.reset();
        return result;
    }

 private:
    static constexpr int kBits = 8 * sizeof(potrace_word);

    std::vector<potrace_word> words_;
    potrace_bitmap_t input_;
    std::unique_ptr<potrace_param_t, decltype(&potrace_param_free)> parameters_{potrace_param_default(), potrace_param_free};
};
