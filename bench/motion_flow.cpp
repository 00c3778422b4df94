// Benchmarks of the optical flow and of the sub-pixel copies.
#include "harness.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// A scene and the same scene moved, as four levels of half the size each.
template <class T> struct Frames {
    PyramidRecord *prev = nullptr, *next = nullptr;
    std::vector<bench::ImagePointer<T>> levels;
    std::vector<Point2f> points, positions;
    std::vector<std::uint8_t> status;
    std::vector<float> error;
    OpticalFlowState *state = nullptr;

    static constexpr std::int32_t levelsAbove = 3, winSize = 21;

    explicit Frames(RoiSize roi) {
        const auto base = bench::scene({roi.width + 16, roi.height + 16});
        fill(&prev, roi, *base, 0, 0);
        fill(&next, roi, *base, 5.3, -3.6);
        // Where the corner measure of a cell is the largest: 500 cells at most.
        const auto measure = bench::image<float>(roi);
        std::int32_t size = 0;
        rvxiMinEigenValGetBufferSize_8u32f_C1R(roi, 3, 3, &size);
        rvxiMinEigenVal_8u32f_C1R(base->data + 8 * base->step + 8, base->step, measure->data, measure->step, roi,
                                  MinEigenValSobel, 3, 3, bench::scratch(size).get());
        const auto columns = static_cast<std::int32_t>(std::min(25, std::max(1, roi.width / 8)));
        const auto rows = static_cast<std::int32_t>(std::min(20, std::max(1, roi.height / 8)));
        for (std::int32_t j = 0; j < rows; ++j) {
            for (std::int32_t i = 0; i < columns; ++i) {
                float best = -1;
                Point2f corner{};
                for (std::int32_t y = j * roi.height / rows; y < (j + 1) * roi.height / rows; ++y) {
                    for (std::int32_t x = i * roi.width / columns; x < (i + 1) * roi.width / columns; ++x) {
                        const float m = measure->data[std::int64_t{y} * roi.width + x];
                        if (m > best) {
                            best = m;
                            corner = {static_cast<float>(x), static_cast<float>(y)};
                        }
                    }
                }
                points.push_back(corner);
            }
        }
        std::shuffle(points.begin(), points.end(), std::mt19937(5)); // as trackers keep them
        positions = points;
        status.resize(points.size());
        error.resize(points.size());
        if constexpr (std::is_same_v<T, float>) {
            rvxiOpticalFlowPyrLKInitAlloc_32f_C1R(&state, roi, winSize, 0);
        } else if constexpr (std::is_same_v<T, std::uint8_t>) {
            rvxiOpticalFlowPyrLKInitAlloc_8u_C1R(&state, roi, winSize, 0);
        } else {
            rvxiOpticalFlowPyrLKInitAlloc_16u_C1R(&state, roi, winSize, 0);
        }
    }
    Frames(const Frames &) = delete;
    Frames &operator=(const Frames &) = delete;
    ~Frames() {
        rvxiPyramidFree(prev);
        rvxiPyramidFree(next);
        rvxiOpticalFlowPyrLKFree_32f_C1R(state);
    }

    static double sample(const double *pixels, std::int32_t width, std::int32_t height, double x, double y) {
        const auto i = static_cast<std::int32_t>(std::clamp(x, 0.0, width - 1.001)),
                   j = static_cast<std::int32_t>(std::clamp(y, 0.0, height - 1.001));
        const double a = x - i, b = y - j;
        const double *p = pixels + std::int64_t{j} * width + i;
        const std::int32_t right = width > 1 ? 1 : 0, below = height > 1 ? width : 0;
        return (1 - b) * ((1 - a) * p[0] + a * p[right]) + b * ((1 - a) * p[below] + a * p[below + right]);
    }

    void fill(PyramidRecord **pyramid, RoiSize roi, const bench::Image<std::uint8_t> &base, double dx, double dy) {
        rvxiPyramidInitAlloc(pyramid, levelsAbove, roi, 2.0f);
        std::vector<double> pixels, source(base.data, base.data + base.elements);
        for (std::int32_t y = 0; y < roi.height; ++y) {
            for (std::int32_t x = 0; x < roi.width; ++x) {
                pixels.push_back(sample(source.data(), base.step, roi.height + 16, x + 8 - dx, y + 8 - dy));
            }
        }
        for (std::int32_t level = 0; level <= (*pyramid)->levelCount; ++level) {
            const RoiSize size = (*pyramid)->roiSizes[level];
            if (level > 0) {
                const RoiSize finer = (*pyramid)->roiSizes[level - 1];
                std::vector<double> smaller;
                for (std::int32_t y = 0; y < size.height; ++y) {
                    for (std::int32_t x = 0; x < size.width; ++x) {
                        double sum = 0;
                        const double taps[] = {1, 4, 6, 4, 1};
                        for (int j = 0; j < 5; ++j) {
                            for (int i = 0; i < 5; ++i) {
                                const auto column = std::clamp(2 * x + i - 2, 0, finer.width - 1);
                                const auto row = std::clamp(2 * y + j - 2, 0, finer.height - 1);
                                sum += taps[i] * taps[j] *
                                       pixels[static_cast<std::size_t>(std::int64_t{row} * finer.width + column)];
                            }
                        }
                        smaller.push_back(sum / 256);
                    }
                }
                pixels = smaller;
            }
            levels.push_back(bench::image<T>(size));
            for (std::size_t i = 0; i < pixels.size(); ++i) {
                levels.back()->data[i] = static_cast<T>(pixels[i]);
            }
            (*pyramid)->images[level] = levels.back()->data;
            (*pyramid)->steps[level] = levels.back()->step;
        }
    }
};

