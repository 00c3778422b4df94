// Inpainting against the formulas pixel by pixel, to the bit, and against what it is for: ramps, membranes.
#include "segment/plain_march.h"
#include "support/guarded.h"
#include "support/status_table.h"

#include <functional>
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
        : w_(hole.width), h_(hole.height), bytes_(bytes), known_(hole.set), u_(std::move(values)), gx_(u_.size()),
          gy_(u_.size()), march_(plainMarch(hole)) {
        std::transform(known_.begin(), known_.end(), known_.begin(), std::logical_not<>());
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
            u_[at(p)] = mean(p % w_, p / w_);
            known_[at(p)] = 1;
        }
        const double last = march_.order.empty() ? 0 : march_.time[at(march_.order.back())];
        const double steps = 3 * std::ceil(last) + 1;
        const auto omega = static_cast<float>(2 / (1 + std::sin(std::numbers::pi / (steps + 1))));
        for (int i = 0; i < 4 * steps; ++i) {
            for (const std::int64_t p : march_.order) {
                if ((p % w_ + p / w_) % 2 == i % 2) {
                    u_[at(p)] = std::fma(omega, mean(p % w_, p / w_) - u_[at(p)], u_[at(p)]);
                }
            }
        }
        return u_;
    }

private:
    static std::size_t at(std::int64_t i) { return static_cast<std::size_t>(i); }
    bool knows(std::int64_t x, std::int64_t y) const {
        return x >= 0 && x < w_ && y >= 0 && y < h_ && known_[at(y * w_ + x)] != 0;
    }

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
                const std::size_t q = at((y + dy) * w_ + x + dx), lane = at((dx + radius) % 8);
                const auto rx = static_cast<float>(-dx), ry = static_cast<float>(-dy);
                const auto il = static_cast<float>(1 / std::sqrt(double(squared)));
                const float ryny = ry * ny, along = std::fabs(std::fma(rx, nx, ryny)) * il;
                const float w = (std::max(along, 1e-6f) * static_cast<float>(1.0 / double(squared))) /
                                (1 + std::fabs(march_.time[p] - march_.time[q]));
                const float v = std::fma(gx_[q], rx, std::fma(gy_[q], ry, u_[q]));
                sums[0][lane] += w;
                for (const auto &[sum, term] : {std::pair{1, v}, {2, gx_[q]}, {3, gy_[q]}}) {
                    sums[sum][lane] = std::fma(w, term, sums[sum][lane]);
                }
            }
        }
        for (auto &sum : sums) {
            for (std::size_t away = 4, i = 0; away > 0; i = i + 1 < away ? i + 1 : (away /= 2, 0)) {
                sum[i] += sum[i + away];
            }
        }
        u_[p] = sums[1][0] / sums[0][0];
        u_[p] = bytes_ ? std::clamp(u_[p], 0.0f, 255.0f) : u_[p];
        gx_[p] = sums[2][0] / sums[0][0];
        gy_[p] = sums[3][0] / sums[0][0];
        known_[p] = 1;
    }

    float mean(std::int64_t x, std::int64_t y) const {
        int n = 0;
        const auto value = [&](std::int64_t u, std::int64_t v) {
            n += knows(u, v) ? 1 : 0;
            return knows(u, v) ? u_[at(v * w_ + u)] : 0;
        };
        const float l = value(x - 1, y), r = value(x + 1, y), a = value(x, y - 1), b = value(x, y + 1);
        return ((l + r) + (a + b)) * (1.0f / static_cast<float>(n));
    }

    std::int64_t w_, h_;
    bool bytes_;
    std::vector<char> known_;
    Values u_, gx_, gy_;
    PlainMarch march_;
};

// With scratch of exactly the promised size, at any address; with an odd `salt` in place, too.
template <class T>
GuardedImage<T> inpainted(GuardedImage<T> &src, const Picture &hole, std::int32_t radius, InpaintMethod method,
                          int salt = 0) {
    const Guard guard = salt % 4 < 2 ? Guard::behind : Guard::before;
    GuardedImage<std::uint8_t> mask(hole.width, hole.height, {.padding = salt % 5, .guard = guard});
    for (std::int64_t i = 0; i < hole.width * hole.height; ++i) {
        const bool set = hole.at(i % hole.width, i / hole.width);
        mask.set(i % hole.width, i / hole.width, static_cast<std::uint8_t>(set ? 1 + i * 29 % 255 : 0));
    }
    const std::int64_t skew = guard == Guard::before ? salt % 8 : 0;
    GuardedBuffer scratch(scratchSize(hole.width, hole.height, radius) + skew, guard);
    scratch.spoil(static_cast<std::uint8_t>(salt));
    const auto member = [&] {
        if constexpr (std::is_same_v<T, float>) {
            return rvxiInpaint_32f_C1MR;
        } else {
            return src.width() == hole.width ? rvxiInpaint_8u_C1MR : rvxiInpaint_8u_C3MR;
        }
    }();
    const auto fill = [&](GuardedImage<T> &dst) {
        return member(src.data(), src.step(), mask.data(), mask.step(), dst.data(), dst.step(), mask.roi(), radius,
                      method, scratch.data() + skew);
    };
    GuardedImage<T> dst(src.width(), src.height(), {.padding = 4 * (salt % 3), .guard = guard});
    EXPECT_EQ(fill(dst), StatusOk);
    if (salt % 2 != 0) {
        EXPECT_EQ(fill(src), StatusOk);
        EXPECT_TRUE(imageIs(src, [&](auto x, auto y) { return dst.at(x, y); })) << "in place";
    }
    return dst;
}

