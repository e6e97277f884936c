#pragma once

#include <vector>

#include "fit/path.h"

/// The closed outlines of one region.
struct RPOutlineArt {
    std::vector<RPPath> outer, holes;
};
