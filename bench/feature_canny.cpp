// Benchmarks of Canny: a textured scene, thresholds that mark about a tenth of the pixels.
#include "harness.h"

#include <algorithm>

namespace {

std::shared_ptr<std::uint8_t> borderScratch(RoiSize roi, MaskCode mask) {
    std::int32_t bytes = 0;
    rvxiCannyBorderGetSize(roi, CannyFilterSobel, mask, PixelType8u, &bytes);
    return bench::scratch(bytes);
}

// The share of edge pixels grows as the low threshold falls; high is 1.6 times low.
template <class Run> float thresholdForTenth(const bench::ImagePointer<std::uint8_t> &dst, const Run &run) {
    float low = 4096;
    for (; low > 1; low *= 0.9f) {
        run(low, 1.6f * low);
        const auto marked = std::count(dst->data, dst->data + dst->elements, 255);
        if (marked * 10 >= dst->elements) {
            break;
        }
    }
    return low;
}

void addPicture(bench::Registry &rows, const char *name, std::int32_t filter, MaskCode mask, std::int32_t norm) {
    rows.add(name, 2, [=](RoiSize roi) {
        auto src = bench::scene(roi), dst = bench::image<std::uint8_t>(roi);
        auto buffer = borderScratch(roi, mask);
        const auto run = [=](float low, float high) {
            rvxiCannyBorder_8u_C1R(src->data, src->step, dst->data, dst->step, roi, filter, mask, BorderReplicate, 0,
                                   norm, buffer.get(), low, high);
        };
        const float low = thresholdForTenth(dst, run);
        return [=] { run(low, 1.6f * low); };
    });
}

template <class T> bench::ImagePointer<T> derivative(RoiSize roi, bool vertical) {
    auto src = bench::scene(roi);
    auto out = std::make_shared<bench::Image<T>>(roi, 1);
    const auto at = [&](int x, int y) {
        x = std::clamp(x, 0, roi.width - 1);
        y = std::clamp(y, 0, roi.height - 1);
        return static_cast<int>(src->data[std::int64_t{y} * roi.width + x]);
    };
    for (int y = 0; y < roi.height; ++y) {
        for (int x = 0; x < roi.width; ++x) {
            int sum = 0;
            for (int k = -1; k <= 1; ++k) {
                const int weight = 2 - (k != 0);
                sum += weight * (vertical ? at(x + k, y + 1) - at(x + k, y - 1) : at(x + 1, y + k) - at(x - 1, y + k));
            }
            out->data[std::int64_t{y} * roi.width + x] = static_cast<T>(sum);
        }
    }
    return out;
}

template <class T, class F> void addDerivatives(bench::Registry &rows, const char *name, F function) {
    rows.add(name, {2 * sizeof(T), 1}, [=](RoiSize roi) {
        auto dx = derivative<T>(roi, false), dy = derivative<T>(roi, true);
        auto dst = bench::image<std::uint8_t>(roi);
        std::int32_t bytes = 0;
        rvxiCannyGetSize(roi, &bytes);
        auto buffer = bench::scratch(bytes);
        const auto run = [=](float low, float high) {
            function(dx->data, dx->step, dy->data, dy->step, dst->data, dst->step, roi, low, high, buffer.get());
        };
        const float low = thresholdForTenth(dst, run);
        return [=] { run(low, 1.6f * low); };
    });
}

const bench::Family family([](bench::Registry &rows) {
    addPicture(rows, "CannyBorder_8u_C1R sobel3 L1", CannyFilterSobel, Mask3x3, CannyNormL1);
    addPicture(rows, "CannyBorder_8u_C1R sobel3 L2", CannyFilterSobel, Mask3x3, CannyNormL2);
    addPicture(rows, "CannyBorder_8u_C1R sobel5 L2", CannyFilterSobel, Mask5x5, CannyNormL2);
    addPicture(rows, "CannyBorder_8u_C1R scharr L1", CannyFilterScharr, Mask3x3, CannyNormL1);
    addDerivatives<std::int16_t>(rows, "Canny_16s8u_C1R", rvxiCanny_16s8u_C1R);
    addDerivatives<float>(rows, "Canny_32f8u_C1R", rvxiCanny_32f8u_C1R);
});

} // namespace
