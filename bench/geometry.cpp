// Benchmarks of lens undistortion: a wide-angle lens that moves the corners of the picture by a tenth of its width.
#include "harness.h"

namespace {

struct Lens {
    float focal, cx, cy, k1 = -0.2f, k2 = 0.03f;
    explicit Lens(RoiSize roi)
        : focal(0.7f * static_cast<float>(roi.width)), cx(0.5f * static_cast<float>(roi.width)),
          cy(0.5f * static_cast<float>(roi.height)) {}
};

void addMap(bench::Registry &rows, const char *name, float p1, float p2) {
    rows.add(name, 8, [=](RoiSize roi) {
        auto x = bench::image<float>(roi), y = bench::image<float>(roi);
        const Lens lens(roi);
        return [=] {
            rvxiCreateMapCameraUndistort_32f_C1R(x->data, x->step, y->data, y->step, roi, nullptr, lens.focal,
                                                 lens.focal, lens.cx, lens.cy, lens.k1, lens.k2, p1, p2);
        };
    });
}

template <class T, class F> void addImage(bench::Registry &rows, const char *name, F function, int channels) {
    rows.add(name, 2.0 * sizeof(T) * channels, [=](RoiSize roi) {
        auto src = bench::image<T>(roi, channels), dst = bench::image<T>(roi, channels, 2);
        const Lens lens(roi);
        return [=] {
            function(src->data, src->step, dst->data, dst->step, roi, nullptr, lens.focal, lens.focal, lens.cx, lens.cy,
                     lens.k1, lens.k2);
        };
    });
}

const bench::Family family([](bench::Registry &rows) {
    addMap(rows, "CreateMapCameraUndistort_32f_C1R", 0.001f, -0.002f);
    addMap(rows, "CreateMapCameraUndistort_32f_C1R/radial", 0, 0);
    addImage<std::uint8_t>(rows, "UndistortRadial_8u_C1R", rvxiUndistortRadial_8u_C1R, 1);
    addImage<std::uint8_t>(rows, "UndistortRadial_8u_C3R", rvxiUndistortRadial_8u_C3R, 3);
    addImage<std::uint16_t>(rows, "UndistortRadial_16u_C1R", rvxiUndistortRadial_16u_C1R, 1);
    addImage<std::uint16_t>(rows, "UndistortRadial_16u_C3R", rvxiUndistortRadial_16u_C3R, 3);
    addImage<float>(rows, "UndistortRadial_32f_C1R", rvxiUndistortRadial_32f_C1R, 1);
    addImage<float>(rows, "UndistortRadial_32f_C3R", rvxiUndistortRadial_32f_C3R, 3);
});

} // namespace
