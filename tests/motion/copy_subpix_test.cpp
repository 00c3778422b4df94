// Sub-pixel copies against the formula in its plainest form, bit for bit; images and patches end at unmapped pages.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace support;

template <class S, class D> constexpr auto wholeCopy = nullptr;
template <> constexpr auto wholeCopy<std::uint8_t, std::uint8_t> = rvxiCopySubpix_8u_C1R;
template <> constexpr auto wholeCopy<std::uint8_t, float> = rvxiCopySubpix_8u32f_C1R;
template <> constexpr auto wholeCopy<std::uint16_t, std::uint16_t> = rvxiCopySubpix_16u_C1R;
template <> constexpr auto wholeCopy<std::uint16_t, float> = rvxiCopySubpix_16u32f_C1R;
template <> constexpr auto wholeCopy<float, float> = rvxiCopySubpix_32f_C1R;
template <> constexpr auto wholeCopy<std::uint8_t, std::uint16_t> = rvxiCopySubpix_8u16u_C1RSfs;
template <class S, class D> constexpr auto partCopy = nullptr;
template <> constexpr auto partCopy<std::uint8_t, std::uint8_t> = rvxiCopySubpixIntersect_8u_C1R;
template <> constexpr auto partCopy<std::uint8_t, float> = rvxiCopySubpixIntersect_8u32f_C1R;
template <> constexpr auto partCopy<std::uint16_t, std::uint16_t> = rvxiCopySubpixIntersect_16u_C1R;
template <> constexpr auto partCopy<std::uint16_t, float> = rvxiCopySubpixIntersect_16u32f_C1R;
template <> constexpr auto partCopy<float, float> = rvxiCopySubpixIntersect_32f_C1R;
template <> constexpr auto partCopy<std::uint8_t, std::uint16_t> = rvxiCopySubpixIntersect_8u16u_C1RSfs;

// One call's arguments, of which whole patches need fewer.
template <class S, class D> struct Call {
    const S *src;
    std::int32_t srcStep;
    RoiSize srcRoi;
    D *dst;
    std::int32_t dstStep;
    RoiSize dstRoi;
    Point2f centre;
    Point2i *min, *max;
    std::int32_t scaleFactor;

    static constexpr bool scales = sizeof(S) == 1 && sizeof(D) == 2;
    StatusCode part() const { return call(partCopy<S, D>, min, max); }
    StatusCode whole() const { return call(wholeCopy<S, D>); }
    template <class F, class... More> StatusCode call(F copy, More... more) const {
        if constexpr (scales) {
            return copy(src, srcStep, srcRoi, dst, dstStep, dstRoi, centre, more..., scaleFactor);
        } else {
            return copy(src, srcStep, srcRoi, dst, dstStep, dstRoi, centre, more...);
        }
    }
};

struct Interval {
    std::int64_t first, last;
};

struct Axis {
    std::int64_t index;
    float fraction;

    Axis(float centre, std::int64_t size) {
        const double origin = static_cast<double>(centre) - 0.5 * static_cast<double>(size - 1);
        index = static_cast<std::int64_t>(std::floor(origin));
        fraction = static_cast<float>(origin - std::floor(origin));
    }
    Interval inside(std::int64_t size, std::int64_t length) const {
        Interval result{size, -1};
        for (std::int64_t i = 0; i < size; ++i) {
            if (index + i >= 0 && index + i + (fraction > 0 ? 1 : 0) <= length - 1) {
                result = {std::min(result.first, i), i};
            }
        }
        return result;
    }
};

// The image is continued by its edge, which shows in whole patches alone.
template <class S> float plainSample(const GuardedImage<S> &src, std::int64_t i, std::int64_t j, float a, float b) {
    const auto at = [&](std::int64_t x, std::int64_t y) {
        return static_cast<float>(
            src.at(std::clamp<std::int64_t>(x, 0, src.width() - 1), std::clamp<std::int64_t>(y, 0, src.height() - 1)));
    };
    const auto joined = [&](std::int64_t row) {
        return a > 0 ? std::fma(a, at(i + 1, row) - at(i, row), at(i, row)) : at(i, row);
    };
    return b > 0 ? std::fma(b, joined(j + 1) - joined(j), joined(j)) : joined(j);
}

template <class D> D pixelOf(float value, std::int32_t scaleFactor) {
    if constexpr (std::is_same_v<D, float>) {
        return value;
    } else {
        const double nearest = std::nearbyint(std::ldexp(static_cast<double>(value), -scaleFactor));
        return static_cast<D>(std::min<double>(nearest, std::numeric_limits<D>::max()));
    }
}

template <class T> using Layout = typename GuardedImage<T>::Layout;

