// Inpainting against the formulas pixel by pixel, to the bit, and against what it is for: ramps, membranes.
#include "segment/plain_march.h"
#include "segment/shapes.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include <rvxcv.h>

#include <algorithm>
#include <numbers>

namespace {

using namespace support;
using Values = std::vector<float>;

std::int64_t scratchSize(std::int64_t w, std::int64_t h, std::int64_t r) {
    return 20 * (w + 2 * r + 8) * (h + 2 * r) + 4 * w * h + 8 * (2 * r + 8) * (2 * r + 2) + 256;
}

// One channel; what is under the hole is never looked at.
class PlainInpaint {
public:
    PlainInpaint(const Picture &hole, Values values, bool bytes)
        : w_(hole.width), h_(hole.height), bytes_(bytes), known_(hole.set.size()), u_(std::move(values)),
          gx_(u_.size()), gy_(u_.size()), march_(plainMarch(w_, h_, [&](std::int64_t i) { return isHole(hole, i); })) {
        for (std::int64_t i = 0; i < w_ * h_; ++i) {
            known_[at(i)] = isHole(hole, i) ? 0 : 1;
        }
    }

    Values fillByMarch(std::int64_t radius) {
        for (std::int64_t i = 0; i < w_ * h_; ++i) {
            gx_[at(i)] = difference(u_, i % w_, i / w_, 1, 0);
            gy_[at(i)] = difference(u_, i % w_, i / w_, 0, 1);
        }
        for (const std::int64_t p : march_.order) {
            fill(p % w_, p / w_, radius);
        }
        return u_;
    }

    Values fillByDiffusion() {
        for (const std::int64_t p : march_.order) {
            u_[at(p)] = mean(p, [&](std::int64_t q) { return known_[at(q)] != 0; });
            known_[at(p)] = 1;
        }
        const double steps = 3 * std::ceil(double(march_.time[at(march_.order.back())])) + 1;
        const auto omega = static_cast<float>(2 / (1 + std::sin(std::numbers::pi / (steps + 1))));
        for (int i = 0; i < 4 * steps; ++i) {
            for (const std::int64_t p : march_.order) {
                if ((p % w_ + p / w_) % 2 == i % 2) {
                    const float m = mean(p, [](std::int64_t) { return true; });
                    u_[at(p)] = std::fma(omega, m - u_[at(p)], u_[at(p)]);
                }
            }
        }
        return u_;
    }

private:
    static std::size_t at(std::int64_t i) { return static_cast<std::size_t>(i); }
    static bool isHole(const Picture &hole, std::int64_t i) { return hole.set[at(i)] != 0; }
    bool inside(std::int64_t x, std::int64_t y) const { return x >= 0 && x < w_ && y >= 0 && y < h_; }
    bool knows(std::int64_t x, std::int64_t y) const { return inside(x, y) && known_[at(y * w_ + x)] != 0; }

    float difference(const Values &f, std::int64_t x, std::int64_t y, int dx, int dy) const {
        const std::int64_t p = y * w_ + x, away = dy * w_ + dx;
        const bool before = knows(x - dx, y - dy), behind = knows(x + dx, y + dy);
        return before && behind ? (f[at(p + away)] - f[at(p - away)]) * 0.5f
               : behind         ? f[at(p + away)] - f[at(p)]
               : before         ? f[at(p)] - f[at(p - away)]
                                : 0;
    }

