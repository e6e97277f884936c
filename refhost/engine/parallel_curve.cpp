#include "refhost/engine/parallel_curve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace refhost {
namespace {

constexpr int kFineSteps = 16;           // samples that measure length and turning of one stretch
constexpr int kFitSamples = 9;           // of those, interior points the fit is judged at
constexpr int kFitRounds = 5;            // Gauss-Newton rounds; the fit has settled after three or four
constexpr int kCalmSamples = 4;          // interior points at which the fit of a calm curve is judged
constexpr double kCalmTurn = 0.9;        // sine of the largest turn of a calm curve
constexpr double kCalmLegs = 3;          // its control legs differ by at most this factor
constexpr double kMaxTurn = 1.75;        // radians one cubic may turn; the fit degrades quickly beyond
constexpr int kMaxDepth = 14;            // halvings of one stretch
constexpr double kShortStretch = 1e-3;   // pixels; a parallel that stays this short is a line
constexpr int kEvoluteChords = 8;
constexpr int kUniformProbes = 32;       // parameters probed for a change of sign of the offset's direction
constexpr int kGeometricProbes = 20;     // further ones on each side of a slow point, each half as far from it

struct Stretch {
    double from, to;  // parameter range of the source curve
};

/// A point of the exact parallel.
struct Sample {
    double t;         // parameter on the source
    Point position;
    Point tangent;    // of unit length
    double progress;  // 0 to 1: half by length, half by turning
};

/// Fits cubics to the parallel of one curve.
class ParallelFitter {
 public:
    ParallelFitter(const Cubic& curve, double distance, double tolerance, std::vector<CurvePiece>& out)
        : curve_(curve), distance_(distance), tolerance_(tolerance), out_(out) {}

    void Append();

 private:
    using FineSamples = std::array<Sample, kFineSteps + 1>;
    using FitSamples = std::array<Sample, kFitSamples>;

    bool IsCalm() const;
    bool AppendCalm();
    bool NeverTurnsBack() const;
    double Direction(double t) const;
    std::vector<double> DirectionChanges() const;
    std::vector<double> Probes() const;
    double ChangeBetween(double low, double high) const;

    void AppendForward(Stretch stretch, int depth);
    void AppendEvolute(Stretch stretch);
    Point EvolutePoint(double t) const;

    Sample SampleAt(double t) const;
    double Measure(Stretch stretch, FineSamples& samples) const;
    FitSamples EvenSamples(const FineSamples& fine) const;
    std::optional<Cubic> Fit(const FineSamples& fine) const;

    const Cubic& curve_;
    double distance_;
    double tolerance_;
    std::vector<CurvePiece>& out_;
};

/// A cubic with fixed end points and tangents; its two handle lengths are what the fit looks for.
struct HandleCubic {
    Point start, start_tangent, end, end_tangent;
    double start_handle, end_handle;

    Cubic Curve() const { return {start, start + start_handle * start_tangent, end - end_handle * end_tangent, end}; }
};

double ParameterAtProgress(std::span<const Sample> fine, double progress);
bool FindOnNormal(const Cubic& curve, const Sample& sample, int rounds, double& u);
bool ImproveHandles(HandleCubic& fit, std::span<const Sample> samples, std::span<double> parameters, int rounds, double slack);
double WorstDeviation(const Cubic& curve, std::span<const Sample> samples, std::span<double> parameters);

}  // namespace

void AppendParallelCurve(const Cubic& curve, double distance, double tolerance, std::vector<CurvePiece>& out) {
    ParallelFitter(curve, distance, tolerance, out).Append();
}