template <class T>
void expectPlain(const Picture &hole, int channels, Contents contents, std::int32_t radius, InpaintMethod method,
                 int salt) {
    GuardedImage<T> src(hole.width * channels, hole.height, {.padding = 4 * (salt % 2)});
    Rng rng = makeRng("inpaint", static_cast<std::uint64_t>(salt));
    src.fill(rng, contents);
    std::vector<Values> want;
    for (int c = 0; c < channels; ++c) {
        Values values;
        for (std::int64_t i = 0; i < hole.width * hole.height; ++i) {
            values.push_back(static_cast<float>(src.at(i % hole.width * channels + c, i / hole.width)));
        }
        PlainInpaint plain(hole, values, sizeof(T) == 1);
        want.push_back(method == InpaintMarch ? plain.fillByMarch(radius) : plain.fillByDiffusion());
    }
    const auto got = inpainted(src, hole, radius, method, salt);
    ASSERT_TRUE(imageIs(
        got,
        [&](std::int64_t x, std::int64_t y) {
            const float value =
                want[static_cast<std::size_t>(x % channels)][static_cast<std::size_t>(y * hole.width + x / channels)];
            return sizeof(T) == 1 ? std::clamp(std::nearbyint(value), 0.0f, 255.0f) : value;
        }))
        << "radius " << radius << ", method " << method << ", case " << salt;
}

void expectPlainMembers(const Picture &hole, std::int32_t radius, int salt) {
    for (const InpaintMethod method : {InpaintMarch, InpaintDiffusion}) {
        ASSERT_NO_FATAL_FAILURE(
            expectPlain<float>(hole, 1, allContents[static_cast<std::size_t>(salt % 5)], radius, method, salt));
        ASSERT_NO_FATAL_FAILURE(
            expectPlain<std::uint8_t>(hole, 1 + 2 * (salt % 2), Contents::random, radius, method, salt / 2));
    }
}

TEST(Inpaint, EverySizeShapeAndRadius) {
    for (int salt = 0; salt < 560; salt += caseStep()) {
        Rng rng = makeRng("hole", static_cast<std::uint64_t>(salt));
        const Picture hole = draw(allShapes[salt % 15], 1 + salt / 15, 1 + salt % 23, rng);
        ASSERT_NO_FATAL_FAILURE(expectPlainMembers(hole, salt % 8 == 0 ? 1 + salt % 100 : 1 + salt % 13, salt));
    }
}

// Scratches with much between them, next to nothing known, next to nothing missing.
TEST(Inpaint, SparseAndLargeHoles) {
    Picture scratches{231, 83, std::vector<char>(231 * 83)}, pinhole = scratches, island{97, 41, {}};
    for (std::size_t y = 5; y < 60; ++y) {
        scratches.set[y * 232] = scratches.set[y * 232 + 1] = scratches.set[70 * 231 + 100 + y] = 1;
    }
    pinhole.set.back() = 1;
    island.set.assign(97 * 41, 1);
    island.set[20 * 97 + 30] = 0;
    for (const Picture &hole : {scratches, island, pinhole}) {
        ASSERT_NO_FATAL_FAILURE(expectPlainMembers(hole, 5, 1));
    }
}

// A disc is missing in the middle, NaN in its place.
template <class Value> GuardedImage<float> withoutDisc(double radius, InpaintMethod method, const Value &value) {
    Picture hole{80, 80, std::vector<char>(80 * 80)};
    GuardedImage<float> src(80, 80);
    for (std::int64_t i = 0; i < 80 * 80; ++i) {
        const bool missing = std::hypot(i % 80 - 40.0, i / 80 - 40.0) <= radius;
        hole.set[static_cast<std::size_t>(i)] = missing ? 1 : 0;
        src.set(i % 80, i / 80, missing ? NAN : value(i % 80, i / 80));
    }
    return inpainted(src, hole, 5, method);
}

