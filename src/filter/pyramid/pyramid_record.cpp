// The pyramid descriptor: how many levels there are, their sizes and scales, and slots for the caller's level images.
#include "filter/pyramid/level_sizes.h"
#include "frame/api.h"
#include "kernel/checks.h"
#include "kernel/scratch.h"

#include "rvxcore.h"

using namespace rvxcv;

namespace {

bool isOnePixel(RoiSize roi) { return roi.width == 1 && roi.height == 1; }

// Levels above the base, `most` of them at most. Every step makes a side longer than 1 shorter, so it ends.
std::int32_t countLevels(RoiSize roi, float rate, std::int32_t most) {
    std::int32_t count = 0;
    for (; count < most && !isOnePixel(roi); ++count) {
        roi = pyramidDownSize(roi, rate);
    }
    return count;
}

} // namespace

StatusCode rvxiPyramidInitAlloc(PyramidRecord **pyramid, int32_t level, RoiSize baseRoi, float rate) {
    Checks checks;
    checks.pointers(pyramid).size(baseRoi).require(isPyramidRate(rate) && level >= 1, StatusBadArgument);
    if (checks.failed()) {
        return checks.status();
    }
    const std::int32_t levelCount = countLevels(baseRoi, rate, level);
    const std::int64_t entries = std::int64_t{levelCount} + 1;
    const std::int64_t bytes = std::int64_t{levelCount} * 52 + 152;
    void *block = rvxMalloc(bytes);
    if (block == nullptr) {
        return StatusNoMemory;
    }
    Scratch areas(block, bytes);
    auto *record = areas.take<PyramidRecord>(1);
    *record = {areas.take<void *>(entries),
               areas.take<RoiSize>(entries, 8),
               areas.take<double>(entries),
               areas.take<std::int32_t>(entries, 8),
               nullptr,
               levelCount};

    const double step = 1.0 / static_cast<double>(rate);
    RoiSize roi = baseRoi;
    double scale = 1.0;
    for (std::int64_t i = 0; i < entries; ++i) {
        record->images[i] = nullptr;
        record->roiSizes[i] = roi;
        record->scales[i] = scale;
        record->steps[i] = 0;
        roi = pyramidDownSize(roi, rate);
        scale *= step;
    }
    *pyramid = record;
    return StatusOk;
}

StatusCode rvxiPyramidFree(PyramidRecord *pyramid) {
    if (pyramid == nullptr) {
        return StatusNullPointer;
    }
    rvxFree(pyramid);
    return StatusOk;
}