// Copies the patch in both ways and compares everything: status, the part inside, its pixels, and that no other pixel
// is written.
template <class S, class D>
void checkPatch(const GuardedImage<S> &src, std::int64_t width, std::int64_t height, Point2f centre,
                Layout<D> layout = {}, std::int32_t scaleFactor = 0) {
    GuardedImage<D> dst(width, height, layout), whole(width, height, layout);
    const GuardedImage<D> untouched(width, height, layout);
    const Axis x(centre.x, width), y(centre.y, height);
    const Interval columns = x.inside(width, src.width()), rows = y.inside(height, src.height());
    const bool some = columns.last >= 0 && rows.last >= 0;
    const auto pixel = [&](std::int64_t i, std::int64_t j) {
        return pixelOf<D>(plainSample(src, x.index + i, y.index + j, x.fraction, y.fraction), scaleFactor);
    };
    Point2i min{-5, -6}, max{-7, -8};
    Call<S, D> call{src.data(), src.step(), src.roi(), dst.data(), dst.step(),
                    dst.roi(),  centre,     &min,      &max,       scaleFactor};
    ASSERT_EQ(call.part(), some ? StatusOk : StatusError) << centre.x << " " << centre.y;
    const Interval wantX = some ? columns : Interval{-5, -7}, wantY = some ? rows : Interval{-6, -8};
    ASSERT_TRUE(min.x == wantX.first && min.y == wantY.first && max.x == wantX.last && max.y == wantY.last)
        << centre.x << " " << centre.y << ": " << min.x << " " << min.y << " " << max.x << " " << max.y;
    ASSERT_TRUE(imageIs(dst,
                        [&](std::int64_t i, std::int64_t j) {
                            const bool inside =
                                some && i >= columns.first && i <= columns.last && j >= rows.first && j <= rows.last;
                            return inside ? pixel(i, j) : untouched.at(i, j);
                        }))
        << centre.x << " " << centre.y << " of " << src.width() << "x" << src.height();
    call.dst = whole.data();
    ASSERT_EQ(call.whole(), StatusOk);
    ASSERT_TRUE(imageIs(whole, pixel)) << centre.x << " " << centre.y << " of " << src.width() << "x" << src.height();
}

// Runs a check on every pair of types.
template <class Check> void forEveryType(const Check &check) {
    check.template operator()<std::uint8_t, std::uint8_t>();
    check.template operator()<std::uint8_t, float>();
    check.template operator()<std::uint8_t, std::uint16_t>();
    check.template operator()<std::uint16_t, std::uint16_t>();
    check.template operator()<std::uint16_t, float>();
    check.template operator()<float, float>();
}

// Of a patch's centre: on pixels, between them, anywhere, and where the patch ends with the image or just does not.
float someCoordinate(Rng &rng, std::int64_t length, std::int64_t size) {
    const std::int64_t place = uniform(rng, 0, 3);
    if (place == 3) {
        const std::int64_t twice = uniform(rng, 0, 1) != 0 ? size - 1 : 2 * length - 1 - size;
        return static_cast<float>(twice) * 0.5f + static_cast<float>(uniform(rng, -4, 4)) * 0.125f;
    }
    const std::int64_t steps = place == 0 ? 1 : place == 1 ? 2 : 1000;
    return static_cast<float>(uniform(rng, -3 * steps, (length + 3) * steps)) / static_cast<float>(steps);
}

TEST(CopySubpix, EveryPatchWidthAndEveryPlace) {
    Rng rng = makeRng("subpix widths");
    int salt = 0;
    forEveryType([&]<class S, class D>() {
        constexpr bool scales = Call<S, D>::scales;
        for (std::int64_t width = 1; width <= 70; ++width) {
            const std::int64_t height = 1 + width % 7;
            for (int place = 0; place < (width <= 35 ? 24 : 8); ++place, ++salt) {
                const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
                GuardedImage<S> src(uniform(rng, 1, 85), uniform(rng, 1, 14),
                                    {.padding = 4 * (salt % 3), .guard = guard, .skew = salt % 5});
                src.fill(rng, allContents[salt % 5]);
                ASSERT_NO_FATAL_FAILURE((checkPatch<S, D>(
                    src, width, height,
                    {someCoordinate(rng, src.width(), width), someCoordinate(rng, src.height(), height)},
                    {.padding = 4 * (salt % 2), .guard = guard, .skew = salt % 3},
                    scales ? static_cast<std::int32_t>(uniform(rng, -16, 16)) : 0)));
            }
        }
    });
}

