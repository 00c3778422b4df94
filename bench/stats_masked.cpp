// Benchmarks of norms, means, deviations and extrema under masks. One pixel in 256 is not selected.
#include "harness.h"

namespace {

inline int ofThree(const std::string &name) { return name.find("C3") != std::string::npos ? 3 : 1; }

// The second channel, where there are three.
template <class T, class F, class... Out>
void add(bench::Registry &rows, const std::string &name, F function, Out... results) {
    using P = const T *;
    using I = std::int32_t;
    using M = const std::uint8_t *;
    constexpr bool two = std::is_invocable_v<F, P, I, P, I, M, I, RoiSize, Out *...> ||
                         std::is_invocable_v<F, P, I, P, I, M, I, RoiSize, I, Out *...>;
    constexpr bool masked = two || std::is_invocable_v<F, P, I, M, I, RoiSize, Out *...> ||
                            std::is_invocable_v<F, P, I, M, I, RoiSize, I, Out *...>;
    const int channels = ofThree(name);
    const double bytes = (two ? 2 : 1) * static_cast<double>(sizeof(T)) * channels + (masked ? 1 : 0);
    rows.add(name, bytes, [=](RoiSize roi) {
        auto a = bench::image<T>(roi, channels), b = bench::image<T>(roi, channels, 2);
        auto mask = bench::image<std::uint8_t>(roi, 1, 3);
        return [=]() mutable {
            const auto call = [&](auto... arguments) {
                if constexpr (std::is_invocable_v<F, decltype(arguments)..., RoiSize, Out *...>) {
                    function(arguments..., roi, &results...);
                } else {
                    function(arguments..., roi, 2, &results...);
                }
            };
            if constexpr (two) {
                call(P{a->data}, a->step, P{b->data}, b->step, M{mask->data}, mask->step);
            } else if constexpr (masked) {
                call(P{a->data}, a->step, M{mask->data}, mask->step);
            } else {
                call(P{a->data}, a->step);
            }
        };
    });
}

#define EACH_TYPE(OPERATION, LAYOUT, ...)                                                                              \
    add<std::uint8_t>(rows, #OPERATION "_8u_" #LAYOUT, rvxi##OPERATION##_8u_##LAYOUT, __VA_ARGS__);                    \
    add<std::int8_t>(rows, #OPERATION "_8s_" #LAYOUT, rvxi##OPERATION##_8s_##LAYOUT, __VA_ARGS__);                     \
    add<std::uint16_t>(rows, #OPERATION "_16u_" #LAYOUT, rvxi##OPERATION##_16u_##LAYOUT, __VA_ARGS__);                 \
    add<float>(rows, #OPERATION "_32f_" #LAYOUT, rvxi##OPERATION##_32f_##LAYOUT, __VA_ARGS__);
#define EACH_NORM(OPERATION)                                                                                           \
    EACH_TYPE(OPERATION##_Inf, C1MR, 0.0)                                                                              \
    EACH_TYPE(OPERATION##_L1, C1MR, 0.0)                                                                               \
    EACH_TYPE(OPERATION##_L2, C1MR, 0.0)                                                                               \
    EACH_TYPE(OPERATION##_Inf, C3CMR, 0.0)                                                                             \
    EACH_TYPE(OPERATION##_L1, C3CMR, 0.0)                                                                              \
    EACH_TYPE(OPERATION##_L2, C3CMR, 0.0)
#define EACH_LAYOUT(OPERATION, ...)                                                                                    \
    EACH_TYPE(OPERATION, C1R, __VA_ARGS__)                                                                             \
    EACH_TYPE(OPERATION, C1MR, __VA_ARGS__)                                                                            \
    EACH_TYPE(OPERATION, C3CR, __VA_ARGS__)                                                                            \
    EACH_TYPE(OPERATION, C3CMR, __VA_ARGS__)

const bench::Family family([](bench::Registry &rows) {
    EACH_NORM(Norm)
    EACH_NORM(NormDiff)
    EACH_NORM(NormRel)
    EACH_TYPE(Mean, C1MR, 0.0)
    EACH_TYPE(Mean, C3CMR, 0.0)
    EACH_LAYOUT(Mean_StdDev, 0.0, 0.0)
    EACH_LAYOUT(MinMaxIndx, 0.0, 0.0, Point2i{}, Point2i{})
});

} // namespace
