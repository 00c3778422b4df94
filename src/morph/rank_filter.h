// Minimum and maximum under a rectangle, for the rank filters and for erosion and dilation with solid rectangles.
#pragma once

#include "morph/row_extrema.h"

namespace rvxcv {

// Filters rows of a region. False, and nothing is written, when the scratch is too small: never with replicated sides
// and rankBufferBytes of scratch for the window's size. Instances: Minimum and Maximum of 8u, 16u, 16s, 32f.
template <class T, class Op> bool filterWindow(const MorphTask<T> &task, Window window);

// The one-channel 16-bit filters, for use inside the library: arguments, checks and buffer as the exported ones.
StatusCode ownrvxiFilterMinGetBufferSize_16u_C1R(std::int32_t roiWidth, RoiSize maskSize, std::int32_t *bufferSize);
StatusCode ownrvxiFilterMaxGetBufferSize_16u_C1R(std::int32_t roiWidth, RoiSize maskSize, std::int32_t *bufferSize);
StatusCode ownrvxiFilterMinBorderReplicate_16u_C1R(const std::uint16_t *src, std::int32_t srcStep, std::uint16_t *dst,
                                                   std::int32_t dstStep, RoiSize roi, RoiSize maskSize, Point2i anchor,
                                                   std::uint8_t *buffer);
StatusCode ownrvxiFilterMaxBorderReplicate_16u_C1R(const std::uint16_t *src, std::int32_t srcStep, std::uint16_t *dst,
                                                   std::int32_t dstStep, RoiSize roi, RoiSize maskSize, Point2i anchor,
                                                   std::uint8_t *buffer);
StatusCode ownrvxiFilterMinBorderReplicate_16s_C1R(const std::int16_t *src, std::int32_t srcStep, std::int16_t *dst,
                                                   std::int32_t dstStep, RoiSize roi, RoiSize maskSize, Point2i anchor,
                                                   std::uint8_t *buffer);
StatusCode ownrvxiFilterMaxBorderReplicate_16s_C1R(const std::int16_t *src, std::int32_t srcStep, std::int16_t *dst,
                                                   std::int32_t dstStep, RoiSize roi, RoiSize maskSize, Point2i anchor,
                                                   std::uint8_t *buffer);

} // namespace rvxcv