TEST(Inpaint, RestoresRampsAndKeepsSigns) {
    const auto ramp = [](auto x, auto y) { return 100.0f + 0.8f * float(x) - 0.6f * float(y); };
    const auto march = withoutDisc(30, InpaintMarch, ramp), diffusion = withoutDisc(30, InpaintDiffusion, ramp);
    for (std::int64_t i = 0; i < 80 * 80; ++i) {
        ASSERT_NEAR(march.at(i % 80, i / 80), ramp(i % 80, i / 80), 0.01);
        ASSERT_NEAR(diffusion.at(i % 80, i / 80), ramp(i % 80, i / 80), 0.01);
    }
    const auto tiny = [](auto, auto) { return -std::numeric_limits<float>::denorm_min(); }; // products vanish
    EXPECT_TRUE(sameValue(withoutDisc(0, InpaintMarch, tiny).at(40, 40), -0.0f));
}

// Every pixel of the hole is nearly the mean of its neighbours. Known pixels that stand alone in it take longest.
TEST(Inpaint, DiffusionEndsAtMeans) {
    Rng rng = makeRng("membrane");
    for (const bool alone : {false, true}) {
        Picture hole{70, 50, std::vector<char>(70 * 50)};
        GuardedImage<float> src(70, 50);
        for (std::int64_t i = 0; i < 70 * 50; ++i) {
            const std::int64_t x = i % 70, y = i / 70;
            const bool missing = std::hypot(x - 35, y - 25) < 20 && !(alone && x % 7 == 0 && y % 7 == 0);
            hole.set[static_cast<std::size_t>(i)] = missing ? 1 : 0;
            src.set(x, y, static_cast<float>(uniform(rng, 0, 255)));
        }
        const GuardedImage<float> out = inpainted(src, hole, 5, InpaintDiffusion);
        for (std::int64_t i = 0; i < 70 * 50; ++i) {
            const std::int64_t x = i % 70, y = i / 70;
            if (hole.set[static_cast<std::size_t>(i)] != 0) {
                const float mean = (out.at(x - 1, y) + out.at(x + 1, y) + out.at(x, y - 1) + out.at(x, y + 1)) / 4;
                ASSERT_NEAR(out.at(x, y), mean, alone ? 0.03 : 0.002) << x << ", " << y;
                ASSERT_TRUE(out.at(x, y) > -0.01f && out.at(x, y) < 255.01f);
            }
        }
    }
}

template <class T, class Member> void expectStatuses(Member member, std::int64_t channels) {
    using C = MarchCall<T>;
    const std::int64_t rowBytes = 9 * channels * static_cast<std::int64_t>(sizeof(T));
    GuardedImage<T> src(9 * channels, 5), dst(9 * channels, 5);
    GuardedImage<std::uint8_t> mask(9, 5);
    GuardedBuffer buffer(scratchSize(9, 5, 100));
    Faults<C> faults;
    faults.nulls(&C::src, &C::mask, &C::dst, &C::buffer).empty(&C::roi);
    faults.shortSteps(rowBytes, &C::srcStep, &C::dstStep).shortSteps(9, &C::maskStep);
    faults.unevenSteps(rowBytes, sizeof(T), &C::srcStep, &C::dstStep);
    faults.values(StatusBadArgument, &C::method, {-1, 2}).values(StatusOutOfRange, &C::radius, {0, -3, 101});
    const C good{src.data(), src.step(), mask.data(), mask.step(), dst.data(),
                 dst.step(), mask.roi(), 100,         1,           buffer.data()};
    const auto call = [&](const C &c) {
        return member(c.src, c.srcStep, c.mask, c.maskStep, c.dst, c.dstStep, c.roi, c.radius, c.method, c.buffer);
    };
    expectFaultOrder<C>(good, faults, call, [&] { return dst.bytes(); });
}

TEST(Inpaint, StatusesAndSizes) {
    expectStatuses<std::uint8_t>(rvxiInpaint_8u_C1MR, 1);
    expectStatuses<std::uint8_t>(rvxiInpaint_8u_C3MR, 3);
    expectStatuses<float>(rvxiInpaint_32f_C1MR, 1);
    for (const auto query :
         {rvxiInpaintGetBufferSize_8u_C1MR, rvxiInpaintGetBufferSize_8u_C3MR, rvxiInpaintGetBufferSize_32f_C1MR}) {
        std::int32_t size = -1;
        EXPECT_EQ(query({0, 3}, 0, &size), StatusBadSize);
        EXPECT_EQ(query({40000, 40000}, 101, &size), StatusOutOfRange);
        EXPECT_TRUE(query({641, 479}, 7, &size) == StatusOk && size == scratchSize(641, 479, 7));
    }
}

} // namespace
