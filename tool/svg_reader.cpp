#include "tool/svg_reader.h"

#include <algorithm>
#include <pugixml.hpp>
#include <string>
#include <unordered_map>

#include "tool/failure.h"
#include "tool/interrupt.h"
#include "tool/svg_attributes.h"
#include "tool/svg_length.h"
#include "tool/svg_shapes.h"

namespace vrltool {
namespace {

constexpr int kMaxDepth = 256;                        // elements inside each other; drawings have a dozen, an attack has millions
constexpr std::size_t kMaxRepeated = 4'000'000;       // elements and vertices drawn through <use>, which multiplies when nested
constexpr SvgViewport kUnknownViewport = {300, 150};  // CSS's size for a picture that does not say its own

/// What an element inherits from those around it.
struct Surroundings {
    Affine to_pixels = {};
    SvgViewport viewport = kUnknownViewport;
    bool visible = true;
    int depth = 0;
    bool repeated = false;         // drawn through a <use>
    pugi::xml_node shown_by = {};  // the <use> that refers to this very element; null further inside
};

class SvgReader {
 public:
    explicit SvgReader(std::string_view text);
    Drawing Read();

 private:
    void Draw(const pugi::xml_node& element, Surroundings around);
    void DrawChildren(const pugi::xml_node& element, Surroundings around);
    void DrawFirstSuitableChild(const pugi::xml_node& element, const Surroundings& around);
    void DrawUse(const pugi::xml_node& element, Surroundings around);
    void DrawViewport(const pugi::xml_node& element, Surroundings around);
    void DrawShape(const pugi::xml_node& element, const Surroundings& around);
    void CountRepeated(const Surroundings& around, std::size_t amount);

    pugi::xml_node Referenced(const pugi::xml_node& use);
    void IndexIds();
    /// The result of `work`; a complaint of it gets the element's name.
    template <class Work>
    auto At(const pugi::xml_node& element, Work work) const {
        try {
            return work();
        } catch (const Failure& failure) {
            throw Failure(Describe(element) + ": " + failure.what());
        }
    }
    std::string Describe(const pugi::xml_node& element) const;