template <class T, class Track> void addFlow(bench::Registry &rows, const char *name, Track track) {
    rows.add(name, 2 * sizeof(T), [=](RoiSize roi) {
        auto frames = std::make_shared<Frames<T>>(roi);
        return [=] {
            frames->positions = frames->points;
            track(frames->prev, frames->next, frames->points.data(), frames->positions.data(), frames->status.data(),
                  frames->error.data(), static_cast<std::int32_t>(frames->points.size()), Frames<T>::winSize,
                  frames->prev->levelCount, 20, 0.01f, frames->state);
        };
    });
}

Point2i corner[2];

// A patch of the whole image, and one of 21x21 inside it (ns/px times 441 is its time).
template <class S, class D, class Copy, class... More>
void addCopy(bench::Registry &rows, const std::string &name, Copy copy, More... more) {
    rows.add(name, {sizeof(S), sizeof(D)}, [=](RoiSize roi) {
        auto src = bench::image<S>(roi);
        auto dst = bench::image<D>(roi);
        const Point2f centre{0.5f * static_cast<float>(roi.width) - 0.25f,
                             0.5f * static_cast<float>(roi.height) - 0.4f};
        return [=] { copy(src->data, src->step, roi, dst->data, dst->step, roi, centre, more...); };
    });
    rows.add(name + "_inside", {sizeof(S), sizeof(D)},
             [=](RoiSize roi) {
                 auto src = bench::image<S>({roi.width + 40, roi.height + 40});
                 auto dst = bench::image<D>(roi);
                 const Point2f centre{0.5f * static_cast<float>(roi.width) + 20.3f,
                                      0.5f * static_cast<float>(roi.height) + 19.7f};
                 return [=] {
                     copy(src->data, src->step, {roi.width + 40, roi.height + 40}, dst->data, dst->step, roi, centre,
                          more...);
                 };
             },
             {{21, 21}});
}

const bench::Family family([](bench::Registry &rows) {
    // 500 corners, windows of 21, four levels, at most 20 iterations down to 0.01 pixel. (Small images have fewer.)
    addFlow<std::uint8_t>(rows, "OpticalFlowPyrLK_8u_C1R", rvxiOpticalFlowPyrLK_8u_C1R);
    addFlow<std::uint16_t>(rows, "OpticalFlowPyrLK_16u_C1R", rvxiOpticalFlowPyrLK_16u_C1R);
    addFlow<float>(rows, "OpticalFlowPyrLK_32f_C1R", rvxiOpticalFlowPyrLK_32f_C1R);

    addCopy<std::uint8_t, std::uint8_t>(rows, "CopySubpix_8u_C1R", rvxiCopySubpix_8u_C1R);
    addCopy<std::uint8_t, float>(rows, "CopySubpix_8u32f_C1R", rvxiCopySubpix_8u32f_C1R);
    addCopy<std::uint8_t, std::uint16_t>(rows, "CopySubpix_8u16u_C1RSfs", rvxiCopySubpix_8u16u_C1RSfs, -5);
    addCopy<std::uint16_t, std::uint16_t>(rows, "CopySubpix_16u_C1R", rvxiCopySubpix_16u_C1R);
    addCopy<std::uint16_t, float>(rows, "CopySubpix_16u32f_C1R", rvxiCopySubpix_16u32f_C1R);
    addCopy<float, float>(rows, "CopySubpix_32f_C1R", rvxiCopySubpix_32f_C1R);
    Point2i *const corners = corner;
    addCopy<std::uint8_t, std::uint8_t>(rows, "CopySubpixIntersect_8u_C1R", rvxiCopySubpixIntersect_8u_C1R, corners,
                                        corners + 1);
    addCopy<float, float>(rows, "CopySubpixIntersect_32f_C1R", rvxiCopySubpixIntersect_32f_C1R, corners, corners + 1);
});

} // namespace
