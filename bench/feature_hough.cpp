// Benchmarks of the line searches: one pixel, one degree, a tenth of the pixels marked. Noise is the worst case, in
// which every pixel votes; the edges of a scene are the usual one.
#include "harness.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr HoughResolution onePixelOneDegree{1, 0.01745329f};

bench::ImagePointer<std::uint8_t> noise(RoiSize roi) {
    auto image = bench::image<std::uint8_t>(roi);
    std::mt19937 rng(3);
    std::generate_n(image->data, image->elements, [&] { return rng() % 10 == 0 ? 255 : 0; });
    return image;
}

bench::ImagePointer<std::uint8_t> edges(RoiSize roi) {
    auto src = bench::scene(roi), dst = std::make_shared<bench::Image<std::uint8_t>>(roi, 1);
    std::int32_t bytes = 0;
    rvxiCannyBorderGetSize(roi, CannyFilterSobel, Mask3x3, PixelType8u, &bytes);
    auto buffer = bench::scratch(bytes);
    for (float low = 4096; low > 1; low *= 0.99f) {
        rvxiCannyBorder_8u_C1R(src->data, src->step, dst->data, dst->step, roi, CannyFilterSobel, Mask3x3,
                               BorderReplicate, 0, CannyNormL2, buffer.get(), low, 1.6f * low);
        if (std::count(dst->data, dst->data + dst->elements, 255) * 10 >= dst->elements) {
            break;
        }
    }
    return dst;
}

void addLines(bench::Registry &rows, const char *name, bench::ImagePointer<std::uint8_t> (*make)(RoiSize),
              bool eighthOfAngles) {
    rows.add(name, 1, [=](RoiSize roi) {
        auto src = make(roi);
        constexpr std::int32_t capacity = 100;
        std::int32_t bytes = 0;
        rvxiHoughLineGetSize_8u_C1R(roi, onePixelOneDegree, capacity, &bytes);
        auto buffer = bench::scratch(bytes);
        auto lines = std::make_shared<std::vector<HoughLine>>(capacity);
        const std::int32_t threshold = (roi.width + roi.height) / 10;
        return [=] {
            std::int32_t count = 0;
            if (eighthOfAngles) {
                const HoughLine region[2] = {{-1e9f, 1.4f}, {1e9f, 1.4f + 0.3926991f}};
                rvxiHoughLine_Region_8u32f_C1R(src->data, src->step, roi, threshold, lines->data(), capacity, &count,
                                               buffer.get(), onePixelOneDegree, region);
            } else {
                rvxiHoughLine_8u32f_C1R(src->data, src->step, roi, threshold, lines->data(), capacity, &count,
                                        buffer.get(), onePixelOneDegree);
            }
        };
    });
}

void addSegments(bench::Registry &rows, const char *name, bench::ImagePointer<std::uint8_t> (*make)(RoiSize)) {
    rows.add(name, 1, [=](RoiSize roi) {
        auto src = make(roi);
        constexpr std::int32_t capacity = 10000;
        std::int32_t bytes = 0, specBytes = 0;
        rvxiHoughProbLineGetSize_8u_C1R(roi, onePixelOneDegree, &specBytes, &bytes);
        auto buffer = bench::scratch(bytes), spec = bench::scratch(specBytes);
        rvxiHoughProbLineInit_8u32f_C1R(roi, 1, reinterpret_cast<HoughProbLineSpec *>(spec.get()), onePixelOneDegree);
        auto segments = std::make_shared<std::vector<Point2i>>(2 * capacity);
        // In noise no cell is filled.
        const std::int32_t threshold = make == noise ? 3 * (roi.width + roi.height) / 10 : 50;
        return [=] {
            std::int32_t count = 0;
            rvxiHoughProbLine_8u32f_C1R(src->data, src->step, roi, threshold, 30, 3, segments->data(), capacity, &count,
                                        buffer.get(), reinterpret_cast<const HoughProbLineSpec *>(spec.get()));
        };
    });
}

const bench::Family family([](bench::Registry &rows) {
    addLines(rows, "HoughLine_8u32f_C1R noise", noise, false);
    addLines(rows, "HoughLine_8u32f_C1R edges", edges, false);
    addLines(rows, "HoughLine_Region_8u32f_C1R edges, an eighth of the angles", edges, true);
    addSegments(rows, "HoughProbLine_8u32f_C1R noise", noise);
    addSegments(rows, "HoughProbLine_8u32f_C1R edges", edges);
});

} // namespace
