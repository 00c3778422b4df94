// Lens undistortion.
#include "contract/contract.h"

#include <limits>

namespace contract {
namespace {

void regionSize(Run &run, StatusCode (*query)(RoiSize, std::int32_t *)) { sizes(run, query, queryRegions()); }

struct Lens {
    float fx, fy, cx, cy, k1, k2, p1, p2;
};
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
const std::vector<Lens> lenses = {{40, 42.5F, 15.25F, 4, -0.11F, 0.02F, 0.003F, -0.002F},
                                  {300, 300, 60, 45, 0, 0, 0, 0},
                                  {11, -9, 8.5F, 3.5F, 0.4F, -0.03F, 0, 0.01F},
                                  {1e-20F, 1e-20F, 1, 1, 1, 1, 0, 0}, // squares that are infinite
                                  {notANumber, 20, 1, 1, 0.1F, 0, 0, 0}},
                        badLenses = {{0, 42, 15, 4, 0, 0, 0, 0}, {40, -0.0F, 15, 4, 0, 0, 0, 0}};

// The buffer may be null: nothing depends on it.
void mapsOf(Run &run, const Plan &plan, bool tight,
            StatusCode (*f)(float *, std::int32_t, float *, std::int32_t, RoiSize, std::uint8_t *, float, float, float,
                            float, float, float, float, float)) {
    Sweep sweep(run, plan);
    Choice<Lens> lens(sweep, lenses, badLenses);
    Choice<bool> withBuffer(sweep, {false, true});
    Image<float> x(sweep, {.tight = tight}), y(sweep, {.tight = tight});
    Region roi(sweep);
    Bytes buffer(sweep, 1, false);
    sweep.before = [&] {
        std::int32_t size = 0;
        rvxiUndistortGetSize(sweep.roi(), &size);
        buffer.size(size);
    };
    sweep.run([&] {
        const Lens l = lens;
        return f(x, x.step, y, y.step, roi, withBuffer ? buffer.as<std::uint8_t>() : nullptr, l.fx, l.fy, l.cx, l.cy,
                 l.k1, l.k2, l.p1, l.p2);
    });
}

void maps(Run &run, StatusCode (*f)(float *, std::int32_t, float *, std::int32_t, RoiSize, std::uint8_t *, float, float,
                                    float, float, float, float, float, float)) {
    mapsOf(run, {}, false, f);
    // Large and aligned maps are written past the caches.
    mapsOf(run, {.sizes = {{400, 330}}, .large = {0, 0}, .rounds = 2, .combinations = 1, .faulty = false}, true, f);
}

template <class T>
void undistort(Run &run,
               StatusCode (*f)(const T *, std::int32_t, T *, std::int32_t, RoiSize, std::uint8_t *, float, float, float,
                               float, float, float),
               int channels) {
    Sweep sweep(run);
    Choice<Lens> lens(sweep, lenses, badLenses);
    Choice<bool> withBuffer(sweep, {false, true});
    Image<const T> src(sweep, {.channels = channels});
    Image<T> dst(sweep, {.channels = channels});
    Region roi(sweep);
    Bytes buffer(sweep, 1, false);
    sweep.before = [&] {
        std::int32_t size = 0;
        rvxiUndistortGetSize(sweep.roi(), &size);
        buffer.size(size);
    };
    sweep.run([&] {
        const Lens l = lens;
        return f(src, src.step, dst, dst.step, roi, withBuffer ? buffer.as<std::uint8_t>() : nullptr, l.fx, l.fy, l.cx,
                 l.cy, l.k1, l.k2);
    });
}

} // namespace

void addGeometry(Members &members) {
    const Member table[] = {
        MEMBER(rvxiUndistortGetSize, regionSize),          MEMBER(rvxiUndistortRadial_8u_C1R, undistort, 1),
        MEMBER(rvxiUndistortRadial_8u_C3R, undistort, 3),  MEMBER(rvxiUndistortRadial_16u_C1R, undistort, 1),
        MEMBER(rvxiUndistortRadial_16u_C3R, undistort, 3), MEMBER(rvxiUndistortRadial_32f_C1R, undistort, 1),
        MEMBER(rvxiUndistortRadial_32f_C3R, undistort, 3), MEMBER(rvxiCreateMapCameraUndistort_32f_C1R, maps),
    };
    members.insert(members.end(), std::begin(table), std::end(table));
}

} // namespace contract
