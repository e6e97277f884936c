#include "trace/vertex_dictionary.h"

#include "base/errors.h"

RPVertexDictionary::RPVertexDictionary(std::int32_t lattice_height, std::int32_t lattice_width)
    : height_(lattice_height), width_(lattice_width), vertices_(lattice_height, lattice_width) {}

std::int32_t RPVertexDictionary::Find(std::int32_t x, std::int32_t y) const {
    CheckCorner(x, y);
    return vertices_.At(x, y);
}

void RPVertexDictionary::Insert(std::int32_t x, std::int32_t y, std::int32_t vertex) {
    CheckCorner(x, y);
    vertices_.Set(x, y, vertex);
}

void RPVertexDictionary::CheckCorner(std::int32_t x, std::int32_t y) const {
    if (x < 0 || x >= width_ || y < 0 || y >= height_) throw kBrokenInvariant;
}
