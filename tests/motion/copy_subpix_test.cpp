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
    StatusCode part() const {
        if constexpr (scales) {
            return partCopy<S, D>(src, srcStep, srcRoi, dst, dstStep, dstRoi, centre, min, max, scaleFactor);
        } else {
            return partCopy<S, D>(src, srcStep, srcRoi, dst, dstStep, dstRoi, centre, min, max);
        }
    }
    StatusCode whole() const {
        if constexpr (scales) {
            return wholeCopy<S, D>(src, srcStep, srcRoi, dst, dstStep, dstRoi, centre, scaleFactor);
        } else {
            return wholeCopy<S, D>(src, srcStep, srcRoi, dst, dstStep, dstRoi, centre);
        }
    }
};

struct Axis {
    std::int64_t index;
    float fraction;

    Axis(float centre, std::int64_t size) {
        const double origin = static_cast<double>(centre) - 0.5 * static_cast<double>(size - 1);
        index = static_cast<std::int64_t>(std::floor(origin));
        fraction = static_cast<float>(origin - std::floor(origin));
    }
    bool inside(std::int64_t i, std::int64_t length) const {
        return index + i >= 0 && index + i + (fraction > 0 ? 1 : 0) <= length - 1;
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
    std::int64_t firstX = width, lastX = -1, firstY = height, lastY = -1;
    for (std::int64_t i = 0; i < std::max(width, height); ++i) {
        if (i < width && x.inside(i, src.width())) {
            firstX = std::min(firstX, i), lastX = i;
        }
        if (i < height && y.inside(i, src.height())) {
            firstY = std::min(firstY, i), lastY = i;
        }
    }
    const bool some = lastX >= 0 && lastY >= 0;
    const auto pixel = [&](std::int64_t i, std::int64_t j) {
        return pixelOf<D>(plainSample(src, x.index + i, y.index + j, x.fraction, y.fraction), scaleFactor);
    };
    Point2i min{-5, -6}, max{-7, -8};
    Call<S, D> call{src.data(), src.step(), src.roi(), dst.data(), dst.step(),
                    dst.roi(),  centre,     &min,      &max,       scaleFactor};
    ASSERT_EQ(call.part(), some ? StatusOk : StatusError) << centre.x << " " << centre.y;
    const Point2i wantMin = some ? Point2i{static_cast<std::int32_t>(firstX), static_cast<std::int32_t>(firstY)} : min;
    const Point2i wantMax =
        some ? Point2i{static_cast<std::int32_t>(lastX), static_cast<std::int32_t>(lastY)} : Point2i{-7, -8};
    ASSERT_TRUE(min.x == wantMin.x && min.y == wantMin.y && max.x == wantMax.x && max.y == wantMax.y)
        << centre.x << " " << centre.y << ": " << min.x << " " << min.y << " " << max.x << " " << max.y;
    ASSERT_TRUE(imageIs(dst,
                        [&](std::int64_t i, std::int64_t j) {
                            const bool inside = some && i >= firstX && i <= lastX && j >= firstY && j <= lastY;
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

float someCoordinate(Rng &rng, std::int64_t length) {
    switch (uniform(rng, 0, 3)) {
    case 0:
        return static_cast<float>(uniform(rng, -3, length + 3));
    case 1:
        return static_cast<float>(uniform(rng, -6, 2 * length + 6)) * 0.5f;
    default:
        return static_cast<float>(uniform(rng, -3000, 1000 * length + 3000)) * 1e-3f;
    }
}

TEST(CopySubpix, EveryPatchWidthAndEveryPlace) {
    Rng rng = makeRng("subpix widths");
    int salt = 0;
    forEveryType([&]<class S, class D>() {
        constexpr bool scales = Call<S, D>::scales;
        for (std::int64_t width = 1; width <= 70; ++width) {
            for (int place = 0; place < (width <= 35 ? 16 : 5); ++place, ++salt) {
                const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
                GuardedImage<S> src(uniform(rng, 1, 85), uniform(rng, 1, 14),
                                    {.padding = 4 * (salt % 3), .guard = guard, .skew = salt % 5});
                src.fill(rng, allContents[salt % 5]);
                ASSERT_NO_FATAL_FAILURE((checkPatch<S, D>(
                    src, width, 1 + width % 7, {someCoordinate(rng, src.width()), someCoordinate(rng, src.height())},
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
        ASSERT_NO_FATAL_FAILURE((checkPatch<S, D>(small, 1000003, 2, {17.25f, 1.75f})));
    });
}

// A patch that lies exactly in a corner reads up to the last pixel and none behind it; one as large as the image, and a
// larger one; centres between all pixels.
TEST(CopySubpix, CornersAndPatchesLargerThanTheImage) {
    Rng rng = makeRng("subpix corners");
    forEveryType([&]<class S, class D>() {
        for (const Guard guard : {Guard::behind, Guard::before}) {
            GuardedImage<S> src(23, 19, {.padding = 8, .guard = guard});
            src.fill(rng, Contents::random);
            for (const std::int64_t size : {1, 2, 9, 17, 23, 40}) {
                const float half = 0.5f * static_cast<float>(size - 1);
                for (const float fx : {half, 22 - half, half - 1, 23 - half, half + 0.25f, 22 - half - 0.5f}) {
                    for (const float fy : {half, 18 - half, half - 1, 19 - half, 18 - half - 0.125f}) {
                        ASSERT_NO_FATAL_FAILURE((checkPatch<S, D>(src, size, size, {fx, fy}, {.guard = guard})));
                    }
                }
            }
        }
    });
}

// Fractions so small that they vanish beside the patch's half size, or round to 1 below zero; far away.
TEST(CopySubpix, ExtremeCentres) {
    Rng rng = makeRng("subpix extreme");
    GuardedImage<float> src(20, 9);
    src.fill(rng, Contents::special);
    for (const float c : {1e-40f, -1e-40f, 1e-12f, -1e-12f, -0.0f, 8.000001f, 7.9999995f, 1e9f, -1e9f, 3e8f}) {
        ASSERT_NO_FATAL_FAILURE((checkPatch<float, float>(src, 1, 1, {c, 4})));
        ASSERT_NO_FATAL_FAILURE((checkPatch<float, float>(src, 6, 5, {c, 4})));
        ASSERT_NO_FATAL_FAILURE((checkPatch<float, float>(src, 5, 6, {4, c})));
    }
}

// Where a fraction is 0, neighbours do not count, whatever they are; an edge that is continued is joined with itself.
TEST(CopySubpix, InfinitiesAndNegativeZeros) {
    GuardedImage<float> src(9, 2);
    const float values[] = {INFINITY, -INFINITY, NAN, -0.0f, 1e-45f, 3e38f, -3e38f, NAN, 1.0f};
    for (std::int64_t i = 0; i < 18; ++i) {
        src.set(i % 9, i / 9, values[i % 9]);
    }
    GuardedImage<float> dst(9, 1);
    const Call<float, float> call{src.data(), src.step(), src.roi(), dst.data(), dst.step(),
                                  dst.roi(),  {4, 0},     {},        {},         0};
    ASSERT_EQ(call.whole(), StatusOk);
    EXPECT_TRUE(imageIs(dst, [&](auto x, auto) { return values[x]; }));
    for (const Point2f centre : {Point2f{-6.5f, 0.0f}, Point2f{4, -2.5f}, Point2f{13.5f, 5.25f}, Point2f{-9, 0}}) {
        ASSERT_NO_FATAL_FAILURE((checkPatch<float, float>(src, 9, 1, centre)));
    }
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
        faults.values(StatusOutOfRange, &C::scaleFactor, {17, -17});
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