namespace {

void ParallelFitter::Append() {
    if (NeverTurnsBack()) {
        if (!IsCalm() || !AppendCalm()) AppendForward({0, 1}, 0);
        return;
    }
    const std::vector<double> knots = DirectionChanges();
    for (std::size_t i = 0; i + 1 < knots.size(); ++i) {
        const Stretch stretch = {knots[i], knots[i + 1]};
        if (Direction(0.5 * (stretch.from + stretch.to)) >= 0) {
            AppendForward(stretch, 0);
        } else {
            AppendEvolute(stretch);
        }
    }
}

// The parallel c + d n has the derivative c' (1 + d k), k the signed curvature: it follows the source while this is positive.
double ParallelFitter::Direction(double t) const {
    const Point first = FirstDerivative(curve_, t);
    const double speed = Length(first);
    return speed * speed * speed + distance_ * Cross(first, SecondDerivative(curve_, t));
}

// c' x c'' is a quadratic polynomial, and the part of c' along the chord is at least the smallest of its coefficients: often
// these bounds settle the question without a search.
bool ParallelFitter::NeverTurnsBack() const {
    const Point a = curve_.p1 - curve_.p0;
    const Point b = curve_.p2 - curve_.p1;
    const Point c = curve_.p3 - curve_.p2;
    const double least_bend = 18 * distance_ * Cross(a, b);
    const double middle_bend = 9 * distance_ * Cross(a, c);
    const double last_bend = 18 * distance_ * Cross(b, c);
    const double worst = std::min({least_bend, middle_bend, last_bend});
    if (worst >= 0) return true;
    const Point chord = curve_.p3 - curve_.p0;
    const double length = Length(chord);
    if (length == 0) return false;
    const double least_speed = 3 * std::min({Dot(a, chord), Dot(b, chord), Dot(c, chord)}) / length;
    return least_speed > 0 && least_speed * least_speed * least_speed + worst > 0;
}

// Neither turns nor changes speed enough to hide anything between a few samples.
bool ParallelFitter::IsCalm() const {
    const std::array<Point, 3> legs = {curve_.p1 - curve_.p0, curve_.p2 - curve_.p1, curve_.p3 - curve_.p2};
    const std::array<double, 3> lengths = {Length(legs[0]), Length(legs[1]), Length(legs[2])};
    const auto [shortest, longest] = std::minmax_element(lengths.begin(), lengths.end());
    if (*longest > kCalmLegs * *shortest) return false;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t j = (i + 1) % 3;
        const double scale = lengths[i] * lengths[j];
        if (Dot(legs[i], legs[j]) <= 0 || std::abs(Cross(legs[i], legs[j])) > kCalmTurn * scale) return false;
    }
    return true;
}

// The cubic with the exact end points and derivatives of the parallel keeps step with it, so the two are compared at equal
// parameters. It is less close than a fitted one but needs no search.
bool ParallelFitter::AppendCalm() {
    const auto derivative_at = [&](double t, Point first) {
        const double speed = Length(first);
        const double growth = Direction(t) / (speed * speed * speed);
        return growth * first;
    };
    const Point start_leg = 3 * (curve_.p1 - curve_.p0);
    const Point end_leg = 3 * (curve_.p3 - curve_.p2);
    const Point start = curve_.p0 + distance_ * RightNormal(Unit(start_leg));
    const Point end = curve_.p3 + distance_ * RightNormal(Unit(end_leg));
    const Cubic parallel = {start, start + 1.0 / 3 * derivative_at(0, start_leg), end - 1.0 / 3 * derivative_at(1, end_leg), end};
    for (int i = 1; i <= kCalmSamples; ++i) {
        const double t = static_cast<double>(i) / (kCalmSamples + 1);
        const Sample sample = SampleAt(t);
        if (Distance(Evaluate(parallel, t), sample.position) > tolerance_) return false;
    }
    out_.push_back({parallel, false});
    return true;
}

std::vector<double> ParallelFitter::DirectionChanges() const {
    std::vector<double> knots = {0};
    const std::vector<double> probes = Probes();
    for (std::size_t i = 0; i + 1 < probes.size(); ++i) {
        if ((Direction(probes[i]) < 0) != (Direction(probes[i + 1]) < 0)) knots.push_back(ChangeBetween(probes[i], probes[i + 1]));
    }
    knots.push_back(1);
    return knots;
}

