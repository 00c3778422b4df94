// The corner measure against its four steps as plain passes over whole planes, bit for bit.
#include "feature/plain_covariance.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>

namespace {

using namespace support;

struct Parameters {
    std::int32_t kernel, aperture, block;
};
constexpr Parameters allParameters[] = {
    {MinEigenValSobel, 3, 3}, {MinEigenValSobel, 3, 5},  {MinEigenValSobel, 5, 3},
    {MinEigenValSobel, 5, 5}, {MinEigenValScharr, 3, 3}, {MinEigenValScharr, 3, 5},
};

template <class T> PlainPlane plainMeasure(const GuardedImage<T> &image, Parameters parameters) {
    const PlainDerivative kind = parameters.kernel == MinEigenValScharr ? PlainDerivative::scharr
                                 : parameters.aperture == 5             ? PlainDerivative::sobel5
                                                                        : PlainDerivative::sobel3;
    const PlainCovariance covariance(image, kind, parameters.block);
    const float half = covariance.scale * 0.5f;
    PlainPlane result = covariance.a;
    for (std::int64_t y = 0; y < result.height; ++y) {
        for (std::int64_t x = 0; x < result.width; ++x) {
            result.at(x, y) = half * (covariance.trace(x, y) - covariance.root(x, y));
        }
    }
    return result;
}

template <class T>
StatusCode measure(const T *src, std::int32_t srcStep, float *dst, std::int32_t dstStep, RoiSize roi, Parameters p,
                   std::uint8_t *buffer) {
    if constexpr (std::is_same_v<T, float>) {
        return rvxiMinEigenVal_32f_C1R(src, srcStep, dst, dstStep, roi, p.kernel, p.aperture, p.block, buffer);
    } else {
        return rvxiMinEigenVal_8u32f_C1R(src, srcStep, dst, dstStep, roi, p.kernel, p.aperture, p.block, buffer);
    }
}

template <class T> StatusCode query(RoiSize roi, std::int32_t aperture, std::int32_t block, std::int32_t *size) {
    return std::is_same_v<T, float> ? rvxiMinEigenValGetBufferSize_32f_C1R(roi, aperture, block, size)
                                    : rvxiMinEigenValGetBufferSize_8u32f_C1R(roi, aperture, block, size);
}

// Into an image with padding, with scratch that ends at a guard page and starts wherever that leaves it.
template <class T> GuardedImage<float> measured(const GuardedImage<T> &src, Parameters p, std::int64_t skew = 0) {
    GuardedImage<float> dst(src.width(), src.height(), {.padding = 12, .skew = skew});
    std::int32_t size = 0;
    EXPECT_EQ(query<T>(src.roi(), p.aperture, p.block, &size), StatusOk);
    GuardedBuffer scratch(size);
    scratch.spoil(0xff);
    EXPECT_EQ(measure(src.data(), src.step(), dst.data(), dst.step(), src.roi(), p, scratch.data()), StatusOk);
    return dst;
}

template <class T> void checkSizesAndContents() {
    Rng rng = makeRng("mineigen", sizeof(T));
    int salt = 0;
    const auto run = [&](std::int64_t width, std::int64_t height, Contents contents, Parameters p) {
        const std::int64_t padding = static_cast<std::int64_t>(sizeof(T)) * (salt % 4);
        GuardedImage<T> src(width, height,
                            {.padding = padding, .guard = salt % 2 != 0 ? Guard::before : Guard::behind});
        src.fill(rng, contents);
        const PlainPlane want = plainMeasure(src, p);
        ASSERT_TRUE(imageIs(measured(src, p, salt % 5), [&](auto x, auto y) { return want.at(x, y); }))
            << "kernel " << p.kernel << " aperture " << p.aperture << " block " << p.block;
        ++salt;
    };
    for (const Parameters &p : allParameters) {
        for (std::int64_t width = 1; width <= 35; ++width) {
            ASSERT_NO_FATAL_FAILURE(run(width, 1 + width % 7, salt % 4 == 0 ? Contents::nearMax : Contents::random, p));
        }
        // Around the ends of strips of columns, and several strips.
        for (const std::int64_t width : {255, 257, 271, 272, 273, 288, 512, 527, 528, 529, 531}) {
            ASSERT_NO_FATAL_FAILURE(run(width, 6, Contents::random, p));
        }
        ASSERT_NO_FATAL_FAILURE(run(1283, 11, Contents::small, p));
    }
}

TEST(MinEigenVal, MatchesThePasses8u) { checkSizesAndContents<std::uint8_t>(); }
TEST(MinEigenVal, MatchesThePasses32f) { checkSizesAndContents<float>(); }

// Five taps taken in order would leave a rest of most constants; large ones would overflow in the products.
TEST(MinEigenVal, ConstantsGiveExactlyZero) {
    for (const Parameters &p : allParameters) {
        for (const float constant : {0.1f, 3.3e30f, -7.7e-39f, 255.0f, 1.0f / 3.0f, -0.0f}) {
            GuardedImage<float> src(300, 7);
            for (std::int64_t i = 0; i < 300 * 7; ++i) {
                src.set(i % 300, i / 300, constant);
            }
            ASSERT_TRUE(imageIs(measured(src, p), [](auto, auto) { return 0.0f; })) << constant;
        }
        GuardedImage<std::uint8_t> bytes(41, 5);
        Rng rng = makeRng("constant");
        bytes.fill(rng, Contents::constant);
        ASSERT_TRUE(imageIs(measured(bytes, p), [](auto, auto) { return 0.0f; }));
    }
}

struct Call {
    const void *src;
    float *dst;
    std::int32_t srcStep, dstStep;
    RoiSize roi;
    Parameters parameters;
    std::uint8_t *buffer;
};

template <class T> void checkStatuses() {
    GuardedImage<T> src(9, 4);
    GuardedImage<float> dst(9, 4);
    GuardedBuffer scratch(100000);
    Rng rng = makeRng("statuses");
    src.fill(rng, Contents::random);
    constexpr std::int64_t srcRow = 9 * sizeof(T);
    Faults<Call> faults;
    faults.nulls(&Call::src, &Call::dst, &Call::buffer).empty(&Call::roi);
    faults.shortSteps(srcRow, &Call::srcStep).shortSteps(36, &Call::dstStep);
    faults.unevenSteps(srcRow, sizeof(T), &Call::srcStep).unevenSteps(36, 4, &Call::dstStep);
    faults.values(StatusBadArgument, &Call::parameters, {{2, 3, 3}, {2, 5, 3}});
    faults.values(StatusBadSize, &Call::parameters, {{MinEigenValSobel, 4, 3}, {MinEigenValSobel, 3, 4}});
    const auto call = [](const Call &c) {
        return measure(static_cast<const T *>(c.src), c.srcStep, c.dst, c.dstStep, c.roi, c.parameters, c.buffer);
    };
    const Call good{src.data(),    dst.data(), src.step(), dst.step(), src.roi(), {MinEigenValSobel, 3, 3},
                    scratch.data()};
    expectFaultOrder<Call>(good, faults, call, [&] { return dst.bytes(); });
    Call scharr = good;
    scharr.parameters = {MinEigenValScharr, 5, 3};
    EXPECT_EQ(call(scharr), StatusBadSize);
}

TEST(MinEigenVal, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>();
    checkStatuses<float>();
}

// The planes of all steps and the largest scratch of the filters behind them, which is the low-pass filter's, or the
// wider derivative's of a 32f source.
TEST(MinEigenVal, ScratchSizes) {
    for (const std::int32_t width : {1, 16, 17, 641}) {
        const std::int32_t w16 = (width + 15) / 16 * 16, height = 31;
        const auto expectSize = [&](auto function, std::int32_t aperture, std::int32_t block, std::int32_t want) {
            std::int32_t size = -1;
            ASSERT_EQ(function(RoiSize{width, height}, aperture, block, &size), StatusOk);
            EXPECT_EQ(size, want) << width << " " << aperture << " " << block;
        };
        const std::int32_t pipeline3 = 96 * 3 + 96 + 32 * 3 + 32, pipeline5 = 96 * 5 + 96 + 32 * 5 + 32;
        const std::int32_t lowpass3 = 84 * w16 + 376 + pipeline3, lowpass5 = 100 * w16 + 424 + pipeline5;
        const std::int32_t planes8u = 16 * w16 * height + 224, planes32f = 20 * w16 * height + 224;
        for (const std::int32_t aperture : {3, 5}) {
            expectSize(rvxiMinEigenValGetBufferSize_8u32f_C1R, aperture, 3, lowpass3 + planes8u);
            expectSize(rvxiMinEigenValGetBufferSize_8u32f_C1R, aperture, 5, lowpass5 + planes8u);
        }
        const std::int32_t derivative3 = lowpass3 + 64, derivative5 = lowpass5 + 64;
        expectSize(rvxiMinEigenValGetBufferSize_32f_C1R, 3, 3, derivative3 + planes32f);
        expectSize(rvxiMinEigenValGetBufferSize_32f_C1R, 3, 5, std::max(lowpass5, derivative3) + planes32f);
        expectSize(rvxiMinEigenValGetBufferSize_32f_C1R, 5, 3, derivative5 + planes32f);
        expectSize(rvxiMinEigenValGetBufferSize_32f_C1R, 5, 5, derivative5 + planes32f);
    }
    for (const auto function : {rvxiMinEigenValGetBufferSize_8u32f_C1R, rvxiMinEigenValGetBufferSize_32f_C1R}) {
        std::int32_t size = -1;
        EXPECT_EQ(function({5, 5}, 4, 3, &size), StatusBadSize);
        EXPECT_EQ(function({5, 5}, 3, 4, &size), StatusBadSize);
        EXPECT_EQ(size, -1);
    }
}

} // namespace
