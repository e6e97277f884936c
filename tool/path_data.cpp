#include "tool/path_data.h"

#include <cctype>
#include <numbers>

#include "tool/number_scanner.h"
#include "tool/path_builder.h"

namespace vrltool {
namespace {

/// The last control point, kept for the smooth commands that mirror it.
enum class Control { kNone, kCubic, kQuadratic };

class PathDataParser {
 public:
    explicit PathDataParser(std::string_view data) : scan_(data) {}

    std::vector<Outline> Parse() {
        bool first = true;
        while (!scan_.AtEnd()) {
            RunCommand(ReadCommand(first));
            first = false;
        }
        return path_.Take();
    }

 private:
    /// The first command must be a move: nothing else has a point to start from.
    char ReadCommand(bool first) {
        const std::string_view known = first ? "Mm" : "MmZzLlHhVvCcSsQqTtAa";
        const char letter = scan_.Peek();
        if (letter == 0 || known.find(letter) == std::string_view::npos) {
            scan_.FailExpecting(first ? "a moveto command, M or m" : "a command letter");
        }
        scan_.Accept(letter);
        comma_allowed_ = false;
        return letter;
    }

    /// The command and its repeats, which follow without a letter; further points of a move are lines.
    void RunCommand(char letter) {
        RunStep(letter);
        if (letter == 'M') letter = 'L';
        if (letter == 'm') letter = 'l';
        while (letter != 'Z' && letter != 'z' && (scan_.StartsNumber() || scan_.Peek() == ',')) {
            RunStep(letter);
        }
    }

    void RunStep(char letter) {
        const bool relative = std::islower(static_cast<unsigned char>(letter)) != 0;
        origin_ = relative ? path_.Current() : Point{0, 0};
        Control control = Control::kNone;
        switch (std::toupper(static_cast<unsigned char>(letter))) {
            case 'M':
                path_.MoveTo(ReadPoint());
                break;
            case 'L':
                path_.LineTo(ReadPoint());
                break;
            case 'H':
                path_.LineTo({origin_.x + Number(), path_.Current().y});
                break;
            case 'V':
                path_.LineTo({path_.Current().x, origin_.y + Number()});
                break;
            case 'C':
                Cubic(ReadPoint());
                control = Control::kCubic;
                break;
            case 'S':
                Cubic(Mirrored(Control::kCubic));
                control = Control::kCubic;
                break;
            case 'Q':
                Quadratic(ReadPoint());
                control = Control::kQuadratic;
                break;
            case 'T':
                Quadratic(Mirrored(Control::kQuadratic));
                control = Control::kQuadratic;
                break;
            case 'A':
                Arc();
                break;
            default:
                path_.Close();
                break;
        }
        control_kind_ = control;
    }

    void Cubic(const Point& control1) {
        control_ = ReadPoint();
        path_.CurveTo(control1, control_, ReadPoint());
    }

    void Quadratic(const Point& control) {
        control_ = control;
        path_.QuadraticTo(control_, ReadPoint());
    }

    void Arc() {
        const double rx = Number();
        const double ry = Number();
        const double rotation = Number() * std::numbers::pi / 180;
        scan_.SkipComma();
        const bool large = scan_.Flag();
        scan_.SkipComma();
        const bool sweep = scan_.Flag();
        path_.ArcTo({rx, ry, rotation}, large, sweep, ReadPoint());
    }

    Point Mirrored(Control kind) const {
        const Point& current = path_.Current();
        return control_kind_ == kind ? Point{2 * current.x - control_.x, 2 * current.y - control_.y} : current;
    }

    Point ReadPoint() {
        const double x = origin_.x + Number();
        return {x, origin_.y + Number()};
    }

    /// Commas stand between arguments, so not before the first one of a command.
    double Number() {
        if (comma_allowed_) scan_.SkipComma();
        comma_allowed_ = true;
        return scan_.Number();
    }

    NumberScanner scan_;
    PathBuilder path_;
    bool comma_allowed_ = false;
    Point origin_ = {0, 0};   // what the coordinates of the current step are relative to
    Point control_ = {0, 0};  // second control point of the last curve
    Control control_kind_ = Control::kNone;
};

}  // namespace

std::vector<Outline> ParsePathData(std::string_view data) { return PathDataParser(data).Parse(); }

}  // namespace vrltool