// Curvature peaks where the curve is slow, as narrowly as the speed is small, so probes crowd there. The ends themselves are left
// out: with a zero handle the direction vanishes there and has no sign.
std::vector<double> ParallelFitter::Probes() const {
    std::vector<double> probes;
    for (int i = 1; i < kUniformProbes; ++i) probes.push_back(static_cast<double>(i) / kUniformProbes);
    std::vector<double> slow = SpeedMinima(curve_);
    slow.insert(slow.end(), {0.0, 1.0});
    for (const double centre : slow) {
        double step = 1.0 / kUniformProbes;
        for (int i = 0; i < kGeometricProbes; ++i, step *= 0.5) probes.insert(probes.end(), {centre - step, centre + step});
    }
    std::erase_if(probes, [](double t) { return t <= 0 || t >= 1; });
    std::sort(probes.begin(), probes.end());
    return probes;
}

double ParallelFitter::ChangeBetween(double low, double high) const {
    constexpr int kHalvings = 44;
    const bool low_is_back = Direction(low) < 0;
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = 0.5 * (low + high);
        ((Direction(middle) < 0) == low_is_back ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

void ParallelFitter::AppendForward(Stretch stretch, int depth) {
    FineSamples fine;
    const double turn = Measure(stretch, fine);
    const Point start = fine.front().position;
    const Point end = fine.back().position;
    if (turn <= kMaxTurn) {
        if (const std::optional<Cubic> fit = Fit(fine)) return out_.push_back({*fit, false});
    }
    const bool is_short = std::all_of(fine.begin(), fine.end(), [&](const Sample& s) { return Distance(s.position, start) < kShortStretch; });
    if (is_short || depth == kMaxDepth) return out_.push_back(StraightPiece(start, end));
    const double middle = ParameterAtProgress(fine, 0.5);
    AppendForward({stretch.from, middle}, depth + 1);
    AppendForward({middle, stretch.to}, depth + 1);
}

void ParallelFitter::AppendEvolute(Stretch stretch) {
    Point last = SampleAt(stretch.from).position;
    for (int i = 1; i <= kEvoluteChords; ++i) {
        const double t = stretch.from + (stretch.to - stretch.from) * i / kEvoluteChords;
        const Point next = i == kEvoluteChords ? SampleAt(stretch.to).position : EvolutePoint(t);
        out_.push_back(ScaffoldPiece(last, next));
        last = next;
    }
}

// Centre of curvature on the offset side, never further out than the distance.
Point ParallelFitter::EvolutePoint(double t) const {
    const Point first = FirstDerivative(curve_, t);
    const double speed = Length(first);
    const double radius = speed * speed * speed / std::abs(Cross(first, SecondDerivative(curve_, t)));
    const double reach = std::min(std::abs(distance_), radius);
    return Evaluate(curve_, t) + std::copysign(reach, distance_) * RightNormal(TangentAt(curve_, t));
}

Sample ParallelFitter::SampleAt(double t) const {
    const Point tangent = TangentAt(curve_, t);
    return {t, Evaluate(curve_, t) + distance_ * RightNormal(tangent), tangent, 0};
}

// Progress counts length and turning alike: samples even in either alone miss tight turns or long flat runs.
// Returns the total turning, both ways counted positive.
double ParallelFitter::Measure(Stretch stretch, FineSamples& samples) const {
    std::array<double, kFineSteps + 1> length{};
    std::array<double, kFineSteps + 1> turn{};
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double fraction = static_cast<double>(i) / kFineSteps;
        samples[i] = SampleAt(i == kFineSteps ? stretch.to : stretch.from + (stretch.to - stretch.from) * fraction);
        if (i == 0) continue;
        length[i] = length[i - 1] + Distance(samples[i - 1].position, samples[i].position);
        turn[i] = turn[i - 1] + Distance(samples[i - 1].tangent, samples[i].tangent);  // nearly the angle
    }
    const double whole_length = std::max(length.back(), std::numeric_limits<double>::min());
    const double whole_turn = std::max(turn.back(), std::numeric_limits<double>::min());
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i].progress = 0.5 * (length[i] / whole_length + turn[i] / whole_turn);
    return turn.back();
}

ParallelFitter::FitSamples ParallelFitter::EvenSamples(const FineSamples& fine) const {
    FitSamples samples;
    const double whole = fine.back().progress;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double progress = whole * static_cast<double>(i + 1) / (kFitSamples + 1);
        samples[i] = SampleAt(ParameterAtProgress(fine, progress));
    }
    return samples;
}

