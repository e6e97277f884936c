#include "host/path_bridge.h"

#include <cstdlib>
#include <vector>

#include "refhost/engine/engine_memory.h"
#include "refhost/engine/path_object.h"

struct HOB_CollectedPath {
    double scale;
    CPIVBezierPath& record;
    std::vector<M_Vector2T<float>> points;
    std::vector<PIVPointType> operators;

    void Add(float x, float y, PIVPointType op) {
        points.push_back(
            {static_cast<float>(static_cast<double>(x) * scale), static_cast<float>(static_cast<double>(y) * scale)});
        operators.push_back(op);
    }
};

HOB_PathCollector::HOB_PathCollector(double scale, CPIVBezierPath& record)
    : collected_(new HOB_CollectedPath{scale, record, {}, {}}) {}

HOB_PathCollector::~HOB_PathCollector() { delete collected_; }

void HOB_PathCollector::Callback(float x1, float y1, float x2, float y2, float x3, float y3, PIVPointType op, void* collector) {
    HOB_CollectedPath& collected = *static_cast<HOB_PathCollector*>(collector)->collected_;
    if (op == kPIVCurve) {
        collected.Add(x1, y1, op);
        collected.Add(x2, y2, op);
    }
    collected.Add(x3, y3, op);
}

void HOB_PathCollector::Flush() {
    CPIVBezierPath& record = collected_->record;
    for (std::size_t i = 0; i < collected_->points.size(); ++i) {
        if (!record.HasRoom(1)) record.Grow(1, refhost::ReallocEngineBlock);
        if (collected_->operators[i] == kPIVMove) record.subpath_start = record.EntryCount();
        record.Put(collected_->points[i], collected_->operators[i]);
    }
    collected_->points.clear();
    collected_->operators.clear();
}

void HOB_PlayOutlines(const CGRXPath& path, HOB_OutlinePlayer& player) {
    if (path.IsNull()) return;
    const refhost::PathView view = path.Handle()->View();
    for (std::size_t i = 0; i < view.Size(); ++i) {
        const auto point = view.points[i];
        switch (view.operators[i]) {
            case kPIVMove:
                player.MoveTo(point.x, point.y);
                break;
            case kPIVLine:
                player.LineTo(point.x, point.y);
                break;
            case kPIVCurve: {
                const auto control2 = view.points[i + 1];
                const auto end = view.points[i + 2];
                player.CurveTo(point.x, point.y, control2.x, control2.y, end.x, end.y);
                i += 2;
                break;
            }
            case kPIVClose:
                player.ClosePath();
                break;
        }
    }
}
