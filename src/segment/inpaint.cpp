// Inpainting: the pixels of a hole from those around it, by fast marching or by diffusion. The order in which the front
// reaches the hole's pixels is found once; the channels are then filled one after the other.
#include "frame/api.h"
#include "segment/inpaint_diffusion.h"
#include "segment/inpaint_march.h"

namespace rvxcv {
namespace {

template <int channels, class T>
void inpaint(Plane<const T> src, Plane<const std::uint8_t> mask, Plane<T> dst, RoiSize roi, std::int64_t radius,
             InpaintMethod method, std::uint8_t *buffer) {
    Hole hole(roi, radius, buffer);
    const bool fillable = hole.find(mask, method == InpaintMarch ? radius + 1 : 1);
    for (std::int64_t y = 0; y < roi.height && src.base != dst.base; ++y) {
        std::memcpy(dst.row(y), src.row(y), static_cast<std::size_t>(rowBytes<T>(std::int64_t{roi.width} * channels)));
    }
    if (!fillable) {
        return;
    }
    hole.march();
    const auto fillChannels = [&](auto fill) {
        for (int c = 0; c < channels; ++c) {
            fill.template run<channels>(Plane<const T>{src.base + c, src.step}, Plane<T>{dst.base + c, dst.step});
        }
    };
    if (method == InpaintMarch) {
        const Disc disc(radius, hole.rest());
        fillChannels(MarchFill(hole, disc));
    } else {
        fillChannels(Membrane(hole));
    }
}

template <int channels, class T>
StatusCode inpaint(const T *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, T *dst, int32_t dstStep,
                   RoiSize roi, int32_t radius, InpaintMethod method, uint8_t *buffer) {
    const std::int64_t bytes = rowBytes<T>(std::int64_t{roi.width} * channels);
    Checks checks;
    checks.pointers(src, mask, dst, buffer).size(roi).steps(bytes, srcStep, dstStep).steps(roi.width, maskStep);
    checks.multiples(sizeof(T), srcStep, dstStep);
    checks.require(method == InpaintMarch || method == InpaintDiffusion, StatusBadArgument);
    checks.require(radius >= 1 && radius <= 100, StatusOutOfRange);
    if (checks.failed()) {
        return checks.status();
    }
    inpaint<channels, T>({src, srcStep}, {mask, maskStep}, {dst, dstStep}, roi, radius, method, buffer);
    return StatusOk;
}

StatusCode bufferSize(RoiSize roi, int32_t radius, int32_t *size) {
    Checks checks;
    checks.pointers(size).size(roi).require(radius >= 1 && radius <= 100, StatusOutOfRange);
    return checks.failed() ? checks.status() : storeSize(inpaintScratchBytes(roi, radius), size);
}

} // namespace
} // namespace rvxcv

using namespace rvxcv;

StatusCode rvxiInpaint_8u_C1MR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, uint8_t *dst,
                               int32_t dstStep, RoiSize roi, int32_t radius, InpaintMethod method, uint8_t *buffer) {
    return inpaint<1>(src, srcStep, mask, maskStep, dst, dstStep, roi, radius, method, buffer);
}
StatusCode rvxiInpaint_8u_C3MR(const uint8_t *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, uint8_t *dst,
                               int32_t dstStep, RoiSize roi, int32_t radius, InpaintMethod method, uint8_t *buffer) {
    return inpaint<3>(src, srcStep, mask, maskStep, dst, dstStep, roi, radius, method, buffer);
}
StatusCode rvxiInpaint_32f_C1MR(const float *src, int32_t srcStep, const uint8_t *mask, int32_t maskStep, float *dst,
                                int32_t dstStep, RoiSize roi, int32_t radius, InpaintMethod method, uint8_t *buffer) {
    return inpaint<1>(src, srcStep, mask, maskStep, dst, dstStep, roi, radius, method, buffer);
}
StatusCode rvxiInpaintGetBufferSize_8u_C1MR(RoiSize roi, int32_t radius, int32_t *size) {
    return bufferSize(roi, radius, size);
}
StatusCode rvxiInpaintGetBufferSize_8u_C3MR(RoiSize roi, int32_t radius, int32_t *size) {
    return bufferSize(roi, radius, size);
}
StatusCode rvxiInpaintGetBufferSize_32f_C1MR(RoiSize roi, int32_t radius, int32_t *size) {
    return bufferSize(roi, radius, size);
}
