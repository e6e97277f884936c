#include "trace/trace_job.h"

#include "base/errors.h"
#include "trace/raster.h"
#include "trace/region_merge.h"
#include "trace/shape_creation.h"
#include "trace/shape_generator.h"
#include "trace/trace.h"

ts::auto_ptr<VRLp_TraceJob> VRLp_CreateJob(const GW_World& bitmap, const VRLp_TraceOptions& options,
                                           std::vector<boost::shared_ptr<DY_Shape>>& shapes, std::uint8_t flag) {
    constexpr float kSampleWindow = 16.0F;
    auto job = ts::make_auto<VRLp_TraceJob>(VRLp_TraceJob{&bitmap, options, &shapes, flag});
    job->options.sample_window = kSampleWindow;
    return job;
}

void VRLp_RunJob(const VRLp_TraceJob* job) {
    if (job == nullptr) throw kFailedCheck;
    const VRLp_TraceOptions& options = job->options;
    auto raster = ts::make_auto<RPRaster>(*job->bitmap);
    RPTrace trace(raster, options.minimum_area, options.second_kind != 0);
    if (options.minimum_area > 0) RPMergeSmallRegions(&trace, options.minimum_area);
    VRLp_ShapeGenerator generator(&trace, options);
    VRLp_CreateShapes(generator, *job->shapes);
}
