#include "tool/json_shapes.h"

#include <algorithm>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <span>
#include <utility>

#include "base/narrow.h"
#include "refhost/shape/feather_points.h"
#include "tool/failure.h"
#include "tool/number_text.h"
#include "tool/outline.h"

namespace vrltool {
namespace {

using nlohmann::json;

/// A JSON value and where it stands, so that a complaint can name the place.
struct Place {
    const json& value;
    std::string name;

    [[noreturn]] void Fail(const std::string& what) const { throw Failure(name.empty() ? what : name + ": " + what); }

    void RequireObject(std::initializer_list<std::string_view> known_keys) const {
        if (!value.is_object()) Fail("expected an object");
        for (const auto& [key, ignored] : value.items()) {
            if (std::find(known_keys.begin(), known_keys.end(), key) == known_keys.end()) Fail("unknown key \"" + key + '"');
        }
    }

    bool Has(const char* key) const { return value.contains(key); }

    Place operator[](const char* key) const {
        if (!Has(key)) Fail(std::string("\"") + key + "\" is missing");
        return {value[key], name.empty() ? key : name + '.' + key};
    }

    /// Calls `visit` with every element.
    template <class Visit>
    void ForEach(Visit visit) const {
        if (!value.is_array()) Fail("expected an array");
        for (std::size_t i = 0; i < value.size(); ++i) visit(Place{value[i], name + '[' + std::to_string(i) + ']'});
    }
};

double ReadNumber(const Place& place) {
    if (!place.value.is_number()) place.Fail("expected a number");
    const double number = place.value.get<double>();
    if (!FitsFloat(number)) place.Fail("the number is out of range");
    return number;
}

Point ReadPoint(const Place& place) {
    if (!place.value.is_array() || place.value.size() != 2) place.Fail("expected two numbers, [x, y]");
    std::vector<double> numbers;
    place.ForEach([&](const Place& element) { numbers.push_back(ReadNumber(element)); });
    return {numbers[0], numbers[1]};
}

Vertex ReadVertex(const Place& place) {
    place.RequireObject({"p", "in", "out"});
    const Point anchor = ReadPoint(place["p"]);
    return {place.Has("in") ? ReadPoint(place["in"]) : anchor, anchor, place.Has("out") ? ReadPoint(place["out"]) : anchor};
}

bool ReadClosed(const Place& place) {
    if (!place.value.is_boolean()) place.Fail("expected true or false");
    return place.value.get<bool>();
}

CombineMode ReadMode(const Place& place) {
    const auto mode = place.value.is_string() ? CombineModeNamed(place.value.get<std::string>()) : std::nullopt;
    if (!mode) place.Fail("expected add, subtract, intersect, lighten, darken or difference");
    return *mode;
}

std::size_t SegmentCount(const Outline& outline) { return outline.vertices.size() - (outline.closed ? 0 : 1); }

refhost::FeatherPoint ReadFeatherPoint(const Place& place, std::size_t segments) {
    place.RequireObject({"position", "radius"});
    const double position = ReadNumber(place["position"]);
    if (position < 0 || position > static_cast<double>(segments)) {
        place["position"].Fail("expected a number from 0 to " + std::to_string(segments) + ", the count of segments");
    }
    return {position, NarrowToFloat(ReadNumber(place["radius"]))};
}

std::vector<refhost::FeatherPoint> ReadFeather(const Place& place, std::size_t segments) {
    std::vector<refhost::FeatherPoint> points;
    place.ForEach([&](const Place& point) { points.push_back(ReadFeatherPoint(point, segments)); });
    return points;
}

ShapeRecord ReadShape(const Place& place) {
    place.RequireObject({"closed", "vertices", "feather", "mode"});
    Outline outline;
    if (place.Has("closed")) outline.closed = ReadClosed(place["closed"]);
    const Place vertices = place["vertices"];
    vertices.ForEach([&](const Place& vertex) { outline.vertices.push_back(ReadVertex(vertex)); });
    if (outline.vertices.empty()) vertices.Fail("a shape needs at least one vertex");

    ShapeRecord record = {MakeShape(outline), std::nullopt};
    if (place.Has("feather")) refhost::SetFeatherPoints(*record.shape, ReadFeather(place["feather"], SegmentCount(outline)));
    if (place.Has("mode")) record.mode = ReadMode(place["mode"]);
    return record;
}

/// nlohmann's texts start with the name of their exception class in brackets, which says nothing to the user.
std::string WithoutBracketedName(const std::string& text) {
    const std::size_t end = text.find("] ");
    return text.starts_with('[') && end != std::string::npos ? text.substr(end + 2) : text;
}

json Parse(std::string_view text) {
    try {
        return json::parse(text);
    } catch (const json::exception& error) {
        throw Failure("not valid JSON: " + WithoutBracketedName(error.what()));
    }
}

void AppendPoint(const char* key, const Point& point, std::string& out) {
    out.append("\"").append(key).append("\": [");
    AppendNumber(NarrowToFloat(point.x), out);
    out.append(", ");
    AppendNumber(NarrowToFloat(point.y), out);
    out.append("]");
}

void AppendVertex(const Vertex& vertex, std::string& out) {
    out.append("{");
    AppendPoint("p", vertex.anchor, out);
    out.append(", ");
    AppendPoint("in", vertex.in, out);
    out.append(", ");
    AppendPoint("out", vertex.out, out);
    out.append("}");
}

void AppendFeather(std::span<const refhost::FeatherPoint> points, std::string& out) {
    const char* separator = ", \"feather\": [\n    ";
    for (const refhost::FeatherPoint& point : points) {
        out.append(std::exchange(separator, ",\n    ")).append("{\"position\": ");
        AppendNumber(point.position, out);
        out.append(", \"radius\": ");
        AppendNumber(point.radius, out);
        out.append("}");
    }
    if (!points.empty()) out.append("]");
}

void AppendShape(const ShapeRecord& record, std::string& out) {
    const Outline outline = OutlineOf(*record.shape);
    out.append(outline.closed ? "{\"closed\": true, \"vertices\": [" : "{\"closed\": false, \"vertices\": [");
    const char* separator = "\n    ";
    for (const Vertex& vertex : outline.vertices) {
        out.append(std::exchange(separator, ",\n    "));
        AppendVertex(vertex, out);
    }
    out.append("]");
    AppendFeather(refhost::FeatherPointsOf(*record.shape), out);
    if (record.mode) out.append(", \"mode\": \"").append(NameOf(*record.mode)).append("\"");
    out.append("}");
}

}  // namespace

std::vector<ShapeRecord> ReadJsonShapes(std::string_view text) {
    const json document = Parse(text);
    if (!document.is_object()) throw Failure("expected an object with the key \"shapes\"");
    std::vector<ShapeRecord> records;
    Place{document, ""}["shapes"].ForEach([&](const Place& shape) { records.push_back(ReadShape(shape)); });
    return records;
}

void WriteJsonShapes(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras, const TextSink& sink) {
    std::string out = "{";
    if (extras.total_ms) {
        out.append("\"total_ms\": ");
        AppendNumber(*extras.total_ms, out);
        out.append(", ");
    }
    out.append("\"shapes\": [");
    const char* separator = "\n  ";
    for (const ShapeRecord& record : records) {
        out.append(std::exchange(separator, ",\n  "));
        AppendShape(record, out);
        HandOver(out, sink);
    }
    sink(out.append("]}\n"));
}

std::string WriteJsonShapes(const std::vector<ShapeRecord>& records, const ShapeFileExtras& extras) {
    return WholeText([&](const TextSink& sink) { WriteJsonShapes(records, extras, sink); });
}

}  // namespace vrltool
