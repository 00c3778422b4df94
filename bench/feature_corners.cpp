// Benchmarks of what is read from the gradient covariance, and of the peak search on a corner measure.
#include "harness.h"

namespace {

template <class T, class Measure, class Query>
void addMeasure(bench::Registry &rows, const char *name, Measure measure, Query query) {
    struct Variant {
        const char *suffix;
        std::int32_t kernel, aperture, block;
    };
    constexpr Variant variants[] = {{"_sobel3_block3", MinEigenValSobel, 3, 3},
                                    {"_sobel3_block5", MinEigenValSobel, 3, 5},
                                    {"_sobel5_block3", MinEigenValSobel, 5, 3},
                                    {"_sobel5_block5", MinEigenValSobel, 5, 5},
                                    {"_scharr_block3", MinEigenValScharr, 3, 3}};
    for (const Variant &v : variants) {
        rows.add(std::string(name) + v.suffix, {sizeof(T), sizeof(float)}, [=](RoiSize roi) {
            auto src = bench::image<T>(roi);
            auto dst = bench::image<float>(roi);
            std::int32_t size = 0;
            query(roi, v.aperture, v.block, &size);
            auto buffer = bench::scratch(size);
            return [=] {
                measure(src->data, src->step, dst->data, dst->step, roi, v.kernel, v.aperture, v.block, buffer.get());
            };
        });
    }
}

// Six floats a pixel.
template <class T, class Eigen, class Query>
void addEigensystems(bench::Registry &rows, const char *name, Eigen eigen, Query query) {
    for (const std::int32_t block : {3, 5}) {
        rows.add(std::string(name) + "_sobel3_block" + std::to_string(block), {sizeof(T), 24}, [=](RoiSize roi) {
            auto src = bench::image<T>(roi);
            auto dst = bench::image<float>(roi, 6);
            std::int32_t size = 0;
            query(roi, 3, block, &size);
            auto buffer = bench::scratch(size);
            return [=] {
                eigen(src->data, src->step, dst->data, dst->step, roi, MinEigenValSobel, 3, block, buffer.get());
            };
        });
    }
}

struct Windows {
    const char *suffix;
    std::int32_t filter, aperture, block;
};
constexpr Windows windows[] = {{"_sobel3_block3", DerivativeSobel, 3, 3},
                               {"_sobel5_block5", DerivativeSobel, 5, 5},
                               {"_central_block3", DerivativeCentral, 3, 3}};

template <class T, class Measure, class Query>
void addHarris(bench::Registry &rows, const char *name, Measure measure, Query query) {
    for (const Windows &w : windows) {
        rows.add(std::string(name) + w.suffix, {sizeof(T), sizeof(float)}, [=](RoiSize roi) {
            auto src = bench::image<T>(roi);
            auto dst = bench::image<float>(roi);
            std::int32_t size = 0;
            query(roi, w.aperture, w.block, &size);
            auto buffer = bench::scratch(size);
            return [=] {
                measure(src->data, src->step, dst->data, dst->step, roi, w.filter, w.aperture, w.block, 0.04f,
                        buffer.get());
            };
        });
    }
}

// One of `every` pixels, anywhere, is a candidate.
void addLineSuppression(bench::Registry &rows, const char *density, unsigned every) {
    for (const Windows &w : windows) {
        rows.add(std::string("LineSuppression_8u_C1R") + w.suffix + density, {2, 1}, [=](RoiSize roi) {
            auto src = bench::image<std::uint8_t>(roi), dst = bench::image<std::uint8_t>(roi);
            auto map = bench::image<std::uint8_t>(roi);
            std::mt19937 rng(3);
            for (std::int64_t i = 0; i < map->elements; ++i) {
                map->data[i] = rng() % every == 0 ? 255 : 0;
            }
            std::int32_t size = 0;
            rvxiLineSuppressionGetBufferSize_8u_C1R(roi, w.aperture, w.block, &size);
            auto buffer = bench::scratch(size);
            return [=] {
                rvxiLineSuppression_8u_C1R(src->data, src->step, map->data, map->step, dst->data, dst->step, roi,
                                           w.filter, w.aperture, w.block, 0.1f, buffer.get());
            };
        });
    }
}

// The corner measure of a scene, as floats or scaled to integers.
template <class T> bench::ImagePointer<T> response(RoiSize roi) {
    const auto src = bench::scene(roi);
    const auto measure = bench::image<float>(roi);
    std::int32_t size = 0;
    rvxiMinEigenValGetBufferSize_8u32f_C1R(roi, 3, 3, &size);
    rvxiMinEigenVal_8u32f_C1R(src->data, src->step, measure->data, measure->step, roi, MinEigenValSobel, 3, 3,
                              bench::scratch(size).get());
    auto result = bench::image<T>(roi);
    for (std::int64_t i = 0; i < result->elements; ++i) {
        result->data[i] = static_cast<T>(std::is_same_v<T, float> ? measure->data[i] : 1000 * measure->data[i]);
    }
    return result;
}

template <class T, class Find>
void addPeaks(bench::Registry &rows, const char *name, Find find, std::int32_t neighbourhood, T threshold) {
    rows.add(name, {sizeof(T), 0}, [=](RoiSize roi) {
        auto src = response<T>(roi);
        auto peaks = bench::image<std::int32_t>({2 * roi.width, roi.height});
        std::int32_t size = 0;
        rvxiFindPeaks3x3GetBufferSize_32f_C1R(roi.width, &size);
        auto buffer = bench::scratch(size);
        return [=] {
            std::int32_t count = 0;
            find(src->data, src->step, roi, threshold, reinterpret_cast<Point2i *>(peaks->data), roi.width * roi.height,
                 &count, neighbourhood, 1, buffer.get());
        };
    });
}

const bench::Family family([](bench::Registry &rows) {
    addMeasure<std::uint8_t>(rows, "MinEigenVal_8u32f_C1R", rvxiMinEigenVal_8u32f_C1R,
                             rvxiMinEigenValGetBufferSize_8u32f_C1R);
    addMeasure<float>(rows, "MinEigenVal_32f_C1R", rvxiMinEigenVal_32f_C1R, rvxiMinEigenValGetBufferSize_32f_C1R);
    addEigensystems<std::uint8_t>(rows, "EigenValsVecs_8u32f_C1R", rvxiEigenValsVecs_8u32f_C1R,
                                  rvxiEigenValsVecsGetBufferSize_8u32f_C1R);
    addEigensystems<float>(rows, "EigenValsVecs_32f_C1R", rvxiEigenValsVecs_32f_C1R,
                           rvxiEigenValsVecsGetBufferSize_32f_C1R);
    addHarris<std::uint8_t>(rows, "HarrisCorner_8u32f_C1R", rvxiHarrisCorner_8u32f_C1R,
                            rvxiHarrisCornerGetBufferSize_8u32f_C1R);
    addHarris<float>(rows, "HarrisCorner_32f_C1R", rvxiHarrisCorner_32f_C1R, rvxiHarrisCornerGetBufferSize_32f_C1R);
    addLineSuppression(rows, "_1percent", 100);
    addLineSuppression(rows, "_5percent", 20);
    addLineSuppression(rows, "_full", 1);
    addPeaks<float>(rows, "FindPeaks3x3_32f_C1R_square", rvxiFindPeaks3x3_32f_C1R, PeakSquare, 1.0f);
    addPeaks<float>(rows, "FindPeaks3x3_32f_C1R_square_all", rvxiFindPeaks3x3_32f_C1R, PeakSquare, 0.0f);
    addPeaks<float>(rows, "FindPeaks3x3_32f_C1R_cross", rvxiFindPeaks3x3_32f_C1R, PeakCross, 1.0f);
    addPeaks<std::int32_t>(rows, "FindPeaks3x3_32s_C1R_square", rvxiFindPeaks3x3_32s_C1R, PeakSquare, 1000);
    addPeaks<std::int32_t>(rows, "FindPeaks3x3_32s_C1R_cross", rvxiFindPeaks3x3_32s_C1R, PeakCross, 1000);
});

} // namespace
