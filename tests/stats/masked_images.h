// What the tests of norms, means and extrema share: images under masks, any member called by one form, the selected
// pixels in order, and sums of doubles in the lanes that are the contract.
#pragma once

#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <functional>
#include <tuple>

namespace support {

// What a member takes: one image or two, a mask, a channel of three.
struct Shape {
    bool two, masked, ofThree;
};
inline constexpr Shape wholeC1{false, false, false}, wholeC3{false, false, true}, maskedC1{false, true, false},
    maskedC3{false, true, true}, pairC1{true, true, false}, pairC3{true, true, true};

template <class T> struct MaskedCall {
    const T *a;
    std::int32_t aStep;
    const T *b;
    std::int32_t bStep;
    const std::uint8_t *mask;
    std::int32_t maskStep;
    RoiSize roi;
    std::int32_t channel;
};

template <Shape shape, class T, class F, class... Out>
StatusCode callMember(const F &function, const MaskedCall<T> &c, Out *...out) {
    const auto when = [](auto condition, auto... arguments) {
        if constexpr (decltype(condition)::value) {
            return std::tuple(arguments...);
        } else {
            return std::tuple();
        }
    };
    return std::apply(function,
                      std::tuple_cat(std::tuple(c.a, c.aStep), when(std::bool_constant<shape.two>(), c.b, c.bStep),
                                     when(std::bool_constant<shape.masked>(), c.mask, c.maskStep), std::tuple(c.roi),
                                     when(std::bool_constant<shape.ofThree>(), c.channel), std::tuple(out...)));
}

template <class T, class... Out> struct MaskedMember {
    const char *name;
    Shape shape;
    std::function<StatusCode(const MaskedCall<T> &, Out *...)> call;
};

// Every type of an operation whose members have one shape: check(member).
template <Shape shape, class... Out, class Check> auto memberOf(const Check &check) {
    return [=](auto type, auto function, const char *name) {
        using T = decltype(type);
        const auto call = [=](const MaskedCall<T> &c, Out *...out) { return callMember<shape>(function, c, out...); };
        check(MaskedMember<T, Out...>{name, shape, call});
    };
}
#define EACH_TYPE(ROW, OPERATION, LAYOUT)                                                                              \
    (ROW)(std::uint8_t{}, OPERATION##_8u_##LAYOUT, #OPERATION "_8u_" #LAYOUT);                                         \
    (ROW)(std::int8_t{}, OPERATION##_8s_##LAYOUT, #OPERATION "_8s_" #LAYOUT);                                          \
    (ROW)(std::uint16_t{}, OPERATION##_16u_##LAYOUT, #OPERATION "_16u_" #LAYOUT);                                      \
    (ROW)(float{}, OPERATION##_32f_##LAYOUT, #OPERATION "_32f_" #LAYOUT)

// Two images and a mask. `salt` chooses contents and mask, which image is padded, the guards, and how many bytes every
// element is misaligned by.
template <class T> struct MaskedScene {
    std::int64_t width, height;
    int channels, channel;
    GuardedImage<T> a, b;
    GuardedImage<std::uint8_t> mask;

    MaskedScene(Rng &rng, std::int64_t w, std::int64_t h, std::int64_t salt, bool ofThree)
        : width(w), height(h), channels(ofThree ? 3 : 1), channel(ofThree ? static_cast<int>(1 + salt % 3) : 1),
          a(w * channels, h, layout<T>(salt, 1)), b(w * channels, h, layout<T>(salt, 2)),
          mask(w, h, layout<std::uint8_t>(salt, 3)) {
        fill(a, rng, salt);
        fill(b, rng, salt);
        const std::int64_t kind = salt / 7 % 4, only = uniform(rng, 0, w * h - 1);
        for (std::int64_t i = 0; i < w * h; ++i) { // everything, a part, nearly everything, one pixel
            constexpr std::uint8_t on[] = {1, 255, 2, 128};
            const std::int64_t roll = uniform(rng, 0, 31);
            const bool set =
                kind == 0 || (kind == 1 && roll > 12) || (kind == 2 && roll > 1) || (kind == 3 && i == only);
            mask.set(i % w, i / w, set ? on[roll % 4] : std::uint8_t{0});
        }
        if (salt % 2 != 0) { // what is not selected must not matter: the worst that there is
            for (std::int64_t i = 0; i < w * h * channels; ++i) {
                const std::int64_t x = i % (w * channels), y = i / (w * channels);
                if (mask.at(x / channels, y) == 0) {
                    constexpr T worst = std::numeric_limits<T>::has_quiet_NaN ? std::numeric_limits<T>::quiet_NaN()
                                                                              : std::numeric_limits<T>::max();
                    a.set(x, y, worst);
                    b.set(x, y, i % 2 != 0 ? worst : std::numeric_limits<T>::lowest());
                }
            }
        }
    }

    MaskedCall<T> call() const {
        return {a.data(), a.step(), b.data(), b.step(), mask.data(), mask.step(), a.roi(channels), channel};
    }
    // visit(x, y, pixel of a, pixel of b) in scan order.
    template <class Visit> void forSelected(bool masked, const Visit &visit) const {
        for (std::int64_t y = 0; y < height; ++y) {
            for (std::int64_t x = 0; x < width; ++x) {
                if (!masked || mask.at(x, y) != 0) {
                    visit(x, y, a.at(x * channels + channel - 1, y), b.at(x * channels + channel - 1, y));
                }
            }
        }
    }

private:
    template <class E> static typename GuardedImage<E>::Layout layout(std::int64_t salt, int image) {
        const std::int64_t padding = salt % 5 == image ? 1 + salt % 3 : 0;
        return {.padding = padding * static_cast<std::int64_t>(sizeof(E)),
                .guard = salt / 2 % 2 != 0 ? Guard::before : Guard::behind,
                .skew = salt / 4 % 2 != 0 ? salt % 4 : 0};
    }
    static void fill(GuardedImage<T> &image, Rng &rng, std::int64_t salt) {
        image.fill(rng, allContents[salt % 5]);
        if constexpr (std::is_same_v<T, float>) {
            // Exponents so far apart that every order of a sum gives another one.
            for (std::int64_t i = 0; salt % 5 < 2 && i < image.width() * image.height(); ++i) {
                const float unit = randomValue<float>(rng, Contents::random);
                image.set(i % image.width(), i / image.width(),
                          std::ldexp(unit, static_cast<int>(uniform(rng, -40, 40))));
            }
        }
    }
};

// Widths 1 .. 66 in a few rows, then large odd ones; tight small images too.
template <class T, class Check> void forScenes(const char *name, bool ofThree, const Check &check) {
    Rng rng = makeRng(name);
    for (std::int64_t salt = 1; salt <= 132; ++salt) {
        const std::int64_t width = salt <= 66 ? salt : 133 - salt;
        const MaskedScene<T> scene(rng, width, 1 + salt % 4, salt, ofThree);
        ASSERT_NO_FATAL_FAILURE(check(scene)) << name << " width " << width << " salt " << salt;
    }
    for (std::int64_t salt = 0; salt < 12; ++salt) {
        constexpr std::int64_t widths[] = {16, 1283, 640, 96}, heights[] = {40, 3, 5, 17};
        const MaskedScene<T> scene(rng, widths[salt % 4], heights[salt % 4], salt, ofThree);
        ASSERT_NO_FATAL_FAILURE(check(scene)) << name << " width " << scene.width << " salt " << salt;
    }
}

struct PlainLanes {
    double lane[16] = {};

    double total() {
        for (int half = 8; half >= 1; half /= 2) {
            for (int i = 0; i < half; ++i) {
                lane[i] += lane[i + half];
            }
        }
        return lane[0];
    }
};

// The faults of a member in the order of its checks; `results` are its outputs, none of which is written.
template <class T, class... Out>
void checkMaskedStatuses(const MaskedMember<T, Out...> &member, const Out &...results) {
    struct Args {
        MaskedCall<T> call;
        std::tuple<Out *...> out;
    };
    SCOPED_TRACE(member.name);
    const Shape shape = member.shape;
    Rng rng = makeRng("statuses");
    const MaskedScene<T> scene(rng, 9, 2, 0, shape.ofThree);
    constexpr auto size = static_cast<std::int32_t>(sizeof(T));
    const std::int32_t row = 9 * size * (shape.ofThree ? 3 : 1);
    std::tuple<Out...> outputs(results...);
    std::vector<Fault<Args>> faults{{"null first", StatusNullPointer, [](auto &c) { c.call.a = nullptr; }}};
    const auto add = [&](bool applies, const char *fault, StatusCode status, std::function<void(Args &)> apply) {
        if (applies) {
            faults.push_back({fault, status, std::move(apply)});
        }
    };
    add(shape.two, "null second", StatusNullPointer, [](auto &c) { c.call.b = nullptr; });
    add(shape.masked, "null mask", StatusNullPointer, [](auto &c) { c.call.mask = nullptr; });
    [&]<std::size_t... i>(std::index_sequence<i...>) {
        (add(true, "null result", StatusNullPointer, [](auto &c) { std::get<i>(c.out) = nullptr; }), ...);
    }
    (std::index_sequence_for<Out...>());
    add(true, "no width", StatusBadSize, [](auto &c) { c.call.roi.width = 0; });
    add(true, "no height", StatusBadSize, [](auto &c) { c.call.roi.height = -1; });
    add(true, "short first step", StatusBadStep, [=](auto &c) { c.call.aStep = row - 1; });
    add(shape.two, "short second step", StatusBadStep, [=](auto &c) { c.call.bStep = row - 1; });
    add(shape.masked, "short mask step", StatusBadStep, [=](auto &c) { c.call.maskStep = 8; });
    add(true, "row beyond 32 bits", StatusBadStep, [](auto &c) { c.call.roi.width = INT32_MAX; });
    add(size > 1, "odd first step", StatusStepNotMultiple, [=](auto &c) { c.call.aStep = row + size / 2; });
    add(shape.two && size > 1, "odd second step", StatusStepNotMultiple,
        [=](auto &c) { c.call.bStep = row + size / 2; });
    add(shape.ofThree, "channel 0", StatusBadChannel, [](auto &c) { c.call.channel = 0; });
    add(shape.ofThree, "channel 4", StatusBadChannel, [](auto &c) { c.call.channel = 4; });
    const auto pointers = [](auto &...out) { return std::tuple(&out...); };
    expectFaultOrder<Args>(
        {scene.call(), std::apply(pointers, outputs)}, faults,
        [&](const Args &c) { return std::apply([&](auto *...out) { return member.call(c.call, out...); }, c.out); },
        [&] {
            const auto *bytes = reinterpret_cast<const std::uint8_t *>(&outputs);
            return std::vector<std::uint8_t>(bytes, bytes + sizeof outputs);
        });
}

} // namespace support
