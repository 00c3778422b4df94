// Three interleaved channels: every span, taken apart and put together, at the very edges of mapped memory.
#include "support/guarded.h"

#include "kernel/channels.h"

namespace {

using namespace support;
using namespace rvxcv;

template <class V> void checkSpan(int n, Guard guard, auto span) {
    using T = typename V::Element;
    // Every element differs from its neighbours and from the others of its lane.
    GuardedImage<T> src(3 * n, 1, {.guard = guard, .skew = 1}), dst(3 * n, 1, {.guard = guard, .skew = 1});
    for (int e = 0; e < 3 * n; ++e) {
        src.set(e, 0, static_cast<T>(e + 7));
    }
    const ThreeChannels<V> channels = loadChannels<V>(src.data(), span);
    T lanes[3][V::lanes];
    store(lanes[0], channels.c0);
    store(lanes[1], channels.c1);
    store(lanes[2], channels.c2);
    for (int x = 0; x < V::lanes; ++x) {
        for (int c = 0; c < 3; ++c) {
            ASSERT_EQ(lanes[c][x], x < n ? static_cast<T>(3 * x + c + 7) : T{})
                << "channel " << c << ", pixel " << x << " of " << n;
        }
    }
    storeChannels(dst.data(), channels, span);
    ASSERT_TRUE(imageIs(dst, [&](auto x, auto y) { return src.at(x, y); }));

    // One channel alone, of an image that ends with its last element.
    GuardedImage<T> alone(3 * n - 2, 1, {.guard = guard});
    for (int e = 0; e < 3 * n - 2; ++e) {
        alone.set(e, 0, src.at(e, 0));
    }
    store(lanes[1], loadChannel<V>(alone.data(), span));
    for (int x = 0; x < V::lanes; ++x) {
        ASSERT_EQ(lanes[1][x], x < n ? src.at(3 * x, 0) : T{}) << "one channel, pixel " << x << " of " << n;
    }

    // In the middle of other data: nothing before or behind the span changes.
    GuardedImage<T> longer(3 * V::lanes + 6, 1);
    for (int e = 0; e < longer.width(); ++e) {
        longer.set(e, 0, T{5});
    }
    storeChannels(byteOffset(longer.data(), 3 * static_cast<std::ptrdiff_t>(sizeof(T))), channels, span);
    ASSERT_TRUE(imageIs(longer, [&](auto x, auto) { return x < 3 || x >= 3 * n + 3 ? T{5} : src.at(x - 3, 0); }));
}

template <class V> void checkChannels() {
    for (const Guard guard : {Guard::behind, Guard::before}) {
        for (int n = 1; n <= V::lanes; ++n) {
            checkSpan<V>(n, guard, Part{n});
        }
        checkSpan<V>(V::lanes, guard, Full{});
    }
}

TEST(Channels, ApartAndTogetherInEverySpan) {
    checkChannels<U8x32>();
    checkChannels<I8x32>();
    checkChannels<U16x16>();
    checkChannels<I16x16>();
    checkChannels<I32x8>();
    checkChannels<F32x8>();
}

} // namespace
