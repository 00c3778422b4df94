// Eigenvectors, the Harris measure and line suppression against the plain passes, bit for bit; what their numbers mean;
// their checks.
#include "feature/plain_covariance.h"
#include "support/status_table.h"

#include "rvxcv.h"

namespace {

using namespace support;

// A derivative as one of the two kinds of calls names it: a kernel (which has no central difference) or a filter.
struct Windows {
    PlainDerivative derivative;
    std::int32_t kernel, filter, aperture, block;
};
std::vector<Windows> allWindows() {
    std::vector<Windows> all;
    for (const std::int32_t block : {3, 5}) {
        all.push_back({PlainDerivative::sobel3, MinEigenValSobel, DerivativeSobel, 3, block});
        all.push_back({PlainDerivative::sobel5, MinEigenValSobel, DerivativeSobel, 5, block});
        all.push_back({PlainDerivative::scharr, MinEigenValScharr, DerivativeScharr, 3, block});
        all.push_back({PlainDerivative::central, -1, DerivativeCentral, 3, block});
    }
    return all;
}

// The exported functions of a source type under one name.
StatusCode eigen(const std::uint8_t *src, std::int32_t srcStep, float *dst, std::int32_t dstStep, RoiSize roi,
                 const Windows &w, std::uint8_t *buffer) {
    return rvxiEigenValsVecs_8u32f_C1R(src, srcStep, dst, dstStep, roi, w.kernel, w.aperture, w.block, buffer);
}
StatusCode eigen(const float *src, std::int32_t srcStep, float *dst, std::int32_t dstStep, RoiSize roi,
                 const Windows &w, std::uint8_t *buffer) {
    return rvxiEigenValsVecs_32f_C1R(src, srcStep, dst, dstStep, roi, w.kernel, w.aperture, w.block, buffer);
}
StatusCode harris(const std::uint8_t *src, std::int32_t srcStep, float *dst, std::int32_t dstStep, RoiSize roi,
                  const Windows &w, float k, std::uint8_t *buffer) {
    return rvxiHarrisCorner_8u32f_C1R(src, srcStep, dst, dstStep, roi, w.filter, w.aperture, w.block, k, buffer);
}
StatusCode harris(const float *src, std::int32_t srcStep, float *dst, std::int32_t dstStep, RoiSize roi,
                  const Windows &w, float k, std::uint8_t *buffer) {
    return rvxiHarrisCorner_32f_C1R(src, srcStep, dst, dstStep, roi, w.filter, w.aperture, w.block, k, buffer);
}

// Scratch of the promised size that ends at a guard page and starts wherever that leaves it.
template <class T> GuardedBuffer scratchFor(RoiSize roi, const Windows &w) {
    std::int32_t size = 0;
    EXPECT_EQ((std::is_same_v<T, float> ? rvxiHarrisCornerGetBufferSize_32f_C1R
                                        : rvxiHarrisCornerGetBufferSize_8u32f_C1R)(roi, w.aperture, w.block, &size),
              StatusOk);
    GuardedBuffer scratch(size);
    scratch.scribble(0xff);
    return scratch;
}

template <class T> GuardedImage<float> eigenOf(const GuardedImage<T> &src, const Windows &w, std::int64_t skew = 0) {
    GuardedImage<float> dst(6 * src.width(), src.height(), {.padding = 8 * skew, .skew = skew});
    GuardedBuffer scratch = scratchFor<T>(src.roi(), w);
    EXPECT_EQ(eigen(src.data(), src.step(), dst.data(), dst.step(), src.roi(), w, scratch.data()), StatusOk);
    return dst;
}
template <class T>
GuardedImage<float> harrisOf(const GuardedImage<T> &src, const Windows &w, float k, std::int64_t skew = 0) {
    GuardedImage<float> dst(src.width(), src.height(), {.padding = 12 * skew, .skew = skew});
    GuardedBuffer scratch = scratchFor<T>(src.roi(), w);
    EXPECT_EQ(harris(src.data(), src.step(), dst.data(), dst.step(), src.roi(), w, k, scratch.data()), StatusOk);
    return dst;
}
GuardedImage<std::uint8_t> suppressed(const GuardedImage<std::uint8_t> &src, GuardedImage<std::uint8_t> map,
                                      const Windows &w, float ratio, bool inPlace) {
    GuardedImage<std::uint8_t> dst(src.width(), src.height(), {.padding = 3});
    GuardedImage<std::uint8_t> &result = inPlace ? map : dst;
    GuardedBuffer scratch = scratchFor<std::uint8_t>(src.roi(), w);
    EXPECT_EQ(rvxiLineSuppression_8u_C1R(src.data(), src.step(), map.data(), map.step(), result.data(), result.step(),
                                         src.roi(), w.filter, w.aperture, w.block, ratio, scratch.data()),
              StatusOk);
    return std::move(result);
}

// Element k of a pixel's six.
float plainEigen(const PlainCovariance &m, std::int64_t x, std::int64_t y, std::int64_t k) {
    const float h = m.scale * 0.5f, tr = m.trace(x, y), r = m.root(x, y), d = m.difference(x, y);
    if (k < 2) {
        return k == 0 ? h * (tr + r) : h * (tr - r);
    }
    float x1 = 1, y1 = 0;
    if (r != 0) {
        const float e = m.c.at(x, y) + m.c.at(x, y);
        const float ux = d >= 0 ? d + r : std::abs(e), uy = d >= 0 ? e : e < 0 ? -(r - d) : r - d;
        const float n = std::sqrt(std::fma(ux, ux, uy * uy));
        x1 = ux / n, y1 = uy / n;
    }
    return k == 2 || k == 5 ? x1 : k == 3 ? y1 : -y1;
}

// Of 32f sources every special value, too. With `salt` steps, guards and alignments vary.
template <class T> void checkEigenAndHarris() {
    Rng rng = makeRng("covariance", sizeof(T));
    int salt = 0;
    const auto run = [&](std::int64_t width, std::int64_t height, Contents contents, const Windows &w) {
        ++salt;
        GuardedImage<T> src(width, height,
                            {.padding = static_cast<std::int64_t>(sizeof(T)) * (salt % 3),
                             .guard = salt % 2 != 0 ? Guard::before : Guard::behind});
        src.fill(rng, contents);
        const PlainCovariance m(src, w.derivative, w.block);
        SCOPED_TRACE("filter " + std::to_string(w.filter) + " aperture " + std::to_string(w.aperture));
        const float k = salt % 7 == 0 ? 0.0f : 0.04f, squared = m.scale * m.scale;
        ASSERT_TRUE(imageIs(harrisOf(src, w, k, salt % 5), [&](auto x, auto y) {
            const float a = m.a.at(x, y), b = m.b.at(x, y), c = m.c.at(x, y), square = c * c, tr = a + b;
            return squared * std::fma(-k, tr * tr, std::fma(a, b, -square));
        }));
        if (w.kernel >= 0) {
            ASSERT_TRUE(
                imageIs(eigenOf(src, w, salt % 4), [&](auto x, auto y) { return plainEigen(m, x / 6, y, x % 6); }));
        }
    };
    for (const Windows &w : allWindows()) {
        for (std::int64_t width = 1; width <= 33; ++width) {
            const Contents contents = width % 5 == 0   ? Contents::special
                                      : width % 5 == 1 ? Contents::small
                                      : width % 5 == 2 ? Contents::nearMax
                                                       : Contents::random;
            ASSERT_NO_FATAL_FAILURE(run(width, 1 + width % 7, contents, w));
        }
        for (const std::int64_t width : {271, 531}) { // a strip and more
            ASSERT_NO_FATAL_FAILURE(run(width, 6, Contents::random, w));
        }
    }
}

TEST(GradientCovariance, MatchesThePasses8u) { checkEigenAndHarris<std::uint8_t>(); }
TEST(GradientCovariance, MatchesThePasses32f) { checkEigenAndHarris<float>(); }

// Maps from empty to full: few candidates are computed alone, many as rows. Candidates have any value but 0.
TEST(LineSuppression, MatchesThePasses) {
    Rng rng = makeRng("lines");
    int salt = 0;
    const auto run = [&](std::int64_t width, std::int64_t height, const Windows &w) {
        const float ratio = std::initializer_list<float>{0.1f, 0.3f, 0.0f, 1.0f}.begin()[salt / 2 % 4];
        GuardedImage<std::uint8_t> src(width, height,
                                       {.padding = salt % 3, .guard = salt % 2 != 0 ? Guard::before : Guard::behind});
        src.fill(rng, salt % 4 == 0 ? Contents::small : Contents::random);
        const PlainCovariance m(src, w.derivative, w.block);
        for (const std::int64_t candidates : {0, 10, 40, 1000}) { // of a thousand pixels
            GuardedImage<std::uint8_t> map(width, height, {.padding = 1 + salt % 2});
            for (std::int64_t i = 0; i < width * height; ++i) {
                const bool candidate = uniform(rng, 0, 999) < candidates;
                map.set(i % width, i / width, static_cast<std::uint8_t>(candidate ? uniform(rng, 1, 255) : 0));
            }
            const auto expected = [&](std::int64_t x, std::int64_t y) {
                const float tr = m.trace(x, y), r = m.root(x, y);
                return std::max(tr - r, 0.0f) >= ratio * (tr + r) ? map.at(x, y) : 0;
            };
            std::vector<std::uint8_t> want;
            for (std::int64_t i = 0; i < width * height; ++i) {
                want.push_back(static_cast<std::uint8_t>(expected(i % width, i / width)));
            }
            ++salt;
            ASSERT_TRUE(imageIs(suppressed(src, std::move(map), w, ratio, salt % 2 != 0),
                                [&](auto x, auto y) { return want[static_cast<std::size_t>(y * width + x)]; }))
                << "filter " << w.filter << " aperture " << w.aperture << " block " << w.block << " candidates "
                << candidates;
        }
    };
    for (const Windows &w : allWindows()) {
        for (const std::int64_t width : {1, 2, 7, 8, 9, 31, 32, 33, 40, 41, 255, 272, 273, 528, 529, 801}) {
            ASSERT_NO_FATAL_FAILURE(run(width, 1 + width % 13, w));
        }
    }
}

template <class Value> GuardedImage<std::uint8_t> drawn(std::int64_t width, std::int64_t height, const Value &value) {
    GuardedImage<std::uint8_t> image(width, height);
    for (std::int64_t i = 0; i < width * height; ++i) {
        image.set(i % width, i / width, static_cast<std::uint8_t>(value(i % width, i / width)));
    }
    return image;
}

TEST(GradientCovariance, VectorsPointAlongTheStrongestChange) {
    struct Case {
        const char *name;
        GuardedImage<std::uint8_t> image;
        float x1, y1;
    };
    constexpr float half = 0.70710678f;
    const Case cases[] = {{"vertical step", drawn(20, 20, [](auto x, auto) { return x < 10 ? 20 : 220; }), 1, 0},
                          {"horizontal step", drawn(20, 20, [](auto, auto y) { return y < 10 ? 20 : 220; }), 0, 1},
                          {"lower right", drawn(20, 20, [](auto x, auto y) { return 5 * (x + y); }), half, half},
                          {"upper right", drawn(20, 20, [](auto x, auto y) { return 5 * (x - y) + 100; }), half, -half},
                          {"flat", drawn(20, 20, [](auto, auto) { return 77; }), 1, 0}};
    for (const Windows &w : allWindows()) {
        for (const Case &c : cases) {
            if (w.kernel < 0) {
                continue;
            }
            const GuardedImage<float> six = eigenOf(c.image, w);
            EXPECT_NEAR(six.at(6 * 10 + 2, 10), c.x1, 1e-6f) << c.name;
            EXPECT_NEAR(six.at(6 * 10 + 3, 10), c.y1, 1e-6f) << c.name;
            EXPECT_EQ(six.at(6 * 10 + 1, 10), 0.0f) << c.name; // nothing changes across
        }
    }
}

TEST(GradientCovariance, ScalesAgree) {
    const Windows central = allWindows()[3];
    const GuardedImage<std::uint8_t> ramp = drawn(30, 20, [](auto x, auto y) { return 4 * x + 3 * y; });
    const GuardedImage<float> six = eigenOf(ramp, allWindows()[0]), measure = harrisOf(ramp, central, 0.05f);
    const float trace = six.at(6 * 15, 10) + six.at(6 * 15 + 1, 10);
    EXPECT_NEAR(measure.at(15, 10), -0.05f * trace * trace, 2e-6f * trace * trace);

    // The corner measure, and a 90 degree turn.
    GuardedImage<std::uint8_t> src(45, 45), turned(45, 45);
    Rng rng = makeRng("turn");
    src.fill(rng, Contents::random);
    for (std::int64_t i = 0; i < 45 * 45; ++i) {
        turned.set(44 - i / 45, i % 45, src.at(i % 45, i / 45));
    }
    for (const Windows &w : allWindows()) {
        if (w.kernel >= 0) {
            const GuardedImage<float> upright = eigenOf(src, w), sideways = eigenOf(turned, w);
            GuardedImage<float> smaller(45, 45);
            GuardedBuffer scratch = scratchFor<std::uint8_t>(src.roi(), w);
            rvxiMinEigenVal_8u32f_C1R(src.data(), src.step(), smaller.data(), smaller.step(), src.roi(), w.kernel,
                                      w.aperture, w.block, scratch.data());
            for (std::int64_t i = 0; i < 45 * 45; ++i) {
                const std::int64_t x = i % 45, y = i / 45;
                const float largest = upright.at(6 * x, y);
                ASSERT_EQ(upright.at(6 * x + 1, y), smaller.at(x, y));
                ASSERT_NEAR(sideways.at(6 * (44 - y), x), largest, 1e-6f * largest);
                ASSERT_NEAR(sideways.at(6 * (44 - y) + 1, x), upright.at(6 * x + 1, y), 1e-6f * largest);
            }
        }
    }
}

// A white square on black: four Harris peaks, negative sides; of a full map the corners survive and the sides do not.
TEST(GradientCovariance, CornersAndSidesOfASquare) {
    const auto inside = [](std::int64_t v) { return v >= 12 && v < 28; };
    const GuardedImage<std::uint8_t> square =
        drawn(40, 40, [&](auto x, auto y) { return inside(x) && inside(y) ? 255 : 0; });
    for (const Windows &w : allWindows()) {
        const GuardedImage<float> measure = harrisOf(square, w, 0.04f);
        const GuardedImage<std::uint8_t> kept =
            suppressed(square, drawn(40, 40, [](auto, auto) { return 9; }), w, 0.1f, false);
        for (const std::int64_t corner : {12, 27}) {
            EXPECT_GT(measure.at(corner, corner), 0.0f);
            EXPECT_EQ(kept.at(corner, corner), 9);
            EXPECT_LT(measure.at(corner, 20), 0.0f);
            EXPECT_EQ(kept.at(20, corner), 0);
        }
        EXPECT_EQ(kept.at(2, 2), 9); // flat
    }
}

struct Call {
    const void *src;
    const std::uint8_t *map;
    void *dst;
    std::int32_t srcStep, mapStep, dstStep;
    RoiSize roi;
    Windows windows;
    float number; // k or ratio
    std::uint8_t *buffer;
};
constexpr Windows sobel{PlainDerivative::sobel3, MinEigenValSobel, DerivativeSobel, 3, 3};
Windows with(std::int32_t code, std::int32_t aperture, std::int32_t block) {
    return {sobel.derivative, code, code, aperture, block};
}

template <class T> void checkStatuses() {
    GuardedImage<T> src(9, 4);
    GuardedImage<float> dst(54, 4);
    GuardedBuffer scratch(100000);
    Rng rng = makeRng("statuses");
    src.fill(rng, Contents::random);
    const auto check = [&](std::int64_t dstRow, bool filters, const auto &call) {
        constexpr std::int64_t srcRow = 9 * sizeof(T);
        Faults<Call> faults;
        faults.nulls(&Call::src, &Call::dst, &Call::buffer).empty(&Call::roi);
        faults.shortSteps(srcRow, &Call::srcStep).shortSteps(dstRow, &Call::dstStep);
        faults.unevenSteps(srcRow, sizeof(T), &Call::srcStep).unevenSteps(dstRow, 4, &Call::dstStep);
        if (filters) {
            faults.values(StatusBadFilterKind, &Call::windows, {with(3, 3, 3), with(3, 4, 3), with(0, 3, 3)});
            faults.values(StatusBadSize, &Call::windows, {with(5, 5, 3), with(8, 5, 3), with(2, 4, 3), with(2, 3, 4)});
            faults.values(StatusOutOfRange, &Call::number, {-0.01f, NAN});
            faults.add("in place", StatusInPlaceNotSupported, [](Call &c) { c.dst = const_cast<void *>(c.src); });
        } else {
            faults.values(StatusBadArgument, &Call::windows, {with(2, 3, 3), with(-1, 4, 3)});
            faults.values(StatusBadSize, &Call::windows, {with(1, 5, 3), with(0, 4, 3), with(0, 3, 4)});
        }
        const Call good{src.data(), nullptr,   dst.data(), src.step(), 0,
                        dst.step(), src.roi(), sobel,      0.04f,      scratch.data()};
        expectFaultOrder<Call>(good, faults, call, [&] { return dst.bytes(); });
    };
    check(216, false, [](const Call &c) {
        return eigen(static_cast<const T *>(c.src), c.srcStep, static_cast<float *>(c.dst), c.dstStep, c.roi, c.windows,
                     c.buffer);
    });
    check(36, true, [](const Call &c) {
        return harris(static_cast<const T *>(c.src), c.srcStep, static_cast<float *>(c.dst), c.dstStep, c.roi,
                      c.windows, c.number, c.buffer);
    });
    // A row of 24 * 2^28 bytes is none of 0.
    EXPECT_EQ(eigen(src.data(), INT32_MAX - 3, dst.data(), 64, {1 << 28, 1}, sobel, scratch.data()), StatusBadStep);
}

TEST(GradientCovariance, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>();
    checkStatuses<float>();
}

TEST(LineSuppression, StatusesInTheOrderOfTheChecks) {
    GuardedImage<std::uint8_t> src(9, 4), map(9, 4), dst(9, 4);
    GuardedBuffer scratch(100000);
    Faults<Call> faults;
    faults.nulls(&Call::src, &Call::map, &Call::dst, &Call::buffer).empty(&Call::roi);
    faults.shortSteps(9, &Call::srcStep, &Call::mapStep, &Call::dstStep);
    faults.values(StatusBadFilterKind, &Call::windows, {with(3, 4, 3)});
    faults.values(StatusBadSize, &Call::windows, {with(8, 5, 3), with(2, 3, 4)});
    faults.values(StatusOutOfRange, &Call::number, {-0.01f, 1.01f, NAN});
    faults.add("in place", StatusInPlaceNotSupported, [](Call &c) { c.dst = const_cast<void *>(c.src); });
    const Call good{src.data(), map.data(), dst.data(), src.step(), map.step(),
                    dst.step(), src.roi(),  sobel,      1.0f,       scratch.data()};
    const auto call = [](const Call &c) {
        return rvxiLineSuppression_8u_C1R(static_cast<const std::uint8_t *>(c.src), c.srcStep, c.map, c.mapStep,
                                          static_cast<std::uint8_t *>(c.dst), c.dstStep, c.roi, c.windows.filter,
                                          c.windows.aperture, c.windows.block, c.number, c.buffer);
    };
    expectFaultOrder<Call>(good, faults, call, [&] { return dst.bytes(); });
}

TEST(GradientCovariance, ScratchIsThatOfTheCornerMeasure) {
    using Query = StatusCode (*)(RoiSize, std::int32_t, std::int32_t, std::int32_t *);
    const auto compare = [](Query query, Query cornerMeasure) {
        for (const std::int32_t aperture : {3, 4, 5}) {
            for (const std::int32_t block : {3, 5, 7}) {
                std::int32_t size = -1, want = -1;
                EXPECT_EQ(query({333, 17}, aperture, block, &size), cornerMeasure({333, 17}, aperture, block, &want));
                EXPECT_EQ(size, want);
            }
        }
    };
    compare(rvxiEigenValsVecsGetBufferSize_8u32f_C1R, rvxiMinEigenValGetBufferSize_8u32f_C1R);
    compare(rvxiEigenValsVecsGetBufferSize_32f_C1R, rvxiMinEigenValGetBufferSize_32f_C1R);
    compare(rvxiHarrisCornerGetBufferSize_8u32f_C1R, rvxiMinEigenValGetBufferSize_8u32f_C1R);
    compare(rvxiHarrisCornerGetBufferSize_32f_C1R, rvxiMinEigenValGetBufferSize_32f_C1R);
    compare(rvxiLineSuppressionGetBufferSize_8u_C1R, rvxiMinEigenValGetBufferSize_8u32f_C1R);
}

} // namespace