    void fill(std::int64_t x, std::int64_t y, std::int64_t radius) {
        const float nx = difference(march_.time, x, y, 1, 0), ny = difference(march_.time, x, y, 0, 1);
        const std::size_t p = at(y * w_ + x);
        float sums[4][8] = {}; // weights, values, gradients
        for (std::int64_t dy = -radius; dy <= radius; ++dy) {
            for (std::int64_t dx = -radius; dx <= radius; ++dx) {
                const std::int64_t squared = dx * dx + dy * dy;
                if (squared == 0 || squared > radius * radius || !knows(x + dx, y + dy)) {
                    continue;
                }
                const std::size_t q = at((y + dy) * w_ + x + dx);
                const auto rx = static_cast<float>(-dx), ry = static_cast<float>(-dy);
                const auto il = static_cast<float>(1 / std::sqrt(double(squared)));
                const auto il2 = static_cast<float>(1.0 / double(squared));
                const float ryny = ry * ny, along = std::fabs(std::fma(rx, nx, ryny)) * il;
                const float w = (std::max(along, 1e-6f) * il2) / (1 + std::fabs(march_.time[p] - march_.time[q]));
                const float v = std::fma(gx_[q], rx, std::fma(gy_[q], ry, u_[q]));
                const auto lane = at((dx + radius) % 8);
                sums[0][lane] += w;
                sums[1][lane] = std::fma(w, v, sums[1][lane]);
                sums[2][lane] = std::fma(w, gx_[q], sums[2][lane]);
                sums[3][lane] = std::fma(w, gy_[q], sums[3][lane]);
            }
        }
        for (auto &sum : sums) {
            for (std::size_t away = 4; away > 0; away /= 2) {
                for (std::size_t i = 0; i < away; ++i) {
                    sum[i] += sum[i + away];
                }
            }
        }
        u_[p] = sums[1][0] / sums[0][0];
        u_[p] = bytes_ ? std::clamp(u_[p], 0.0f, 255.0f) : u_[p];
        gx_[p] = sums[2][0] / sums[0][0];
        gy_[p] = sums[3][0] / sums[0][0];
        known_[p] = 1;
    }

    template <class Counts> float mean(std::int64_t p, const Counts &counts) const {
        int n = 0;
        const auto value = [&](std::int64_t dx, std::int64_t dy) {
            const std::int64_t q = p + dy * w_ + dx;
            if (!inside(p % w_ + dx, p / w_ + dy) || !counts(q)) {
                return 0.0f;
            }
            ++n;
            return u_[at(q)];
        };
        const float l = value(-1, 0), r = value(1, 0), a = value(0, -1), b = value(0, 1);
        return ((l + r) + (a + b)) * (1.0f / static_cast<float>(n));
    }

