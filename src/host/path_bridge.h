#pragma once

#include "base/export.h"
#include "host/bezier_path.h"
#include "host/engine.h"
#include "host/grx_path.h"

// The host's bridge between engine outlines and path records.

struct HOB_CollectedPath;  // what the host keeps of an outline while it arrives

/// Gathers an outline that the engine sends segment by segment into a path record.
class VRL_HOST_API HOB_PathCollector {
 public:
    /// Fills `record`, borrowed, with coordinates multiplied by `scale`.
    HOB_PathCollector(double scale, CPIVBezierPath& record);
    HOB_PathCollector(const HOB_PathCollector&) = delete;
    HOB_PathCollector& operator=(const HOB_PathCollector&) = delete;
    ~HOB_PathCollector();

    /// Takes one segment that ends at (x3, y3); the other points are a curve's controls. `collector` is a HOB_PathCollector.
    static void Callback(float x1, float y1, float x2, float y2, float x3, float y3, PIVPointType op, void* collector);

    /// Puts what arrived into the record.
    /// @throws std::bad_alloc, QELException
    void Flush();

 private:
    HOB_CollectedPath* collected_;  // owned
};

/// Receives the segments of an outline in order.
class VRL_SHARED_TYPE HOB_OutlinePlayer {
 public:
    HOB_OutlinePlayer() = default;
    HOB_OutlinePlayer(const HOB_OutlinePlayer&) = delete;
    HOB_OutlinePlayer& operator=(const HOB_OutlinePlayer&) = delete;
    virtual ~HOB_OutlinePlayer() noexcept(false) = default;  // a player may have work left to do that can fail
    virtual void MoveTo(float x, float y) = 0;
    virtual void LineTo(float x, float y) = 0;
    virtual void CurveTo(float x1, float y1, float x2, float y2, float x3, float y3) = 0;
    virtual void ClosePath() = 0;
};

/// Plays every subpath of `path`. What the player throws leaves the call.
VRL_HOST_API void HOB_PlayOutlines(const CGRXPath& path, HOB_OutlinePlayer& player);
