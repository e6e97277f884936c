#pragma once

#include <cstdint>

#include "host/world.h"

/// How many components a colour has. Bitmaps to trace have three.
enum RPColorModel : std::int32_t { kModelThree = 0, kModelFour = 1 };  // any other value: one component

/// A place of a raster and the colour found there.
struct RPSample {
    std::int16_t x, y;
    std::int32_t model;          // RPColorModel
    std::int32_t components[4];  // 0 to 255; all -1 outside the raster. Those that the model has not are not meant
};

/// True when the models and the components that the model has are equal. The places do not matter.
bool IsSameColour(const RPSample& a, const RPSample& b);

/// Reads an 8-bit world as colours. Borrows the world.
class RPRaster {
 public:
    explicit RPRaster(const GW_World& world);
    virtual ~RPRaster() = default;

    std::int32_t Width() const { return width_; }
    std::int32_t Height() const { return height_; }
    std::int32_t Model() const { return model_; }

    /// Fills in the colour at the sample's place.
    /// @throws kUnsupportedKind  inside the raster when its model is not three components
    void Sample(RPSample& sample) const;
    /// The pixels of row `y`: bytes alpha, red, green, blue.
    const std::uint8_t* Row(std::int32_t y) const;

 private:
    const GW_World* world_;
    std::int32_t height_, width_;
    std::int32_t model_ = kModelThree;
};
