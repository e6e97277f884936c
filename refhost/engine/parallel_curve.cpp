#include "refhost/engine/parallel_curve.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace refhost {
namespace {

constexpr double kSameTangent = 1e-9;

// ---- Calm curves.
constexpr int kCalmSamples = 4;    // interior points at which the direct construction is judged
constexpr double kCalmTurn = 0.9;  // sine of the largest turn between control legs
constexpr double kCalmLegs = 3;    // the control legs differ by at most this factor

// ---- Sampling.
constexpr int kMaxSampleDepth = 14;    // halvings between two knots
constexpr double kFinestChord = 0.25;  // tolerances; a shorter chord is not divided, whatever it turns
constexpr double kSampleTurn = 0.6;    // radians a chord may turn
constexpr int kBorderRounds = 30;      // to find where the two meet; mostly four or five do

// ---- Fitting.
constexpr int kFineSteps = 12;          // samples that measure length and turning of one stretch
constexpr int kFitSamples = 7;          // interior points the fit looks at
constexpr int kFitRounds = 5;           // Gauss-Newton rounds; the fit has settled after three or four
constexpr double kFitSlack = 0.25;      // tolerances; a fit this close needs no improvement
constexpr double kMaxTurn = 1.75;       // radians one cubic may turn; the fit degrades quickly beyond
constexpr int kMaxFitDepth = 14;        // halvings of one stretch
constexpr double kShortStretch = 1e-3;  // pixels; a parallel that stays this short is a line

constexpr double Square(double x) { return x * x; }
double Growth(const Cubic& curve, double distance, double t);

/// A curve to be looked at in many places.
class CurveProbe {
 public:
    explicit CurveProbe(const Cubic& curve) : curve_(curve), polynomial_(curve) {}

    struct Result {
        Point position;
        Point tangent;  // of unit length
        double speed;
    };
    Result At(double t) const;
    double GrowthAt(double t, const Result& here, double distance) const;
    double GrowthSlopeAt(double t, const Result& here, double distance) const;

 private:
    static constexpr double kSlow = 1e-6;  // pixels; below it rounding matters to the direction

    const Cubic& curve_;
    CubicPolynomial polynomial_;
};

/// Samples the clamped parallel of one curve, finer where it turns.
class ParallelSampler {
 public:
    ParallelSampler(const Cubic& curve, double distance, double tolerance, std::vector<ParallelSample>& out)
        : curve_(curve), probe_(curve), distance_(distance), tolerance_(tolerance), out_(out) {}

    void Sample();

 private:
    struct Probe {
        ParallelSample sample;
        Point tangent;
        double growth;  // see `Growth`; 0 where the parallel passes into the evolute
    };
    /// How much one chord has to stand for. Both are squares.
    struct Bend {
        double length, turn;
    };
    Probe ProbeAt(double t) const;
    Probe BorderBetween(const Probe& low, const Probe& high) const;
    void AppendBetween(const Probe& low, const Probe& high, int depth);
    bool IsFineEnough(const Bend& bend, bool any_free, bool any_clamped) const;

    const Cubic& curve_;
    CurveProbe probe_;
    double distance_;
    double tolerance_;
    std::vector<ParallelSample>& out_;
};

/// A point of the exact parallel, with the direction in which the stretch is run through.
struct FitSample {
    double t;
    Point position;
    Point tangent;    // of unit length
    double progress;  // 0 to 1: half by length, half by turning
};

/// Fits cubics to the parallel of one curve.
class ParallelFitter {
 public:
    ParallelFitter(const Cubic& curve, double distance, bool backwards, double tolerance, std::vector<CurvePiece>& out)
        : curve_(curve), probe_(curve), distance_(distance), backwards_(backwards), tolerance_(tolerance), out_(out) {}

    void Append(double from, double to, int depth);

 private:
    using FineSamples = std::array<FitSample, kFineSteps + 1>;
    using FitSamples = std::array<FitSample, kFitSamples>;

    FitSample SampleAt(double t) const;
    double Measure(double from, double to, FineSamples& samples) const;
    FitSamples EvenSamples(const FineSamples& fine) const;
    std::optional<Cubic> Fit(const FineSamples& fine) const;

