#pragma once

#include <cstdint>
#include <vector>

#include "fit/path.h"

enum RPArtKind : std::int32_t { kArtOutline = 0 };

/// Base of what is made of a region.
class RPVectorArt {
 public:
    virtual ~RPVectorArt() = default;
    std::int32_t Kind() const { return kind_; }

 protected:
    explicit RPVectorArt(std::int32_t kind) : kind_(kind) {}

 private:
    std::int32_t kind_;
};

/// The closed outlines of one region.
class RPOutlineArt : public RPVectorArt {
 public:
    RPOutlineArt() : RPVectorArt(kArtOutline) {}

    std::vector<RPPath> outer, holes;
};
