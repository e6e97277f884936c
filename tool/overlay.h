#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/geometry_records.h"
#include "host/image.h"
#include "host/world.h"
#include "tool/affine.h"
#include "tool/library_session.h"
#include "tool/shape_record.h"

namespace vrltool {

/// A picture to check shapes by: what they belong to, dimmed and magnified, with their outlines, anchors and handles on top.
struct OverlayOptions {
    std::string path;        // empty for none
    std::int32_t scale = 0;  // whole number by which it is magnified; 0 chooses one by the picture's size
};

/// Adds --overlay and --overlay-scale.
void AddOverlayOptions(CLI::App& command, OverlayOptions& options, const char* file_description);

class Overlay {
 public:
    // `scale` as in the options; `file` is named in failures.
    // They throw Failure when the overlay would get too large, and std::bad_alloc.

    /// Over a picture of 8 bits: its colours as they are stored, whatever its alpha, or its alpha.
    Overlay(const GW_World& picture, bool shows_alpha, std::int32_t scale, const std::string& file);
    /// Over a mask of any depth.
    Overlay(const GW_UnoBuffer& mask, std::int32_t scale, const std::string& file);

    /// Draws outlines red, smooth anchors as blue dots and corners as black squares, handles blue; feather points and lines
    /// from the outline to their radius green. `placement` maps the shapes into the picture; radii are measured as the masks
    /// do, with the pixel aspect ratio.
    /// @throws Failure
    /// @throws std::bad_alloc
    void Draw(const std::vector<ShapeRecord>& records, const Affine& placement, double pixel_aspect, LibrarySession& library);

    const GW_World& Picture() const { return *world_; }

 private:
    std::int32_t scale_;
    std::unique_ptr<GW_World> world_;
};

}  // namespace vrltool