    const Cubic& curve_;
    CurveProbe probe_;
    double distance_;
    bool backwards_;
    double tolerance_;
    std::vector<CurvePiece>& out_;
};

/// A cubic with fixed end points and tangents; its two handle lengths are what the fit looks for.
struct HandleCubic {
    Point start, start_tangent, end, end_tangent;
    double start_handle, end_handle;

    Cubic Curve() const { return {start, start + start_handle * start_tangent, end - end_handle * end_tangent, end}; }
};

double ParameterAtProgress(std::span<const FitSample> fine, double progress);
Point GapOnNormal(const CubicPolynomial& curve, const FitSample& sample, int rounds, double slack, double& u);
bool ImproveHandles(HandleCubic& fit, std::span<const FitSample> samples, std::span<double> parameters, double slack);
double WorstDeviation(const CubicPolynomial& curve, std::span<const FitSample> samples, std::span<double> parameters,
                      double slack);

}  // namespace

Point ParallelPoint(const Cubic& curve, double distance, double t) {
    return Evaluate(curve, t) + distance * RightNormal(TangentAt(curve, t));
}

Point ParallelDerivative(const Cubic& curve, double distance, double t) {
    return Growth(curve, distance, t) * FirstDerivative(curve, t);
}

bool IsCalm(const Cubic& c) {
    const std::array<Point, 3> legs = {c.p1 - c.p0, c.p2 - c.p1, c.p3 - c.p2};
    const std::array<double, 3> squares = {Dot(legs[0], legs[0]), Dot(legs[1], legs[1]), Dot(legs[2], legs[2])};
    const auto [shortest, longest] = std::minmax({squares[0], squares[1], squares[2]});
    if (longest > kCalmLegs * kCalmLegs * shortest || shortest == 0) return false;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t j = (i + 1) % 3;
        const double cross = Cross(legs[i], legs[j]);
        if (Dot(legs[i], legs[j]) <= 0 || cross * cross > kCalmTurn * kCalmTurn * squares[i] * squares[j]) return false;
    }
    return true;
}

// The cubic with the exact end points and derivatives of the parallel keeps step with it, so the two are compared at equal
// parameters. It is less close than a fitted one but needs no search.
std::optional<Cubic> CalmParallel(const Cubic& c, double distance, double tolerance) {
    if (!IsCalm(c)) return std::nullopt;
    const double start_growth = Growth(c, distance, 0);
    const double end_growth = Growth(c, distance, 1);
    if (start_growth <= 0 || end_growth <= 0) return std::nullopt;
    const Point start = ParallelPoint(c, distance, 0);
    const Point end = ParallelPoint(c, distance, 1);
    const Cubic parallel = {start, start + start_growth * (c.p1 - c.p0), end - end_growth * (c.p3 - c.p2), end};
    for (int i = 1; i <= kCalmSamples; ++i) {
        const double t = static_cast<double>(i) / (kCalmSamples + 1);
        const Point first = FirstDerivative(c, t);
        const Point exact = Evaluate(c, t) + distance / Length(first) * RightNormal(first);
        if (Distance(Evaluate(parallel, t), exact) > tolerance || Growth(c, distance, t) <= 0) return std::nullopt;
    }
    return parallel;
}

void SampleClampedParallel(const Cubic& curve, double distance, double tolerance, std::vector<ParallelSample>& out) {
    ParallelSampler(curve, distance, tolerance, out).Sample();
}

void FitParallel(const Cubic& curve, double distance, double from, double to, double tolerance, std::vector<CurvePiece>& out) {
    ParallelFitter(curve, distance, to < from, tolerance, out).Append(from, to, 0);
}

