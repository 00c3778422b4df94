// Eigenvectors, the Harris measure and line suppression against the plain passes, bit for bit; what their numbers mean;
// their checks.
#include "feature/plain_covariance.h"
#include "support/status_table.h"

#include "rvxcv.h"

namespace {

using namespace support;

// A derivative as the two kinds of calls name it: by a kernel (there is none for the central difference) or a filter.
struct Windows {
    PlainDerivative derivative;
    std::int32_t kernel, filter, aperture, block;
};
constexpr Windows allWindows[] = {
    {PlainDerivative::sobel3, MinEigenValSobel, DerivativeSobel, 3, 3},
    {PlainDerivative::sobel3, MinEigenValSobel, DerivativeSobel, 3, 5},
    {PlainDerivative::sobel5, MinEigenValSobel, DerivativeSobel, 5, 3},
    {PlainDerivative::sobel5, MinEigenValSobel, DerivativeSobel, 5, 5},
    {PlainDerivative::scharr, MinEigenValScharr, DerivativeScharr, 3, 3},
    {PlainDerivative::scharr, MinEigenValScharr, DerivativeScharr, 3, 5},
    {PlainDerivative::central, -1, DerivativeCentral, 3, 3},
    {PlainDerivative::central, -1, DerivativeCentral, 3, 5},
};

// The exported functions of a source type.
template <class T> struct Of {
    template <class Bytes, class Floats> static constexpr auto pick(Bytes ofBytes, Floats ofFloats) {
        return std::get<std::is_same_v<T, float>>(std::pair(ofBytes, ofFloats));
    }
    static constexpr auto eigen = pick(rvxiEigenValsVecs_8u32f_C1R, rvxiEigenValsVecs_32f_C1R);
    static constexpr auto harris = pick(rvxiHarrisCorner_8u32f_C1R, rvxiHarrisCorner_32f_C1R);
    static constexpr auto eigenSize =
        pick(rvxiEigenValsVecsGetBufferSize_8u32f_C1R, rvxiEigenValsVecsGetBufferSize_32f_C1R);
    static constexpr auto harrisSize =
        pick(rvxiHarrisCornerGetBufferSize_8u32f_C1R, rvxiHarrisCornerGetBufferSize_32f_C1R);
    static constexpr auto measureSize =
        pick(rvxiMinEigenValGetBufferSize_8u32f_C1R, rvxiMinEigenValGetBufferSize_32f_C1R);
};

// Scratch of the promised size, which is the corner measure's; it ends at a guard page and starts wherever that leaves
// it.
template <class T, class Query> GuardedBuffer scratchFor(Query query, RoiSize roi, const Windows &w) {
    std::int32_t size = 0, measureSize = -1;
    EXPECT_EQ(query(roi, w.aperture, w.block, &size), StatusOk);
    EXPECT_EQ(Of<T>::measureSize(roi, w.aperture, w.block, &measureSize), StatusOk);
    EXPECT_EQ(size, measureSize);
    GuardedBuffer scratch(size);
    scratch.spoil(0xff);
    return scratch;
}

template <class T> GuardedImage<float> eigenOf(const GuardedImage<T> &src, const Windows &w, std::int64_t skew = 0) {
    GuardedImage<float> dst(6 * src.width(), src.height(), {.padding = 8 * skew, .skew = skew});
    GuardedBuffer scratch = scratchFor<T>(Of<T>::eigenSize, src.roi(), w);
    EXPECT_EQ(Of<T>::eigen(src.data(), src.step(), dst.data(), dst.step(), src.roi(), w.kernel, w.aperture, w.block,
                           scratch.data()),
              StatusOk);
    return dst;
}
template <class T>
GuardedImage<float> harrisOf(const GuardedImage<T> &src, const Windows &w, float k, std::int64_t skew = 0) {
    GuardedImage<float> dst(src.width(), src.height(), {.padding = 12 * skew, .skew = skew});
    GuardedBuffer scratch = scratchFor<T>(Of<T>::harrisSize, src.roi(), w);
    EXPECT_EQ(Of<T>::harris(src.data(), src.step(), dst.data(), dst.step(), src.roi(), w.filter, w.aperture, w.block, k,
                            scratch.data()),
              StatusOk);
    return dst;
}
GuardedImage<std::uint8_t> suppressed(const GuardedImage<std::uint8_t> &src, GuardedImage<std::uint8_t> map,
                                      const Windows &w, float ratio, bool inPlace) {
    GuardedImage<std::uint8_t> dst(src.width(), src.height(), {.padding = 3});
    GuardedImage<std::uint8_t> &result = inPlace ? map : dst;
    GuardedBuffer scratch = scratchFor<std::uint8_t>(rvxiLineSuppressionGetBufferSize_8u_C1R, src.roi(), w);
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

template <class T> void checkEigenAndHarris() {
    Rng rng = makeRng("covariance", sizeof(T));
    std::int64_t salt = 0;
    const auto run = [&](std::int64_t width, std::int64_t height, const Windows &w) {
        ++salt; // steps, guards and alignments vary, contents too
        GuardedImage<T> src(width, height,
                            {.padding = static_cast<std::int64_t>(sizeof(T)) * (salt % 3),
                             .guard = salt % 2 != 0 ? Guard::before : Guard::behind});
        src.fill(rng, allContents[salt % 5]);
        const PlainCovariance m(src, w.derivative, w.block);
        const float k = salt % 7 == 0 ? 0.0f : 0.04f, squared = m.scale * m.scale;
        ASSERT_TRUE(imageIs(harrisOf(src, w, k, salt % 5),
                            [&](auto x, auto y) {
                                const float square = m.c.at(x, y) * m.c.at(x, y), tr = m.trace(x, y);
                                return squared * std::fma(-k, tr * tr, std::fma(m.a.at(x, y), m.b.at(x, y), -square));
                            }))
            << "filter " << w.filter << " aperture " << w.aperture;
        if (w.kernel >= 0) {
            const auto expected = [&](auto x, auto y) { return plainEigen(m, x / 6, y, x % 6); };
            ASSERT_TRUE(imageIs(eigenOf(src, w, salt % 4), expected)) << "kernel " << w.kernel;
        }
    };
    for (const Windows &w : allWindows) {
        for (std::int64_t width = 1; width <= 33; ++width) {
            ASSERT_NO_FATAL_FAILURE(run(width, 1 + width % 7, w));
        }
        for (const std::int64_t width : {271, 531}) { // a strip and more
            ASSERT_NO_FATAL_FAILURE(run(width, 6, w));
        }
    }
}
TEST(GradientCovariance, MatchesThePasses8u) { checkEigenAndHarris<std::uint8_t>(); }
TEST(GradientCovariance, MatchesThePasses32f) { checkEigenAndHarris<float>(); }

// Maps from empty to full: few candidates are computed alone, many as rows. Candidates have any value but 0.
TEST(LineSuppression, MatchesThePasses) {
    Rng rng = makeRng("lines");
    int salt = 0;
    const auto run = [&](std::int64_t width, std::int64_t height, const Windows &w, int candidates) {
        constexpr float ratios[] = {0.1f, 0.3f, 0.0f, 1.0f};
        const float ratio = ratios[++salt / 2 % 4];
        GuardedImage<std::uint8_t> src(width, height,
                                       {.padding = salt % 3, .guard = salt % 5 < 2 ? Guard::before : Guard::behind});
        src.fill(rng, salt % 7 == 0 ? Contents::small : Contents::random);
        const PlainCovariance m(src, w.derivative, w.block);
        GuardedImage<std::uint8_t> map(width, height, {.padding = 1 + salt % 2});
        PlainPlane want(width, height);
        for (std::int64_t i = 0; i < width * height; ++i) {
            const std::int64_t x = i % width, y = i / width;
            map.set(x, y, static_cast<std::uint8_t>(uniform(rng, 0, 999) < candidates ? uniform(rng, 1, 255) : 0));
            const bool kept = std::max(m.trace(x, y) - m.root(x, y), 0.0f) >= ratio * (m.trace(x, y) + m.root(x, y));
            want.at(x, y) = kept ? map.at(x, y) : 0;
        }
        const auto expected = [&](auto x, auto y) { return want.at(x, y); };
        ASSERT_TRUE(imageIs(suppressed(src, std::move(map), w, ratio, salt % 2 != 0), expected))
            << "filter " << w.filter << " aperture " << w.aperture << " block " << w.block << " of 1000 " << candidates;
    };
    int turn = 0;
    for (const Windows &w : allWindows) {
        for (const std::int64_t width : {1, 2, 7, 8, 9, 31, 32, 33, 40, 41, 255, 272, 273, 528, 529, 801}) {
            for (const int candidates : {0, 10, 40, 1000}) {
                if (const int column = turn++; (column + column / 4) % caseStep() != 0) {
                    continue; // of each width another number of candidates
                }
                ASSERT_NO_FATAL_FAILURE(run(width, 1 + width % 13, w, candidates));
            }
        }
    }
}

template <class Value> GuardedImage<std::uint8_t> drawn(const Value &value) {
    GuardedImage<std::uint8_t> image(40, 40);
    for (int i = 0; i < 40 * 40; ++i) {
        image.set(i % 40, i / 40, static_cast<std::uint8_t>(value(i % 40, i / 40)));
    }
    return image;
}

TEST(GradientCovariance, VectorsPointAlongTheStrongestChange) {
    const auto expect = [](const GuardedImage<std::uint8_t> &image, float x1, float y1) {
        for (const Windows &w : allWindows) {
            if (w.kernel >= 0) {
                const GuardedImage<float> six = eigenOf(image, w);
                EXPECT_NEAR(six.at(6 * 20 + 2, 20), x1, 1e-6f);
                EXPECT_NEAR(six.at(6 * 20 + 3, 20), y1, 1e-6f);
                EXPECT_EQ(six.at(6 * 20 + 1, 20), 0.0f); // nothing changes across
            }
        }
        // A central difference measures the same as Sobel: there is no determinant, and the trace is equal.
        const float trace = eigenOf(image, allWindows[0]).at(6 * 10, 10);
        EXPECT_NEAR(harrisOf(image, allWindows[6], 0.05f).at(10, 10), -0.05f * trace * trace, 2e-6f * trace * trace);
    };
    constexpr float half = 0.70710678f;
    expect(drawn([](int x, int) { return x < 20 ? 20 : 220; }), 1, 0);
    expect(drawn([](int, int y) { return y < 20 ? 20 : 220; }), 0, 1);
    expect(drawn([](int x, int y) { return 3 * (x + y); }), half, half);
    expect(drawn([](int x, int y) { return 3 * (x - y) + 120; }), half, -half);
    expect(drawn([](int, int) { return 77; }), 1, 0);
}

// A white square on black: four Harris peaks, negative sides; of a full map the corners survive and the sides do not.
TEST(GradientCovariance, CornersAndSidesOfASquare) {
    const auto inside = [](int v) { return v >= 12 && v < 28; };
    const GuardedImage<std::uint8_t> square = drawn([&](int x, int y) { return inside(x) && inside(y) ? 255 : 0; });
    for (const Windows &w : allWindows) {
        const GuardedImage<float> measure = harrisOf(square, w, 0.04f);
        const GuardedImage<std::uint8_t> kept = suppressed(square, drawn([](int, int) { return 9; }), w, 0.1f, false);
        for (const std::int64_t corner : {12, 27}) {
            EXPECT_TRUE(measure.at(corner, corner) > 0 && measure.at(corner, 20) < 0);
            EXPECT_TRUE(kept.at(corner, corner) == 9 && kept.at(20, corner) == 0);
        }
        EXPECT_EQ(kept.at(2, 2), 9); // flat
    }
}

struct Call {
    const void *src;
    const std::uint8_t *map;
    float *dst;
    std::int32_t srcStep, mapStep, dstStep;
    RoiSize roi;
    std::int32_t windows[3]; // kernel or filter, aperture, block
    float number;            // k or ratio
    std::uint8_t *buffer;
};

template <class T> void checkStatuses(bool harris, bool lines) {
    GuardedImage<T> src(9, 4);
    GuardedImage<std::uint8_t> map(9, 4);
    GuardedImage<float> dst(54, 4);
    GuardedBuffer scratch(100000);
    const std::int64_t srcRow = 9 * std::int64_t{sizeof(T)}, dstRow = lines ? 9 : harris ? 36 : 216;
    Faults<Call> faults;
    const auto windows = [&](StatusCode status, std::int32_t code, std::int32_t aperture, std::int32_t block) {
        faults.add("windows", status,
                   [=](Call &c) { c.windows[0] = code, c.windows[1] = aperture, c.windows[2] = block; });
    };
    (lines ? faults.nulls(&Call::map) : faults).nulls(&Call::src, &Call::dst, &Call::buffer).empty(&Call::roi);
    (lines ? faults.shortSteps(9, &Call::mapStep) : faults).shortSteps(srcRow, &Call::srcStep);
    faults.shortSteps(dstRow, &Call::dstStep);
    faults.unevenSteps(srcRow, sizeof(T), &Call::srcStep).unevenSteps(dstRow, lines ? 1 : 4, &Call::dstStep);
    windows(harris ? StatusBadFilterKind : StatusBadArgument, 3, 4, 3);
    windows(harris ? StatusBadFilterKind : StatusBadArgument, harris ? 0 : 2, 3, 3);
    windows(StatusBadSize, harris ? 8 : 1, 5, 3);
    windows(StatusBadSize, harris ? 5 : 0, harris ? 5 : 4, 3);
    windows(StatusBadSize, harris ? 2 : 0, 3, 4);
    if (harris) {
        faults.values(StatusOutOfRange, &Call::number, {-0.01f, NAN, lines ? 1.01f : -1.0f});
        faults.add("in place", StatusInPlaceNotSupported,
                   [](Call &c) { c.dst = static_cast<float *>(const_cast<void *>(c.src)); });
    }
    const auto call = [&](const Call &c) {
        const T *from = static_cast<const T *>(c.src);
        const auto [code, aperture, block] = c.windows;
        if (lines) {
            return rvxiLineSuppression_8u_C1R(static_cast<const std::uint8_t *>(c.src), c.srcStep, c.map, c.mapStep,
                                              reinterpret_cast<std::uint8_t *>(c.dst), c.dstStep, c.roi, code, aperture,
                                              block, c.number, c.buffer);
        }
        return harris
                   ? Of<T>::harris(from, c.srcStep, c.dst, c.dstStep, c.roi, code, aperture, block, c.number, c.buffer)
                   : Of<T>::eigen(from, c.srcStep, c.dst, c.dstStep, c.roi, code, aperture, block, c.buffer);
    };
    const Call good{src.data(), map.data(),    dst.data(), src.step(),
                    map.step(), dst.step(),    src.roi(),  {harris ? 2 : 0, 3, 3},
                    0.04f,      scratch.data()};
    expectFaultOrder<Call>(good, faults, call, [&] { return dst.bytes(); });
    Call wide = good; // a row of 24 * 2^28 bytes is not one of 0
    wide.roi = {1 << 28, 1}, wide.srcStep = wide.mapStep = INT32_MAX - 3;
    EXPECT_EQ(call(wide), StatusBadStep);
}

TEST(GradientCovariance, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>(false, false);
    checkStatuses<float>(false, false);
    checkStatuses<std::uint8_t>(true, false);
    checkStatuses<float>(true, false);
    checkStatuses<std::uint8_t>(true, true);
}

} // namespace
