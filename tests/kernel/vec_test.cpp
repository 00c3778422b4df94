// Partial loads and stores touch exactly the elements they are given, at the very end of mapped memory.
#include "support/guarded.h"

#include "kernel/rows.h"
#include "kernel/vec.h"

namespace {

using namespace support;
using namespace rvxcv;

template <class V> void checkPartial() {
    using T = typename V::Element;
    Rng rng = makeRng("partial", sizeof(T));
    for (int n = 1; n <= V::lanes; ++n) {
        for (const Guard guard : {Guard::behind, Guard::before}) {
            GuardedImage<T> src(n, 1, {.guard = guard}), dst(n, 1, {.guard = guard});
            src.fill(rng, Contents::random);
            const V loaded = load<V>(src.data(), Part{n});
            T lanes[V::lanes];
            store(lanes, loaded);
            for (int i = 0; i < V::lanes; ++i) {
                ASSERT_TRUE(sameValue(lanes[i], i < n ? src.at(i, 0) : T{})) << "lane " << i << " of " << n;
            }
            store(dst.data(), loaded, Part{n});
            ASSERT_TRUE(imageIs(dst, [&](auto x, auto y) { return src.at(x, y); }));

            // In front of other data: nothing behind the n elements changes.
            GuardedImage<T> longer(V::lanes + 3, 1);
            longer.fill(rng, Contents::random);
            const T untouched = longer.at(n, 0), last = longer.at(V::lanes + 2, 0);
            store(longer.data(), loaded, Part{n});
            ASSERT_TRUE(sameValue(longer.at(n, 0), untouched));
            ASSERT_TRUE(sameValue(longer.at(V::lanes + 2, 0), last));
        }
    }
}

TEST(Vec, PartialLoadsAndStores) {
    checkPartial<U8x32>();
    checkPartial<I8x32>();
    checkPartial<U16x16>();
    checkPartial<I16x16>();
    checkPartial<I32x8>();
    checkPartial<F32x8>();
    checkPartial<F64x4>();
}

TEST(Vec, MaskedLoadsAndStoresOfFloats) {
    Rng rng = makeRng("lanes");
    for (int n = 1; n <= 8; ++n) {
        for (const Guard guard : {Guard::behind, Guard::before}) {
            GuardedImage<float> src(n, 1, {.guard = guard}), dst(n, 1, {.guard = guard});
            src.fill(rng, Contents::random);
            const F32x8 loaded = load<F32x8>(src.data(), firstLanes(n));
            store(dst.data(), loaded, firstLanes(n));
            ASSERT_TRUE(imageIs(dst, [&](auto x, auto y) { return src.at(x, y); }));
            float lanes[8], kept[8];
            store(lanes, loaded);
            store(kept, keep(firstLanes(n), splat(3.0f)));
            for (int i = 0; i < 8; ++i) {
                ASSERT_TRUE(sameValue(lanes[i], i < n ? src.at(i, 0) : 0.0f)) << "lane " << i << " of " << n;
                ASSERT_EQ(kept[i], i < n ? 3.0f : 0.0f);
            }
        }
    }
}

TEST(Vec, FloatsAsDoublesAndTheirSum) {
    const float values[8] = {1e30f, -2.5f, 3.25f, 1e-30f, -1e30f, 7.0f, -8.5f, 0.125f};
    double low[4], high[4];
    store(low, widenLow(load<F32x8>(values)));
    store(high, widenHigh(load<F32x8>(values)));
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(low[i], static_cast<double>(values[i]));
        ASSERT_EQ(high[i], static_cast<double>(values[4 + i]));
    }
    const double terms[4] = {1e20, 3.0, -1e20, 0.5};
    ASSERT_EQ(laneSum(load<F64x4>(terms)), 3.5);
}

template <class T> void checkWidening() {
    Rng rng = makeRng("widen", sizeof(T) + (std::is_signed_v<T> ? 16 : 0));
    for (int n = 1; n <= 8; ++n) {
        GuardedImage<T> src(n, 1);
        src.fill(rng, Contents::nearMax);
        float lanes[8];
        store(lanes, n == 8 ? loadF32(src.data(), Full{}) : loadF32(src.data(), Part{n}));
        for (int i = 0; i < n; ++i) {
            ASSERT_EQ(lanes[i], static_cast<float>(src.at(i, 0)));
        }
    }
}

TEST(Vec, WideningLoads) {
    checkWidening<std::uint8_t>();
    checkWidening<std::int8_t>();
    checkWidening<std::uint16_t>();
    checkWidening<std::int16_t>();
    checkWidening<float>();
}

struct Mark {
    static constexpr bool rereads = false;
    int *hits;
    int *fullBlocks;

    void operator()(std::ptrdiff_t x, Full) const {
        ++*fullBlocks;
        for (int i = 0; i < 8; ++i) {
            ++hits[x + i];
        }
    }
    void operator()(std::ptrdiff_t x, Part part) const {
        for (int i = 0; i < part.n; ++i) {
            ++hits[x + i];
        }
    }
};

TEST(Rows, EveryPixelOnceOrOverlapped) {
    for (int width = 1; width < 70; ++width) {
        std::vector<int> once(static_cast<std::size_t>(width)), covered(static_cast<std::size_t>(width));
        int blocks = 0;
        walkRow<8>(width, Mark{once.data(), &blocks});
        walkRow<8, Tail::overlap>(width, Mark{covered.data(), &blocks});
        for (int x = 0; x < width; ++x) {
            ASSERT_EQ(once[static_cast<std::size_t>(x)], 1) << x << " of " << width;
            ASSERT_GE(covered[static_cast<std::size_t>(x)], 1) << x << " of " << width;
        }
    }
}

} // namespace
