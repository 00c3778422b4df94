// The Gaussian filter against its plainest form, in guarded memory: every member, kernel sizes around the special ones
// and beyond the image, all borders, misaligned images, records and scratch of exactly the promised size.
#include "filter/gauss_members.h"

namespace {

using namespace gauss;

struct Case {
    std::int64_t width, height;
    std::int32_t kernelSize;
    float sigma;
    BorderKind border;
    Contents contents = Contents::random;
};

// What a case differs in beside what it is about.
template <class T> struct Images {
    GuardedImage<T> src, dst;
    std::vector<T> values;

    Images(const Case &c, int channels, Rng &rng)
        : src(c.width * channels, c.height, sourceLayout(c, channels, rng)),
          dst(c.width * channels, c.height,
              {.padding = uniform(rng, 0, 2) * static_cast<std::int64_t>(sizeof(T)),
               .guard = uniform(rng, 0, 3) == 0 ? Guard::before : Guard::behind,
               .skew = uniform(rng, 0, 2) == 0 ? 1 : 0}) {
        src.fill(rng, c.contents);
        for (int i = 0; i < channels; ++i) {
            values.push_back(randomValue<T>(rng, c.contents));
        }
    }

private:
    static typename GuardedImage<T>::Layout sourceLayout(const Case &c, int channels, Rng &rng) {
        const std::int64_t padding = uniform(rng, 0, 3) * static_cast<std::int64_t>(sizeof(T));
        auto layout = marginLayout<T>(c.border, c.kernelSize / 2, padding,
                                      uniform(rng, 0, 3) == 0 ? Guard::before : Guard::behind);
        layout.left *= channels;
        layout.right *= channels;
        layout.skew = uniform(rng, 0, 2) == 0 ? 1 : 0;
        return layout;
    }
};

template <class T> void expectSmoothed(const Images<T> &images, const Case &c, int channels) {
    const auto kernel = plainKernel<T>(c.kernelSize, c.sigma);
    const std::vector<T> want = plainSmooth(images.src, channels, kernel, c.border, images.values);
    ASSERT_TRUE(imageIs(images.dst, [&](std::int64_t x, std::int64_t y) {
        return want[static_cast<std::size_t>(y * images.dst.width() + x)];
    }));
}

template <class T> void compare(const Case &c, int channels, Rng &rng) {
    SCOPED_TRACE(testing::Message() << c.width << "x" << c.height << ", " << c.kernelSize << " taps, sigma " << c.sigma
                                    << ", border " << c.border << ", contents " << static_cast<int>(c.contents)
                                    << ", channels " << channels);
    Images<T> images(c, channels, rng);
    const RoiSize roi = images.src.roi(channels);
    Record<T> record(roi, c.kernelSize, c.border, channels, c.sigma, &rng);
    ASSERT_EQ(record.status, StatusOk);
    const auto before = record.contents();
    pipeline::OddScratch scratch(Record<T>::bytes(roi, c.kernelSize, channels, true), rng);
    pipeline::Guarded<T> values(images.values);
    ASSERT_EQ(Type<T>::member(channels)({images.src.data(), images.src.step(), images.dst.data(), images.dst.step(),
                                         roi, values.data(), record.get(), scratch.data()}),
              StatusOk);
    expectSmoothed(images, c, channels);
    ASSERT_TRUE(scratch.intactBehind());
    ASSERT_EQ(record.contents(), before);

    if constexpr (std::is_same_v<T, float>) {
        if (channels == 1) { // the one-call variant
            std::int32_t bytes = -1;
            ASSERT_EQ(rvxiFilterGaussGetBufferSize_32f_C1R(roi, c.kernelSize, &bytes), StatusOk);
            pipeline::OddScratch buffer(bytes, rng);
            ASSERT_EQ(rvxiFilterGaussBorder_32f_C1R(images.src.data(), images.src.step(), images.dst.data(),
                                                    images.dst.step(), roi, c.kernelSize, c.border, buffer.data(),
                                                    c.sigma, images.values[0]),
                      StatusOk);
            expectSmoothed(images, c, 1);
            ASSERT_TRUE(buffer.intactBehind());
        }
    }
}

// From a narrow bell to a box.
float someSigma(Rng &rng, std::int32_t kernelSize) {
    const float sigmas[] = {0.3f, 0.6f, 1.0f, 1.5f, static_cast<float>(kernelSize) / 5, 1000.0f};
    return sigmas[uniform(rng, 0, std::ssize(sigmas) - 1)];
}

template <class M> class Gaussian : public testing::Test {};
template <class T_, int channels_> struct Member {
    using T = T_;
    static constexpr int channels = channels_;
};
using Members =
    testing::Types<Member<std::uint8_t, 1>, Member<std::uint8_t, 3>, Member<std::uint16_t, 1>, Member<std::uint16_t, 3>,
                   Member<std::int16_t, 1>, Member<std::int16_t, 3>, Member<float, 1>, Member<float, 3>>;
TYPED_TEST_SUITE(Gaussian, Members);

TYPED_TEST(Gaussian, EveryWidth) {
    Rng rng = makeRng("gauss widths", TypeParam::channels);
    const std::vector<BorderKind> borders = bordersOf({0, 1});
    for (const std::int64_t width : pipeline::testWidths()) {
        for (const std::int32_t k : {3, 5, 7, 9, 15, 31}) {
            const Case c{width,
                         uniform(rng, 1, width > 100 ? 5 : 11),
                         k,
                         someSigma(rng, k),
                         borders[static_cast<std::size_t>(uniform(rng, 0, std::ssize(borders) - 1))],
                         allContents[uniform(rng, 0, std::ssize(allContents) - 1)]};
            compare<typename TypeParam::T>(c, TypeParam::channels, rng);
            if (testing::Test::HasFatalFailure()) {
                return;
            }
        }
    }
}

// Every border with every set of sides in memory, in regions smaller than the kernel and larger ones.
TYPED_TEST(Gaussian, EveryBorder) {
    Rng rng = makeRng("gauss borders", TypeParam::channels);
    for (const BorderKind border : bordersOf({0, 1})) {
        for (const RoiSize roi : {RoiSize{1, 1}, {2, 1}, {1, 2}, {3, 2}, {4, 5}, {17, 3}, {21, 16}, {50, 9}}) {
            for (const std::int32_t k : {3, 5, 11, 21}) {
                const Contents contents = allContents[uniform(rng, 0, std::ssize(allContents) - 1)];
                compare<typename TypeParam::T>({roi.width, roi.height, k, someSigma(rng, k), border, contents},
                                               TypeParam::channels, rng);
            }
        }
        if (testing::Test::HasFatalFailure()) {
            return;
        }
    }
}

// The whole buffer in use: few rows and many, around the height at which it stops growing.
TYPED_TEST(Gaussian, EveryHeight) {
    Rng rng = makeRng("gauss heights", TypeParam::channels);
    for (std::int64_t height = 1; height <= 24; ++height) {
        for (const std::int32_t k : {3, 5, 7, 13, 41}) {
            for (const BorderKind border : {0, 1, 0 | 16, 1 | 32, 6}) {
                compare<typename TypeParam::T>({uniform(rng, 1, 40), height, k, someSigma(rng, k), border},
                                               TypeParam::channels, rng);
            }
        }
        if (testing::Test::HasFatalFailure()) {
            return;
        }
    }
}

// Kernels far longer than the image, whose integer coefficients are mostly rounded away or up.
TYPED_TEST(Gaussian, LongKernels) {
    Rng rng = makeRng("gauss long", TypeParam::channels);
    for (const auto &[k, sigma] : {std::pair{63, 20.0f}, std::pair{255, 1000.0f}}) {
        for (const BorderKind border : {BorderReplicate, BorderConstant}) {
            compare<typename TypeParam::T>(
                {uniform(rng, 1, 50), uniform(rng, 1, 3), k, sigma, border, Contents::nearMax}, TypeParam::channels,
                rng);
        }
    }
}

// So narrow a bell that the middle is the whole kernel: 4096 or 32768, which must stay positive.
TYPED_TEST(Gaussian, NarrowBells) {
    using T = typename TypeParam::T;
    Rng rng = makeRng("gauss narrow", TypeParam::channels);
    for (const float sigma : {0.05f, 0.2f, 0.22f, 0.25f}) {
        for (const Contents contents : {Contents::random, Contents::nearMax}) {
            for (const BorderKind border : {0, 1, 6}) {
                compare<T>({37, 6, 5, sigma, border, contents}, TypeParam::channels, rng);
            }
        }
    }
    if constexpr (!std::is_same_v<T, float>) {
        ASSERT_EQ(plainKernel<T>(3, 0.05f), (std::vector<std::uint16_t>{0, 1 << Type<T>::shift, 0}));
    }
}

} // namespace