    std::int64_t w_, h_;
    bool bytes_;
    std::vector<char> known_;
    Values u_, gx_, gy_;
    PlainMarch march_;
};

StatusCode call(const std::uint8_t *src, std::int32_t srcStep, const GuardedImage<std::uint8_t> &mask,
                std::uint8_t *dst, std::int32_t dstStep, int channels, std::int32_t radius, InpaintMethod method,
                std::uint8_t *buffer) {
    return (channels == 1 ? rvxiInpaint_8u_C1MR : rvxiInpaint_8u_C3MR)(src, srcStep, mask.data(), mask.step(), dst,
                                                                       dstStep, mask.roi(), radius, method, buffer);
}
StatusCode call(const float *src, std::int32_t srcStep, const GuardedImage<std::uint8_t> &mask, float *dst,
                std::int32_t dstStep, int, std::int32_t radius, InpaintMethod method, std::uint8_t *buffer) {
    return rvxiInpaint_32f_C1MR(src, srcStep, mask.data(), mask.step(), dst, dstStep, mask.roi(), radius, method,
                                buffer);
}

// With scratch of exactly the promised size, at any address; with an odd `salt` in place.
template <class T>
GuardedImage<T> inpainted(GuardedImage<T> &src, const Picture &hole, int channels, std::int32_t radius,
                          InpaintMethod method, int salt = 0) {
    const Guard guard = salt % 4 < 2 ? Guard::behind : Guard::before;
    GuardedImage<std::uint8_t> mask(hole.width, hole.height, {.padding = salt % 5, .guard = guard});
    for (std::int64_t i = 0; i < hole.width * hole.height; ++i) {
        const bool set = hole.at(i % hole.width, i / hole.width);
        mask.set(i % hole.width, i / hole.width, static_cast<std::uint8_t>(set ? 1 + i * 29 % 255 : 0));
    }
    const std::int64_t skew = guard == Guard::before ? salt % 8 : 0;
    GuardedBuffer scratch(scratchSize(hole.width, hole.height, radius) + skew, guard);
    scratch.scribble(static_cast<std::uint8_t>(salt));
    GuardedImage<T> dst(src.width(), src.height(), {.padding = 4 * (salt % 3), .guard = guard});
    EXPECT_EQ(
        call(src.data(), src.step(), mask, dst.data(), dst.step(), channels, radius, method, scratch.data() + skew),
        StatusOk);
    if (salt % 2 != 0) {
        EXPECT_EQ(
            call(src.data(), src.step(), mask, src.data(), src.step(), channels, radius, method, scratch.data() + skew),
            StatusOk);
        EXPECT_TRUE(imageIs(src, [&](auto x, auto y) { return dst.at(x, y); })) << "in place";
    }
    return dst;
}

template <class T>
void expectPlain(const Picture &hole, int channels, Contents contents, std::int32_t radius, InpaintMethod method,
                 int salt) {
    SCOPED_TRACE(testing::Message() << hole.width << "x" << hole.height << ", radius " << radius << ", case " << salt);
    GuardedImage<T> src(hole.width * channels, hole.height, {.padding = 4 * (salt % 2)});
    Rng rng = makeRng("inpaint", static_cast<std::uint64_t>(salt));
    src.fill(rng, contents);
    std::vector<Values> want;
    const auto holes = std::count(hole.set.begin(), hole.set.end(), 1);
    for (int c = 0; c < channels; ++c) {
        Values values;
        for (std::int64_t i = 0; i < hole.width * hole.height; ++i) {
            values.push_back(static_cast<float>(src.at(i % hole.width * channels + c, i / hole.width)));
        }
        if (holes > 0 && holes < hole.width * hole.height) {
            PlainInpaint plain(hole, values, std::is_same_v<T, std::uint8_t>);
            values = method == InpaintMarch ? plain.fillByMarch(radius) : plain.fillByDiffusion();
        }
        want.push_back(values);
    }
    const auto got = inpainted(src, hole, channels, radius, method, salt);
    ASSERT_TRUE(imageIs(got, [&](std::int64_t x, std::int64_t y) {
        const float value =
            want[static_cast<std::size_t>(x % channels)][static_cast<std::size_t>(y * hole.width + x / channels)];
        return std::is_same_v<T, float> ? value : std::clamp(std::nearbyint(value), 0.0f, 255.0f);
    }));
}

void expectPlainMembers(const Picture &hole, std::int32_t radius, int salt) {
    for (const InpaintMethod method : {InpaintMarch, InpaintDiffusion}) {
        ASSERT_NO_FATAL_FAILURE(
            expectPlain<float>(hole, 1, allContents[static_cast<std::size_t>(salt % 5)], radius, method, salt));
        ASSERT_NO_FATAL_FAILURE(
            expectPlain<std::uint8_t>(hole, 1 + 2 * (salt % 2), Contents::random, radius, method, salt / 2));
    }
}

TEST(Inpaint, EverySmallSizeAndShape) {
    int salt = 0;
    for (std::int64_t width = 1; width <= 35; ++width) {
        for (const Shape shape : allShapes) {
            Rng rng = makeRng("hole", static_cast<std::uint64_t>(salt));
            const Picture hole = draw(shape, width, 1 + salt % 9, rng);
            ASSERT_NO_FATAL_FAILURE(expectPlainMembers(hole, 1 + salt % 6, salt));
            ++salt;
        }
    }
}

TEST(Inpaint, EveryRadius) {
    Rng rng = makeRng("radius");
    for (int radius = 1; radius <= 100; radius += radius < 20 ? 1 : 16) {
        Picture hole = draw(Shape::crowded, 41 + radius % 9, 23, rng);
        hole.set[static_cast<std::size_t>(radius)] = 0;
        ASSERT_NO_FATAL_FAILURE(expectPlainMembers(hole, radius, radius));
    }
}

// Scratches and spots with much between them, and next to nothing known.
TEST(Inpaint, SparseAndLargeHoles) {
    Picture scratches{331, 83, std::vector<char>(331 * 83)}, island = scratches, pinhole = scratches;
    for (std::int64_t y = 5; y < 60; ++y) {
        std::fill_n(scratches.set.begin() + y * 331 + y, 3, 1);
    }
    std::fill_n(scratches.set.begin() + 70 * 331 + 240, 91, 1);
    std::fill(island.set.begin(), island.set.end(), 1);
    island.set[20 * 331 + 100] = 0;
    pinhole.set[82 * 331 + 330] = 1;
    int salt = 0;
    for (const Picture &hole : {scratches, island, pinhole}) {
        ASSERT_NO_FATAL_FAILURE(expectPlainMembers(hole, 5, ++salt));
    }
}

// Products that vanish keep their sign in all sums.
TEST(Inpaint, NegativeZero) {
    Picture hole{15, 15, std::vector<char>(15 * 15)};
    hole.set[7 * 15 + 7] = 1;
    GuardedImage<float> src(15, 15);
    for (std::int64_t i = 0; i < 15 * 15; ++i) {
        src.set(i % 15, i / 15, -std::numeric_limits<float>::denorm_min());
    }
    EXPECT_TRUE(sameValue(inpainted(src, hole, 1, 5, InpaintMarch).at(7, 7), -0.0f));
}

constexpr std::int64_t side = 90;
Picture disc(double radius) {
    Picture hole{side, side, std::vector<char>(side * side)};
    for (std::int64_t i = 0; i < side * side; ++i) {
        hole.set[static_cast<std::size_t>(i)] = std::hypot(i % side - 45.0, i / side - 44.0) <= radius ? 1 : 0;
    }
    return hole;
}

TEST(Inpaint, RestoresRamps) {
    Picture rectangle{side, side, std::vector<char>(side * side)}, scratch = rectangle;
    for (std::int64_t y = 2; y < 60; ++y) {
        std::fill_n(rectangle.set.begin() + y * side + 30, 58, 1);
        std::fill_n(scratch.set.begin() + y * side + 10 + y, 3, 1);
    }
    const auto ramp = [](std::int64_t x, std::int64_t y) {
        return 100.0f + 0.8f * static_cast<float>(x) - 0.6f * static_cast<float>(y);
    };
    for (const InpaintMethod method : {InpaintMarch, InpaintDiffusion}) {
        for (const Picture &hole : {rectangle, disc(30), scratch}) {
            GuardedImage<float> floats(side, side);
            GuardedImage<std::uint8_t> bytes(side, side);
            for (std::int64_t i = 0; i < side * side; ++i) {
                const std::int64_t x = i % side, y = i / side;
                floats.set(x, y, hole.at(x, y) ? NAN : ramp(x, y));
                bytes.set(x, y, hole.at(x, y) ? std::uint8_t{7} : static_cast<std::uint8_t>(std::lrint(ramp(x, y))));
            }
            const auto gotFloats = inpainted(floats, hole, 1, 5, method);
            const auto gotBytes = inpainted(bytes, hole, 1, 5, method);
            for (std::int64_t i = 0; i < side * side; ++i) {
                const std::int64_t x = i % side, y = i / side;
                ASSERT_NEAR(gotFloats.at(x, y), ramp(x, y), 0.01) << x << " " << y << " method " << method;
                if (hole.set == scratch.set) {
                    ASSERT_NEAR(gotBytes.at(x, y), ramp(x, y), 2);
                }
            }
        }
    }
}

TEST(Inpaint, DiffusionSettles) {
    for (const bool lonelyPixels : {false, true}) {
        Picture hole = disc(35);
        if (lonelyPixels) {
            for (const std::int64_t i : {45 * side + 45, 30 * side + 40, 60 * side + 52}) {
                hole.set[static_cast<std::size_t>(i)] = 0;
            }
        }
        GuardedImage<float> src(side, side);
        float low = 255, high = 0;
        Rng rng = makeRng("membrane");
        for (std::int64_t i = 0; i < side * side; ++i) {
            const auto value = static_cast<float>(uniform(rng, 0, 255));
            src.set(i % side, i / side, value);
            if (!hole.at(i % side, i / side)) {
                low = std::min(low, value);
                high = std::max(high, value);
            }
        }
        const auto got = inpainted(src, hole, 1, 1, InpaintDiffusion);
        for (std::int64_t y = 1; y < side - 1; ++y) {
            for (std::int64_t x = 1; x < side - 1; ++x) {
                if (hole.at(x, y)) {
                    const float mean = (got.at(x - 1, y) + got.at(x + 1, y) + got.at(x, y - 1) + got.at(x, y + 1)) / 4;
                    ASSERT_NEAR(got.at(x, y), mean, lonelyPixels ? 0.03 : 0.002);
                    ASSERT_TRUE(got.at(x, y) > low - 0.01f && got.at(x, y) < high + 0.01f);
                }
            }
        }
    }
}

struct Call {
    const void *src;
    std::int32_t srcStep;
    const std::uint8_t *mask;
    std::int32_t maskStep;
    void *dst;
    std::int32_t dstStep;
    RoiSize roi;
    std::int32_t radius;
    InpaintMethod method;
    std::uint8_t *buffer;
};

template <class T, class Function> void expectStatuses(Function function, int channels) {
    constexpr std::int64_t width = 9, height = 5;
    const auto rowBytes = width * channels * static_cast<std::int64_t>(sizeof(T));
    GuardedImage<T> src(width * channels, height), dst(width * channels, height);
    GuardedImage<std::uint8_t> mask(width, height);
    GuardedBuffer buffer(scratchSize(width, height, 100));
    Faults<Call> faults;
    faults.nulls(&Call::src, &Call::mask, &Call::dst, &Call::buffer).empty(&Call::roi);
    faults.shortSteps(rowBytes, &Call::srcStep, &Call::dstStep).shortSteps(width, &Call::maskStep);
    faults.unevenSteps(rowBytes, sizeof(T), &Call::srcStep, &Call::dstStep);
    faults.values(StatusBadArgument, &Call::method, {-1, 2}).values(StatusOutOfRange, &Call::radius, {0, -3, 101});
    expectFaultOrder<Call>(
        {src.data(), src.step(), mask.data(), mask.step(), dst.data(), dst.step(), mask.roi(), 100, 1, buffer.data()},
        faults,
        [&](const Call &c) {
            return function(static_cast<const T *>(c.src), c.srcStep, c.mask, c.maskStep, static_cast<T *>(c.dst),
                            c.dstStep, c.roi, c.radius, c.method, c.buffer);
        },
        [&] { return dst.bytes(); });
}

TEST(Inpaint, StatusesInTheOrderOfTheChecks) {
    expectStatuses<std::uint8_t>(rvxiInpaint_8u_C1MR, 1);
    expectStatuses<std::uint8_t>(rvxiInpaint_8u_C3MR, 3);
    expectStatuses<float>(rvxiInpaint_32f_C1MR, 1);
    for (const auto query :
         {rvxiInpaintGetBufferSize_8u_C1MR, rvxiInpaintGetBufferSize_8u_C3MR, rvxiInpaintGetBufferSize_32f_C1MR}) {
        std::int32_t size = -1;
        EXPECT_EQ(query({0, 3}, 0, &size), StatusBadSize);
        EXPECT_EQ(query({40000, 40000}, 0, &size), StatusOutOfRange);
        EXPECT_EQ(query({3, 3}, 101, &size), StatusOutOfRange);
        EXPECT_EQ(size, -1);
        for (const std::int32_t radius : {1, 5, 100}) {
            ASSERT_EQ(query({641, 479}, radius, &size), StatusOk);
            EXPECT_EQ(size, scratchSize(641, 479, radius));
        }
    }
}

} // namespace
