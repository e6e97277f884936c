#pragma once

#include <span>

#include "host/bezier_path.h"
#include "host/engine.h"

/// Points and operators of an engine path, borrowed from it.
struct GRXPathData {
    std::span<const M_Vector2T<float>> points;
    std::span<const PIVPointType> operators;
};

/// A reference to an engine path, or to none. Copies share the path.
class CGRXPath {
 public:
    CGRXPath() = default;
    CGRXPath(const CGRXPath& other);
    CGRXPath(CGRXPath&& other) noexcept : path_(other.path_) { other.path_ = nullptr; }
    CGRXPath& operator=(CGRXPath other) noexcept;
    ~CGRXPath();

    /// The engine's path of `record`.
    /// @throws CNUBError, std::bad_alloc  as the engine fails
    static CGRXPath FromRecord(const CPIVBezierPath& record);

    /// Takes over the caller's reference to `path`, which may be null.
    static CGRXPath Adopt(GRXPath* path) { return CGRXPath(path); }

    /// Empty for no path.
    GRXPathData Data() const;
    /// A new path with every point mapped.
    CGRXPath Transformed(const PIVMatrix& matrix) const;

    bool IsNull() const { return path_ == nullptr; }
    /// The engine's path, borrowed, for the host.
    GRXPath* Handle() const { return path_; }

 private:
    explicit CGRXPath(GRXPath* owned) : path_(owned) {}

    GRXPath* path_ = nullptr;
};