// One cubic for the whole stretch, or nothing when it misses by more than the tolerance.
std::optional<Cubic> ParallelFitter::Fit(const FineSamples& fine) const {
    const Sample& first = fine.front();
    const Sample& last = fine.back();
    const FitSamples samples = EvenSamples(fine);
    const double chord = Distance(first.position, last.position);
    HandleCubic fit = {first.position, first.tangent, last.position, last.tangent, chord / 3, chord / 3};
    std::array<double, kFitSamples> parameters;
    for (std::size_t i = 0; i < parameters.size(); ++i) parameters[i] = static_cast<double>(i + 1) / (kFitSamples + 1);
    for (int round = 0; round < kFitRounds; ++round) {
        const double slack = 0.25 * tolerance_;
        if (!ImproveHandles(fit, samples, parameters, round == 0 ? 3 : 1, slack)) break;
    }
    if (fit.start_handle < 0 || fit.end_handle < 0) return std::nullopt;
    const Cubic curve = fit.Curve();
    if (WorstDeviation(curve, samples, parameters) > tolerance_) return std::nullopt;
    return curve;
}

double ParameterAtProgress(std::span<const Sample> fine, double progress) {
    const auto after = std::upper_bound(fine.begin() + 1, fine.end() - 1, progress, [](double p, const Sample& s) { return p < s.progress; });
    const Sample& high = *after;
    const Sample& low = *(after - 1);
    const double step = high.progress - low.progress;
    const double fraction = step > 0 ? std::clamp((progress - low.progress) / step, 0.0, 1.0) : 0.5;
    return low.t + (high.t - low.t) * fraction;
}

// Newton's method for the parameter at which the curve crosses the sample's normal. False when it does not cross.
bool FindOnNormal(const Cubic& curve, const Sample& sample, int rounds, double& u) {
    for (int i = 0; i < rounds; ++i) {
        const double slope = Dot(FirstDerivative(curve, u), sample.tangent);
        if (slope == 0) return false;
        const double step = Dot(Evaluate(curve, u) - sample.position, sample.tangent) / slope;
        u = std::clamp(u - step, 0.0, 1.0);
    }
    return true;
}

// One Gauss-Newton round on the deviations along the normals. The handle lengths enter the curve linearly, through the two inner
// Bernstein polynomials. False when nothing is left to improve: the
// curve is within `slack` already, or the handles do not matter, as on a straight parallel.
bool ImproveHandles(HandleCubic& fit, std::span<const Sample> samples, std::span<double> parameters, int rounds, double slack) {
    const Cubic curve = fit.Curve();
    double aa = 0, ab = 0, bb = 0, ae = 0, be = 0, worst = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        double& u = parameters[i];
        if (!FindOnNormal(curve, samples[i], rounds, u)) return false;
        const Point normal = RightNormal(samples[i].tangent);
        const double error = Dot(Evaluate(curve, u) - samples[i].position, normal);
        const double a = 3 * (1 - u) * (1 - u) * u * Dot(fit.start_tangent, normal);
        const double b = -3 * (1 - u) * u * u * Dot(fit.end_tangent, normal);
        aa += a * a, ab += a * b, bb += b * b, ae += a * error, be += b * error;
        worst = std::max(worst, std::abs(error));
    }
    if (worst < slack) return false;
    const double determinant = aa * bb - ab * ab;
    if (determinant <= 1e-9 * (aa + bb) * (aa + bb)) return false;
    fit.start_handle -= (bb * ae - ab * be) / determinant;
    fit.end_handle -= (aa * be - ab * ae) / determinant;
    return true;
}

// Infinite when a sample's normal is missed.
double WorstDeviation(const Cubic& curve, std::span<const Sample> samples, std::span<double> parameters) {
    double worst = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (!FindOnNormal(curve, samples[i], 3, parameters[i])) return std::numeric_limits<double>::infinity();
        worst = std::max(worst, Distance(Evaluate(curve, parameters[i]), samples[i].position));
    }
    return worst;
}

}  // namespace
}  // namespace refhost