// Wide patches go through the image in strips: of every width around theirs, and with one row.
TEST(CopySubpix, WidePatches) {
    Rng rng = makeRng("subpix wide");
    forEveryType([&]<class S, class D>() {
        for (const std::int64_t width : {128, 129, 500, 511, 512, 513, 514, 1023, 1025, 1283}) {
            const auto half = 0.5f * static_cast<float>(width - 1);
            GuardedImage<S> src(width, 1 + width % 6, {.padding = 12});
            src.fill(rng, Contents::random);
            for (const Point2f shift : {Point2f{0, 0}, Point2f{0.25f, 0.5f}, Point2f{-0.75f, 0}, Point2f{0, 0.125f}}) {
                ASSERT_NO_FATAL_FAILURE((checkPatch<S, D>(src, width, 5, {half + shift.x, 2 + shift.y})));
            }
        }
        GuardedImage<S> small(5, 3);
        small.fill(rng, Contents::random);
        ASSERT_NO_FATAL_FAILURE((checkPatch<S, D>(small, 150003, 2, {17.25f, 1.75f})));
    });
}

// Fractions so small that they vanish beside the patch's half size, or round to 1 below zero; far away.
TEST(CopySubpix, ExtremeCentres) {
    Rng rng = makeRng("subpix extreme");
    GuardedImage<float> src(20, 9);
    src.fill(rng, Contents::special); // infinities and negative zeros too
    for (const float c : {1e-40f, -1e-40f, 1e-12f, -1e-12f, -0.0f, 8.000001f, 7.9999995f, 1e9f, -1e9f, 3e8f}) {
        ASSERT_NO_FATAL_FAILURE((checkPatch<float, float>(src, 1, 1, {c, 4})));
        ASSERT_NO_FATAL_FAILURE((checkPatch<float, float>(src, 6, 5, {c, 4})));
        ASSERT_NO_FATAL_FAILURE((checkPatch<float, float>(src, 5, 6, {4, c})));
    }
    // Half of a size beyond 2^24 is no float.
    GuardedImage<std::uint8_t> pixels(5, 1), wide((1 << 24) + 2, 1);
    Point2i min{}, max{};
    const Call<std::uint8_t, std::uint8_t> call{
        pixels.data(), 5, pixels.roi(), wide.data(), wide.step(), wide.roi(), {8388608.0f, 0.0f}, &min, &max, 0};
    EXPECT_TRUE(call.part() == StatusOk && min.x == 1 && max.x == 4);
}

template <class S, class D> void checkStatuses(bool part) {
    using C = Call<S, D>;
    constexpr std::int64_t srcBytes = 9 * sizeof(S), dstBytes = 5 * sizeof(D);
    GuardedImage<S> src(9, 4);
    GuardedImage<D> dst(5, 3);
    Rng rng = makeRng("subpix statuses");
    src.fill(rng, Contents::random);
    Point2i corners[2] = {{-1, -2}, {-3, -4}};
    Faults<C> faults;
    faults.nulls(&C::src, &C::dst);
    if (part) {
        faults.nulls(&C::min, &C::max);
    }
    faults.empty(&C::srcRoi).empty(&C::dstRoi).shortSteps(srcBytes, &C::srcStep);
    faults.values(StatusBadStep, &C::srcRoi, {{INT32_MAX, 4}}).shortSteps(dstBytes, &C::dstStep);
    faults.unevenSteps(srcBytes, sizeof(S), &C::srcStep).unevenSteps(dstBytes, sizeof(D), &C::dstStep);
    faults.values(StatusOutOfRange, &C::centre,
                  {{NAN, 1.5f}, {4, -INFINITY}, {3e9f, 1.5f}, {4, std::nextafter(-1e9f, -2e9f)}});
    if (C::scales) {
        faults.values(StatusOutOfRange, &C::scaleFactor, {17, -17, INT32_MIN});
    }
    if (part) {
        faults.values(StatusError, &C::centre, {{-3, 1.5f}, {4, 5}});
    }
    const auto outputs = [&] {
        std::vector<std::uint8_t> bytes = dst.bytes();
        const auto *p = reinterpret_cast<const std::uint8_t *>(corners);
        bytes.insert(bytes.end(), p, p + sizeof corners);
        return bytes;
    };
    const auto call = [part](const C &c) { return part ? c.part() : c.whole(); };
    expectFaultOrder<C>({src.data(),
                         src.step(),
                         src.roi(),
                         dst.data(),
                         dst.step(),
                         dst.roi(),
                         {4.25f, 1.5f},
                         &corners[0],
                         &corners[1],
                         3},
                        faults, call, outputs);
}

TEST(CopySubpix, StatusesInTheOrderOfTheChecks) {
    forEveryType([]<class S, class D>() {
        checkStatuses<S, D>(true);
        checkStatuses<S, D>(false);
    });
}

} // namespace