namespace {

// The derivative of the parallel is that of the curve times 1 + d k, k the signed curvature: the parallel follows the curve while
// this is positive, stands still at a cusp where it is zero, and runs backwards where it is negative.
double Growth(const Cubic& curve, double distance, double t) {
    const Point first = FirstDerivative(curve, t);
    const double square = Dot(first, first);
    const double bend = Cross(first, SecondDerivative(curve, t));
    if (square == 0) return bend * distance < 0 ? -std::numeric_limits<double>::infinity() : 1;
    return 1 + distance * bend / (square * std::sqrt(square));
}

CurveProbe::Result CurveProbe::At(double t) const {
    const Point first = polynomial_.FirstDerivative(t);
    const double speed = Length(first);
    const bool is_plain = t > 0 && t < 1 && speed > kSlow;
    return {polynomial_.At(t), is_plain ? (1 / speed) * first : TangentAt(curve_, t), speed};
}

double CurveProbe::GrowthAt(double t, const Result& here, double distance) const {
    if (here.speed <= kSlow) return Growth(curve_, distance, t);
    return 1 + distance * Cross(here.tangent, polynomial_.SecondDerivative(t)) / (here.speed * here.speed);
}

// The derivative of distance * cross(c', c'') / |c'|^3.
double CurveProbe::GrowthSlopeAt(double t, const Result& here, double distance) const {
    const double square = here.speed * here.speed;
    const Point second = polynomial_.SecondDerivative(t);
    const Point third = polynomial_.ThirdDerivative();
    return distance * (Cross(here.tangent, third) - 3 * Dot(here.tangent, second) * Cross(here.tangent, second) / here.speed) /
           square;
}

// The curve turns fastest where it is slowest: with these points as knots no tight turn hides between two probes.
void ParallelSampler::Sample() {
    const CurveParameters slow = IsCalm(curve_) ? CurveParameters() : SpeedMinima(curve_);
    constexpr std::array<double, 3> kEven = {0, 0.5, 1};
    std::array<double, 5> places;
    const auto knots =
        std::span(places.begin(), std::merge(kEven.begin(), kEven.end(), slow.begin(), slow.end(), places.begin()));
    Probe last = ProbeAt(0);
    out_.push_back({0, ParallelPoint(curve_, distance_, 0), false});
    if (last.sample.is_clamped) out_.push_back(last.sample);
    for (std::size_t i = 1; i < knots.size(); ++i) {
        const Probe next = ProbeAt(knots[i]);
        AppendBetween(last, next, 0);
        last = next;
    }
    if (last.sample.is_clamped) out_.push_back({1, ParallelPoint(curve_, distance_, 1), false});
}

ParallelSampler::Probe ParallelSampler::ProbeAt(double t) const {
    const CurveProbe::Result here = probe_.At(t);
    const double growth = distance_ == 0 ? 1 : probe_.GrowthAt(t, here, distance_);
    // Growth is 1 - distance / radius of curvature where it is below 1: the clamp stops at the radius.
    const double reach = growth >= 0 ? distance_ : distance_ / (1 - growth);
    return {{t, here.position + reach * RightNormal(here.tangent), growth < 0}, here.tangent, growth};
}

// Where the parallel passes into the evolute, or a touch before. Newton's method, halving where it would lead astray.
ParallelSampler::Probe ParallelSampler::BorderBetween(const Probe& low, const Probe& high) const {
    const double touch = 0.5 * kFinestChord * tolerance_ / std::abs(distance_);  // of growth; too little to set the two apart
    double free = low.sample.t;
    double clamped = high.sample.t;
    if (low.sample.is_clamped) std::swap(free, clamped);
    double t = 0.5 * (free + clamped);
    for (int i = 0; i < kBorderRounds && free != clamped; ++i) {
        const CurveProbe::Result here = probe_.At(t);
        const double excess = probe_.GrowthAt(t, here, distance_) - touch;
        if (excess > -touch) free = t;
        if (excess < touch) clamped = t;
        const double next = t - excess / probe_.GrowthSlopeAt(t, here, distance_);
        const bool is_between = (next > free) != (next > clamped);
        t = is_between ? next : 0.5 * (free + clamped);
    }
    Probe border = ProbeAt(free);
    border.sample.is_clamped = false;
    border.growth = 0;
    return border;
}

void ParallelSampler::AppendBetween(const Probe& low, const Probe& high, int depth) {
    if (low.growth * high.growth < 0) {
        const Probe border = BorderBetween(low, high);
        AppendBetween(low, border, depth);
        AppendBetween(border, high, depth);
        return;
    }
    const Probe middle = ProbeAt(0.5 * (low.sample.t + high.sample.t));
    const auto bend_between = [](const Probe& a, const Probe& b) -> Bend {
        const Point way = b.sample.position - a.sample.position;
        const Point turn = b.tangent - a.tangent;
        return {Dot(way, way), Dot(turn, turn)};
    };
    const Bend first = bend_between(low, middle);
    const Bend second = bend_between(middle, high);
    const Bend half = {std::max(first.length, second.length), std::max(first.turn, second.turn)};
    const Bend whole = {2 * (first.length + second.length), 2 * (first.turn + second.turn)};
    const bool any_free = std::max({low.growth, middle.growth, high.growth}) > 0;
    const bool any_clamped = std::min({low.growth, middle.growth, high.growth}) < 0;
    if (depth == kMaxSampleDepth || IsFineEnough(whole, any_free, any_clamped)) {
        out_.push_back(high.sample);
    } else if (IsFineEnough(half, any_free, any_clamped)) {
        out_.push_back(middle.sample);
        out_.push_back(high.sample);
    } else {
        AppendBetween(low, middle, depth + 1);
        AppendBetween(middle, high, depth + 1);
    }
}

// A chord of length l that turns by a deviates by at most l a / 8. The evolute only has to be roughly right.
bool ParallelSampler::IsFineEnough(const Bend& bend, bool any_free, bool any_clamped) const {
    if (bend.length < Square(kFinestChord * tolerance_)) return true;
    if (any_free && any_clamped) return false;
    return bend.turn < Square(kSampleTurn) && (any_clamped || bend.length * bend.turn < Square(8 * tolerance_));
}

void ParallelFitter::Append(double from, double to, int depth) {
    if (const std::optional<Cubic> calm =
            CalmParallel(SubCurve(curve_, from, to), backwards_ ? -distance_ : distance_, tolerance_)) {
        return out_.push_back({*calm, false});
    }
    FineSamples fine;
    const double turn = Measure(from, to, fine);
    if (turn <= kMaxTurn) {
        if (const std::optional<Cubic> fit = Fit(fine)) return out_.push_back({*fit, false});
    }
    const Point start = fine.front().position;
    const bool is_short =
        std::all_of(fine.begin(), fine.end(), [&](const FitSample& s) { return Distance(s.position, start) < kShortStretch; });
    if (is_short || depth == kMaxFitDepth) return out_.push_back(StraightPiece(start, fine.back().position));
    const double middle = ParameterAtProgress(fine, 0.5);
    Append(from, middle, depth + 1);
    Append(middle, to, depth + 1);
}

FitSample ParallelFitter::SampleAt(double t) const {
    const CurveProbe::Result here = probe_.At(t);
    return {t, here.position + distance_ * RightNormal(here.tangent), backwards_ ? -here.tangent : here.tangent, 0};
}

// Progress counts length and turning alike: samples even in either alone miss tight turns or long flat runs.
// Returns the total turning, both ways counted positive.
double ParallelFitter::Measure(double from, double to, FineSamples& samples) const {
    std::array<double, kFineSteps + 1> length{};
    std::array<double, kFineSteps + 1> turn{};
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = SampleAt(i == kFineSteps ? to : from + (to - from) * static_cast<double>(i) / kFineSteps);
        if (i == 0) continue;
        length[i] = length[i - 1] + Distance(samples[i - 1].position, samples[i].position);
        turn[i] = turn[i - 1] + Distance(samples[i - 1].tangent, samples[i].tangent);  // nearly the angle
    }
    const double whole_length = std::max(length.back(), std::numeric_limits<double>::min());
    const double whole_turn = std::max(turn.back(), kSameTangent);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i].progress = 0.5 * (length[i] / whole_length + turn[i] / whole_turn);
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
    const FitSample& first = fine.front();
    const FitSample& last = fine.back();
    const FitSamples samples = EvenSamples(fine);
    // Handles that give the parallel's own derivatives at the ends are a good start: the cubic then nearly keeps step with it.
    const double third = std::abs(last.t - first.t) / 3;
    const double start_handle = third * Length(ParallelDerivative(curve_, distance_, first.t));
    const double end_handle = third * Length(ParallelDerivative(curve_, distance_, last.t));
    HandleCubic fit = {first.position, first.tangent, last.position, last.tangent, start_handle, end_handle};
    std::array<double, kFitSamples> parameters;
    for (std::size_t i = 0; i < parameters.size(); ++i) parameters[i] = (samples[i].t - first.t) / (last.t - first.t);
    for (int round = 0; round < kFitRounds; ++round) {
        if (!ImproveHandles(fit, samples, parameters, kFitSlack * tolerance_)) break;
    }
    if (fit.start_handle < 0 || fit.end_handle < 0) return std::nullopt;
    const Cubic curve = fit.Curve();
    const CubicPolynomial polynomial(curve);
    const double slack = 0.5 * kFitSlack * tolerance_;
    if (WorstDeviation(polynomial, samples, parameters, slack) > tolerance_) return std::nullopt;
    // Once more where the fit did not look.
    std::array<double, kFineSteps - 1> between;
    for (std::size_t i = 0; i < between.size(); ++i) between[i] = static_cast<double>(i + 1) / kFineSteps;
    if (WorstDeviation(polynomial, std::span(fine).subspan<1, kFineSteps - 1>(), between, slack) > tolerance_)
        return std::nullopt;
    return curve;
}

