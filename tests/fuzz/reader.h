// Numbers out of a fuzzer's bytes. A zero byte always means the most ordinary choice, and behind the end come zeros:
// short inputs are sensible calls, and whatever a mutation does to a byte changes one decision alone.
#pragma once

#include "rvxcv.h"

#include <bit>
#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <type_traits>

namespace fuzz {

class Reader {
public:
    Reader(const std::uint8_t *data, std::size_t size) : data_(data), size_(size) {}

    bool atEnd() const { return at_ >= size_; }
    std::uint8_t byte() { return atEnd() ? std::uint8_t{0} : data_[at_++]; }
    std::uint32_t word() {
        std::uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            value = value << 8 | byte();
        }
        return value;
    }

    // Any value of the type: small ones, powers of two and their neighbours, ends of the range, and plain bits.
    template <class T> T any() {
        if constexpr (std::is_floating_point_v<T>) {
            return static_cast<T>(anyReal());
        } else if constexpr (sizeof(T) == 1) {
            return static_cast<T>(byte());
        } else {
            return static_cast<T>(anyInteger());
        }
    }

    // One of the values that a function takes; now and then any other.
    template <class T> T oneOf(std::initializer_list<T> usual) {
        const std::uint8_t choice = byte();
        return choice < rare ? usual.begin()[choice % usual.size()] : any<T>();
    }

    // Within lo..hi (at most 224 values apart), now and then the neighbour of an end, or any other.
    std::int32_t within(std::int32_t lo, std::int32_t hi) {
        const std::uint8_t choice = byte();
        if (choice < 224) {
            return lo + choice % (hi - lo + 1);
        }
        return choice < 232 ? lo - 1 : choice < rare ? hi + 1 : any<std::int32_t>();
    }

    // A real number of the range in 240 steps, now and then any other.
    float real(float lo, float hi) {
        const std::uint8_t choice = byte();
        return choice < rare ? lo + (hi - lo) * static_cast<float>(choice) / (rare - 1) : any<float>();
    }

    // A border of one of the kinds, often with some of the flags for sides in memory.
    BorderKind border(std::initializer_list<BorderKind> kinds) {
        const BorderKind kind = oneOf(kinds);
        const std::uint8_t flags = byte();
        return flags < 128 ? kind : kind | (flags << 1 & 0xf0);
    }
    // Sizes of masks.
    RoiSize mask() {
        const std::int32_t most = byte() % 8 == 7 ? 24 : 7;
        const std::int32_t width = within(1, most);
        return {width, within(1, most)};
    }

    // Sizes of images: up to 96 x 64, mostly flat, some very wide, and now and then nonsense.
    RoiSize roi() {
        const std::uint8_t kind = byte(), w = byte(), h = byte();
        RoiSize roi = {1 + (w + 16) % 96, 1 + (h + 8) % (w % 8 == 7 ? 64 : 20)};
        if (kind >= rare) {
            (kind % 2 == 0 ? roi.width : roi.height) = anyInteger();
            if (kind % 4 == 3) {
                roi.width = anyInteger();
            }
        } else if (kind >= 220) {
            roi = {1 + w * 16, 1 + h % 4};
        }
        return roi;
    }

private:
    static constexpr std::uint8_t rare = 240;

    std::int32_t anyInteger() {
        const std::uint8_t kind = byte();
        const auto power = static_cast<std::int32_t>(1U << (kind & 31));
        switch (kind >> 5) {
        case 0:
        case 1:
            return kind - 24;
        case 2:
            return power;
        case 3:
            return static_cast<std::int32_t>(static_cast<std::uint32_t>(power) - 1);
        case 4:
            return static_cast<std::int32_t>(0U - static_cast<std::uint32_t>(power));
        case 5:
            return (kind & 1) != 0 ? INT32_MAX - (kind & 30) : INT32_MIN + (kind & 30);
        default:
            return static_cast<std::int32_t>(word());
        }
    }

    double anyReal() {
        constexpr double usual[] = {0,       -0.0,     1,    -1,    0.5,   2,   255,
                                    1e9,     -1e9,     1e30, -1e30, 1e-30, 0.1, static_cast<double>(FLT_MAX),
                                    FLT_MIN, -FLT_MAX, 1e-42};
        const std::uint8_t kind = byte();
        if (kind < 64) {
            return usual[kind % std::size(usual)];
        }
        if (kind < 80) {
            return kind % 4 == 0 ? std::numeric_limits<double>::quiet_NaN()
                                 : (kind % 4 == 1 ? -1 : 1) * std::numeric_limits<double>::infinity();
        }
        if (kind < 200) {
            return (kind - 140) / 8.0;
        }
        return static_cast<double>(std::bit_cast<float>(word()));
    }

    const std::uint8_t *data_;
    std::size_t size_, at_ = 0;
};

} // namespace fuzz
