// Which kernel a small window has: a chain in registers (chain_window.h), or loads down the columns (small_window.h).
#include "morph/small_window.h"
#include "morph/chain_window.h"
#include "morph/rank_filter.h"

namespace rvxcv {
namespace {

// Whether there is a chain for the window, and it has run.
template <class T, class Op, class Result, int channels, int width, int height>
bool inChain(const MorphTask<T> &task, Window window, Plane<const T> other) {
    using Kernel = ChainWindow<T, Op, width, height, channels, Result>;
    if constexpr (Kernel::exists) {
        if (Kernel::applies(task, window)) {
            Kernel(task, window, other).run();
            return true;
        }
    }
    return false;
}

template <class T, class Op, class Result, int channels>
bool inChains(const MorphTask<T> &task, Window window, Plane<const T> other) {
    constexpr bool both = std::is_same_v<Op, LeastAndMost>;
    if constexpr (std::is_same_v<Result, Extremum>) { // rows of 2 to 16 pixels
        const auto pixels = static_cast<int>(std::min<std::int64_t>(window.right - window.left + 1, 17));
        bool done = false;
        withConstant<16>(pixels, [&]<int width>(std::integral_constant<int, width>) {
            if constexpr (width > 1) {
                done = inChain<T, Op, Result, channels, width, 1>(task, window, other);
            }
        });
        if (done) {
            return true;
        }
    }
    if constexpr (both) { // of one extremum alone, three pixels are as fast from loads
        if (inChain<T, Op, Result, channels, 3, 3>(task, window, other)) {
            return true;
        }
    }
    // A row's two ends cost about as much as 100 bytes; the rows under a window stay in the first-level cache.
    constexpr std::int64_t shortest = 512, longest = 6 * 1024;
    const std::int64_t rowBytes = task.roi.width * task.pixelBytes();
    if ((both || (rowBytes >= shortest && rowBytes <= longest)) &&
        inChain<T, Op, Result, channels, 5, 5>(task, window, other)) {
        return true;
    }
    return inChain<T, Op, Result, channels, 7, 7>(task, window, other);
}

} // namespace

template <class T, class Op, class Result>
bool filterSmallWindow(const MorphTask<T> &task, Window window, Plane<const T> other) {
    window = trimmed(window, task.roi, task.border);
    if (inChains<T, Op, Result, 1>(task, window, other)) {
        return true;
    }
    if constexpr (sizeof(T) != 2) { // which have one channel
        if (inChains<T, Op, Result, 3>(task, window, other) || inChains<T, Op, Result, 4>(task, window, other)) {
            return true;
        }
    }
    if constexpr (!std::is_same_v<Op, LeastAndMost>) {
        if (SmallWindow<T, Op, 3, Result>::applies(task, window)) {
            SmallWindow<T, Op, 3, Result>(task, other).run();
            return true;
        }
        if (SmallWindow<T, Op, 5, Result>::applies(task, window)) {
            SmallWindow<T, Op, 5, Result>(task, other).run();
            return true;
        }
    }
    return false;
}

#define INSTANTIATE(T)                                                                                                 \
    template bool filterSmallWindow<T, Minimum, Extremum>(const MorphTask<T> &, Window, Plane<const T>);               \
    template bool filterSmallWindow<T, Maximum, Extremum>(const MorphTask<T> &, Window, Plane<const T>);               \
    template bool filterSmallWindow<T, Minimum, ExtremumLessOther>(const MorphTask<T> &, Window, Plane<const T>);      \
    template bool filterSmallWindow<T, Maximum, OtherLessExtremum>(const MorphTask<T> &, Window, Plane<const T>);      \
    template bool filterSmallWindow<T, LeastAndMost, MostLessLeast>(const MorphTask<T> &, Window, Plane<const T>);
INSTANTIATE(std::uint8_t)
INSTANTIATE(std::uint16_t)
INSTANTIATE(std::int16_t)
INSTANTIATE(float)
#undef INSTANTIATE

} // namespace rvxcv