    std::string_view text_;
    pugi::xml_document document_;
    std::unordered_map<std::string_view, pugi::xml_node> ids_;  // filled at the first <use>
    std::vector<pugi::xml_node> active_uses_;                   // what is being drawn through <use>, outermost first
    std::size_t repeated_ = 0;
    std::vector<ShapeRecord> records_;
    std::optional<M_FloatRect> canvas_;
};

std::size_t LineAt(std::string_view text, std::ptrdiff_t offset) {
    const auto before = text.substr(0, offset < 0 ? 0 : static_cast<std::size_t>(offset));
    return 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
}

/// The tag without the usual prefix; empty for what is no SVG element, such as an editor's own notes.
std::string_view TagOf(const pugi::xml_node& element) {
    std::string_view tag = element.name();
    if (tag.starts_with("svg:")) tag.remove_prefix(4);
    return tag.find(':') == std::string_view::npos ? tag : std::string_view();
}

bool IsVisible(const SvgAttributes& attributes, bool inherited) {
    const std::string_view visibility = attributes.Property("visibility");
    if (visibility == "visible") return true;
    return inherited && visibility != "hidden" && visibility != "collapse";
}

/// Shares of an unknown window say nothing.
std::optional<double> AbsoluteSize(const SvgAttributes& attributes, const char* name) {
    return IsRelativeLength(attributes.Text(name)) ? std::nullopt : attributes.Size(name, 0);
}

/// As large as the drawing says; a missing side follows from the view box.
SvgViewport OutermostViewport(const SvgAttributes& attributes, const std::optional<ViewBox>& box) {
    const std::optional<double> width = AbsoluteSize(attributes, "width");
    const std::optional<double> height = AbsoluteSize(attributes, "height");
    if (!box) return {width.value_or(kUnknownViewport.width), height.value_or(kUnknownViewport.height)};
    const double scale = width ? *width / box->width : height ? *height / box->height : 1;
    return {width.value_or(box->width * scale), height.value_or(box->height * scale)};
}

std::optional<M_FloatRect> CanvasOf(const SvgAttributes& attributes, const std::optional<ViewBox>& box) {
    if (!box && !(AbsoluteSize(attributes, "width") && AbsoluteSize(attributes, "height"))) return std::nullopt;
    const SvgViewport viewport = OutermostViewport(attributes, box);
    if (viewport.width <= 0 || viewport.height <= 0) return std::nullopt;
    return M_FloatRect{0, 0, viewport.width, viewport.height};
}

SvgViewport InnerViewport(const SvgAttributes& attributes, const Surroundings& around) {
    const SvgAttributes shown_by(around.shown_by, around.viewport);
    const auto size = [&](const char* name, double whole) {
        const std::optional<double> set_by_use = shown_by.Size(name, whole);
        return set_by_use ? *set_by_use : attributes.Size(name, whole).value_or(whole);
    };
    return {size("width", around.viewport.width), size("height", around.viewport.height)};
}

SvgReader::SvgReader(std::string_view text) : text_(text) {
    const pugi::xml_parse_result result = document_.load_buffer(text.data(), text.size());
    if (!result)
        throw Failure("not well-formed XML at line " + std::to_string(LineAt(text, result.offset)) + ": " + result.description());
}

Drawing SvgReader::Read() {
    const pugi::xml_node root = document_.document_element();
    if (TagOf(root) != "svg") throw Failure("not an SVG drawing: the outermost element is <" + std::string(root.name()) + ">");
    Draw(root, {});
    return {std::move(records_), canvas_};
}

void SvgReader::Draw(const pugi::xml_node& element, Surroundings around) {
    ThrowIfInterrupted();
    const std::string_view tag = TagOf(element);
    const SvgAttributes attributes(element, around.viewport);
    if (tag.empty() || attributes.Property("display") == "none") return;
    if (++around.depth > kMaxDepth) throw Failure("elements are nested deeper than " + std::to_string(kMaxDepth));
    CountRepeated(around, 1);
    around.visible = IsVisible(attributes, around.visible);
    around.to_pixels = around.to_pixels * At(element, [&] { return attributes.Transform(); });

    if (IsSvgShape(tag)) return DrawShape(element, around);
    if (tag == "g" || tag == "a") return DrawChildren(element, around);
    if (tag == "svg" || (tag == "symbol" && around.shown_by)) return DrawViewport(element, around);
    if (tag == "use") return DrawUse(element, around);
    if (tag == "switch") return DrawFirstSuitableChild(element, around);
    // Everything else is not an outline (text, images, notes) or shows only where something refers to it (defs, symbols,
    // clips, masks, patterns, markers).
}

void SvgReader::DrawChildren(const pugi::xml_node& element, Surroundings around) {
    around.shown_by = {};
    for (const pugi::xml_node& child : element.children()) Draw(child, around);
}

/// Of the alternatives in a <switch> the first that needs no extension of SVG.
void SvgReader::DrawFirstSuitableChild(const pugi::xml_node& element, const Surroundings& around) {
    for (const pugi::xml_node& child : element.children()) {
        if (child.type() != pugi::node_element || child.attribute("requiredExtensions")) continue;
        return Draw(child, around);
    }
}

void SvgReader::DrawUse(const pugi::xml_node& element, Surroundings around) {
    const pugi::xml_node target = At(element, [&] { return Referenced(element); });
    const SvgAttributes attributes(element, around.viewport);
    around.to_pixels =
        around.to_pixels * At(element, [&] { return Translation(attributes.Horizontal("x"), attributes.Vertical("y")); });
    around.repeated = true;
    around.shown_by = element;
    active_uses_.push_back(target);
    Draw(target, around);
    active_uses_.pop_back();
}

/// Draws the content of an <svg> or <symbol>, which brings its own viewport. The <use> that shows it may set the size.
void SvgReader::DrawViewport(const pugi::xml_node& element, Surroundings around) {
    const Affine placed = At(element, [&] {
        const SvgAttributes attributes(element, around.viewport);
        const std::optional<ViewBox> box = attributes.Box();
        const bool outermost = around.depth == 1;
        if (outermost) canvas_ = CanvasOf(attributes, box);
        around.viewport = outermost ? OutermostViewport(attributes, box) : InnerViewport(attributes, around);
        const Affine moved = outermost ? Affine{} : Translation(attributes.Horizontal("x"), attributes.Vertical("y"));
        if (!box) return moved;
        const Affine fitted = attributes.Fit(*box, around.viewport.width, around.viewport.height);
        around.viewport = {box->width, box->height};
        return moved * fitted;
    });
    around.to_pixels = around.to_pixels * placed;
    DrawChildren(element, around);
}

void SvgReader::DrawShape(const pugi::xml_node& element, const Surroundings& around) {
    if (!around.visible) return;
    At(element, [&] {
        for (Outline& outline : SvgShapeOutlines(TagOf(element), SvgAttributes(element, around.viewport))) {
            CountRepeated(around, outline.vertices.size());
            for (Vertex& vertex : outline.vertices) {
                for (Point* point : {&vertex.in, &vertex.anchor, &vertex.out}) {
                    *point = around.to_pixels(*point);
                    if (!FitsFloat(point->x) || !FitsFloat(point->y)) throw Failure("a coordinate is out of range");
                }
            }
            records_.push_back({MakeShape(outline), std::nullopt});
        }
    });
}

void SvgReader::CountRepeated(const Surroundings& around, std::size_t amount) {
    if (!around.repeated) return;
    repeated_ += amount;
    if (repeated_ > kMaxRepeated)
        throw Failure("<use> elements multiply beyond " + std::to_string(kMaxRepeated) + " elements and vertices");
}

pugi::xml_node SvgReader::Referenced(const pugi::xml_node& use) {
    if (ids_.empty()) IndexIds();
    std::string_view reference = use.attribute("href").value();
    if (reference.empty()) reference = use.attribute("xlink:href").value();
    if (!reference.starts_with('#')) throw Failure("only references to this file's own elements can be drawn");
    const auto found = ids_.find(reference.substr(1));
    if (found == ids_.end()) throw Failure("nothing has the id \"" + std::string(reference.substr(1)) + '"');
    const pugi::xml_node target = found->second;
    for (pugi::xml_node outer = use; outer; outer = outer.parent()) {
        if (outer == target) throw Failure("refers to itself");
    }
    if (std::find(active_uses_.begin(), active_uses_.end(), target) != active_uses_.end()) throw Failure("refers to itself");
    return target;
}

void SvgReader::IndexIds() {
    struct Walker : pugi::xml_tree_walker {
        std::unordered_map<std::string_view, pugi::xml_node>& ids;
        explicit Walker(std::unordered_map<std::string_view, pugi::xml_node>& all) : ids(all) {}
        bool for_each(pugi::xml_node& node) override {
            if (const pugi::xml_attribute id = node.attribute("id")) ids.emplace(id.value(), node);
            return true;
        }
    };
    Walker walker(ids_);
    document_.traverse(walker);
}

std::string SvgReader::Describe(const pugi::xml_node& element) const {
    const std::string tag = std::string("<") + element.name();
    if (const pugi::xml_attribute id = element.attribute("id")) return tag + " id=\"" + id.value() + "\">";
    return tag + "> at line " + std::to_string(LineAt(text_, element.offset_debug()));
}

}  // namespace

Drawing ReadSvgDrawing(std::string_view text) { return SvgReader(text).Read(); }

std::vector<ShapeRecord> ReadSvgShapes(std::string_view text) { return ReadSvgDrawing(text).shapes; }

}  // namespace vrltool