double ParameterAtProgress(std::span<const FitSample> fine, double progress) {
    const auto after =
        std::upper_bound(fine.begin() + 1, fine.end() - 1, progress, [](double p, const FitSample& s) { return p < s.progress; });
    const FitSample& high = *after;
    const FitSample& low = *(after - 1);
    const double step = high.progress - low.progress;
    const double fraction = step > 0 ? std::clamp((progress - low.progress) / step, 0.0, 1.0) : 0.5;
    return low.t + (high.t - low.t) * fraction;
}

// The way from a sample to where the curve crosses its normal, by Newton's method for the parameter; `slack` is how far beside
// the normal it may end.
Point GapOnNormal(const CubicPolynomial& curve, const FitSample& sample, int rounds, double slack, double& u) {
    for (;; --rounds) {
        const Point gap = curve.At(u) - sample.position;
        const double along = Dot(gap, sample.tangent);
        const double slope = Dot(curve.FirstDerivative(u), sample.tangent);
        if (rounds == 0 || std::abs(along) < slack || slope == 0) return gap;
        u = std::clamp(u - along / slope, 0.0, 1.0);
    }
}

// One Gauss-Newton round on the deviations along the normals. The handle lengths enter the curve linearly, through the two inner
// Bernstein polynomials. False when nothing is left to improve: the curve is within `slack` already, or the handles do not
// matter, as on a straight parallel.
bool ImproveHandles(HandleCubic& fit, std::span<const FitSample> samples, std::span<double> parameters, double slack) {
    const CubicPolynomial curve(fit.Curve());
    double aa = 0, ab = 0, bb = 0, ae = 0, be = 0, worst = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        double& u = parameters[i];
        const Point gap = GapOnNormal(curve, samples[i], 1, 0.5 * slack, u);
        const Point normal = RightNormal(samples[i].tangent);
        const double error = Dot(gap, normal);
        const double a = 3 * (1 - u) * (1 - u) * u * Dot(fit.start_tangent, normal);
        const double b = -3 * (1 - u) * u * u * Dot(fit.end_tangent, normal);
        aa += a * a, ab += a * b, bb += b * b, ae += a * error, be += b * error;
        worst = std::max(worst, std::abs(error));
    }
    const double determinant = aa * bb - ab * ab;
    if (worst < slack || determinant <= 1e-9 * (aa + bb) * (aa + bb)) return false;
    fit.start_handle -= (bb * ae - ab * be) / determinant;
    fit.end_handle -= (aa * be - ab * ae) / determinant;
    return true;
}

// Distances, not only normal deviations: a sample whose normal the curve misses counts in full.
double WorstDeviation(const CubicPolynomial& curve, std::span<const FitSample> samples, std::span<double> parameters,
                      double slack) {
    double worst = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Point gap = GapOnNormal(curve, samples[i], 2, slack, parameters[i]);
        worst = std::max(worst, Dot(gap, gap));
    }
    return std::sqrt(worst);
}

}  // namespace
}  // namespace refhost
