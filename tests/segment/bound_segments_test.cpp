// Bounds of segments against their definition.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

namespace {

using namespace support;

template <class T> using Member = StatusCode (*)(T *, std::int32_t, RoiSize, T, NormKind);
template <class T> Member<T> member;
template <> const Member<std::uint8_t> member<std::uint8_t> = rvxiBoundSegments_8u_C1IR;
template <> const Member<std::uint16_t> member<std::uint16_t> = rvxiBoundSegments_16u_C1IR;
template <> const Member<std::int32_t> member<std::int32_t> = rvxiBoundSegments_32s_C1IR;

template <class T> void checkLabels() {
    Rng rng = makeRng("bounds", sizeof(T));
    int salt = 0;
    const auto run = [&](std::int64_t width, std::int64_t height, NormKind norm, int percentOfEdges) {
        const Guard guard = salt % 2 != 0 ? Guard::before : Guard::behind;
        GuardedImage<T> image(width, height,
                              {.padding = static_cast<std::int64_t>(sizeof(T)) * (salt % 3),
                               .guard = guard,
                               .skew = salt % 5 == 4 ? 1 : 0});
        std::vector<T> labels;
        T label = 3;
        for (std::int64_t i = 0; i < width * height; ++i) {
            if (uniform(rng, 0, 99) < percentOfEdges) {
                label = static_cast<T>(randomValue<T>(rng, i % 2 != 0 ? Contents::small : Contents::nearMax));
            }
            labels.push_back(label);
            image.set(i % width, i / width, label);
        }
        const auto at = [&](std::int64_t x, std::int64_t y) { return labels[static_cast<std::size_t>(y * width + x)]; };
        ASSERT_EQ(member<T>(image.data(), image.step(), image.roi(), T{77}, norm), StatusOk);
        ASSERT_TRUE(imageIs(image,
                            [&](std::int64_t x, std::int64_t y) {
                                const auto differs = [&](std::int64_t u, std::int64_t v) {
                                    return u >= 0 && u < width && v < height && at(u, v) != at(x, y);
                                };
                                bool edge = differs(x + 1, y) || differs(x, y + 1);
                                if (norm == NormInf) {
                                    edge = edge || differs(x - 1, y + 1) || differs(x + 1, y + 1);
                                }
                                return edge ? T{77} : at(x, y);
                            }))
            << "norm " << norm;
        ++salt;
    };
    constexpr std::int64_t block = 32 / sizeof(T);
    for (const NormKind norm : {NormInf, NormL1}) {
        for (std::int64_t width = 1; width <= 4 * block + 1; ++width) {
            for (const int percent : {2, 12, 60}) {
                ASSERT_NO_FATAL_FAILURE(run(width, 1 + salt % 5, norm, percent));
            }
        }
        ASSERT_NO_FATAL_FAILURE(run(1, 50, norm, 20));
        ASSERT_NO_FATAL_FAILURE(run(251, 33, norm, 3));
    }
}

TEST(BoundSegments, Definition8u) { checkLabels<std::uint8_t>(); }
TEST(BoundSegments, Definition16u) { checkLabels<std::uint16_t>(); }
TEST(BoundSegments, Definition32s) { checkLabels<std::int32_t>(); }

template <class T> struct Call {
    T *srcDst;
    std::int32_t step;
    RoiSize roi;
    NormKind norm;
};

template <class T> void checkStatuses() {
    using C = Call<T>;
    GuardedImage<T> image(9, 6);
    Faults<C> faults;
    faults.nulls(&C::srcDst).empty(&C::roi).shortSteps(9 * sizeof(T), &C::step);
    faults.unevenSteps(9 * sizeof(T), sizeof(T), &C::step).values(StatusBadArgument, &C::norm, {NormL2, -1});
    expectFaultOrder<C>(
        {image.data(), image.step(), image.roi(), NormL1}, faults,
        [](const C &c) { return member<T>(c.srcDst, c.step, c.roi, T{7}, c.norm); }, [&] { return image.bytes(); });
}

TEST(BoundSegments, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::uint8_t>();
    checkStatuses<std::uint16_t>();
    checkStatuses<std::int32_t>();
}

} // namespace
