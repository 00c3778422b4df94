// Canny edges against the method written out plainly: whole planes, one pixel at a time.
#include "support/guarded.h"
#include "support/status_table.h"

#include "rvxcv.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>

namespace {

using namespace support;

// --------------------------------------------------------------------------------------------------- reference

enum class Rule { integers, floats, euclidean }; // the 16s entry and L1, the 32f entry, L2 of integers

struct Reference {
    int width, height;
    std::vector<double> dx, dy;

    Reference(int w, int h)
        : width(w), height(h), dx(static_cast<std::size_t>(w) * static_cast<std::size_t>(h)), dy(dx.size()) {}

    std::size_t at(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }

    std::vector<std::uint8_t> edges(Rule rule, float low, float high) const {
        std::vector<float> m(dx.size());
        for (std::size_t i = 0; i < m.size(); ++i) {
            if (rule == Rule::integers) {
                m[i] = static_cast<float>(std::fabs(dx[i]) + std::fabs(dy[i]));
                m[i] = m[i] > std::trunc(low) ? m[i] : 0.0f;
            } else {
                m[i] = rule == Rule::floats
                           ? std::fabs(static_cast<float>(dx[i])) + std::fabs(static_cast<float>(dy[i]))
                           : std::sqrt(static_cast<float>(static_cast<std::int64_t>(dx[i] * dx[i] + dy[i] * dy[i])));
                m[i] = m[i] >= low ? m[i] : 0.0f;
            }
        }
        const auto value = [&](int x, int y) {
            return x < 0 || y < 0 || x >= width || y >= height ? 0.0f : m[at(x, y)];
        };
        std::vector<std::uint8_t> candidate(m.size()), out(m.size());
        std::vector<std::pair<int, int>> stack;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const float v = value(x, y);
                if (!(v > 0)) {
                    continue;
                }
                const double gx = dx[at(x, y)], gy = dy[at(x, y)], ax = std::fabs(gx), ay = std::fabs(gy);
                bool horizontal, vertical;
                if (rule == Rule::floats) {
                    horizontal = static_cast<float>(ax) > 2.4142137f * static_cast<float>(ay);
                    vertical = static_cast<float>(ax) < 0.41421357f * static_cast<float>(ay);
                } else {
                    horizontal = static_cast<float>(ax) > static_cast<float>(2.414213562373095 * ay);
                    vertical = static_cast<float>(ax) < static_cast<float>(0.41421356237309503 * ay);
                }
                bool keeps;
                if (horizontal) {
                    keeps = v > value(x - 1, y) && v >= value(x + 1, y);
                } else if (vertical) {
                    keeps = v > value(x, y - 1) && v >= value(x, y + 1);
                } else if (std::signbit(gx) == std::signbit(gy)) {
                    keeps = v > value(x - 1, y - 1) && v > value(x + 1, y + 1);
                } else {
                    keeps = v > value(x + 1, y - 1) && v > value(x - 1, y + 1);
                }
                candidate[at(x, y)] = keeps;
                if (keeps && v > high) {
                    out[at(x, y)] = 255;
                    stack.emplace_back(x, y);
                }
            }
        }
        while (!stack.empty()) {
            const auto [x, y] = stack.back();
            stack.pop_back();
            for (int v = std::max(y - 1, 0); v <= std::min(y + 1, height - 1); ++v) {
                for (int u = std::max(x - 1, 0); u <= std::min(x + 1, width - 1); ++u) {
                    if (candidate[at(u, v)] && out[at(u, v)] == 0) {
                        out[at(u, v)] = 255;
                        stack.emplace_back(u, v);
                    }
                }
            }
        }
        return out;
    }
};

testing::AssertionResult edgesAre(const GuardedImage<std::uint8_t> &dst, const std::vector<std::uint8_t> &want) {
    return imageIs(dst,
                   [&](std::int64_t x, std::int64_t y) { return want[static_cast<std::size_t>(y * dst.width() + x)]; });
}

GuardedBuffer scratchFor(RoiSize roi) {
    std::int32_t bytes = 0;
    EXPECT_EQ(rvxiCannyGetSize(roi, &bytes), StatusOk);
    GuardedBuffer buffer(bytes);
    buffer.spoil();
    return buffer;
}

// ------------------------------------------------------------------------------------- from derivative images

template <class T, class Function>
void checkDerivatives(Function function, Rule rule, int width, int height, Contents contents, float low, float high,
                      Rng &rng) {
    const auto size = static_cast<std::int64_t>(sizeof(T));
    GuardedImage<T> dx(width, height, {.padding = (width % 3) * size}),
        dy(width, height, {.padding = (height % 2) * size});
    dx.fill(rng, contents);
    dy.fill(rng, contents);
    Reference reference(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            reference.dx[reference.at(x, y)] = dx.at(x, y);
            reference.dy[reference.at(x, y)] = dy.at(x, y);
        }
    }
    GuardedImage<std::uint8_t> dst(width, height, {.padding = 3});
    GuardedBuffer buffer = scratchFor(dst.roi());
    ASSERT_EQ(function(dx.data(), dx.step(), dy.data(), dy.step(), dst.data(), dst.step(), dst.roi(), low, high,
                       buffer.data()),
              StatusOk);
    ASSERT_TRUE(edgesAre(dst, reference.edges(rule, low, high)))
        << width << "x" << height << " low " << low << " high " << high;
}

TEST(Canny, EverySizeMatchesTheMethod) {
    Rng rng = makeRng("canny");
    for (int width = 1; width <= 40; ++width) {
        for (const int height : {1, 2, 3, 7}) {
            for (const Contents contents : {Contents::random, Contents::small, Contents::nearMax}) {
                const float scale = contents == Contents::small ? 1.0f : 20000.0f;
                checkDerivatives<std::int16_t>(rvxiCanny_16s8u_C1R, Rule::integers, width, height, contents,
                                               0.9f * scale, 2.0f * scale, rng);
                const float unit = contents == Contents::small ? 1.0f : contents == Contents::random ? 500.0f : 5e29f;
                checkDerivatives<float>(rvxiCanny_32f8u_C1R, Rule::floats, width, height, contents, unit, 2 * unit,
                                        rng);
            }
        }
    }
    checkDerivatives<std::int16_t>(rvxiCanny_16s8u_C1R, Rule::integers, 333, 101, Contents::random, 15000, 50000, rng);
    checkDerivatives<float>(rvxiCanny_32f8u_C1R, Rule::floats, 333, 101, Contents::random, 400, 1500, rng);
}

TEST(Canny, ThresholdsAreComparedAsNumbers) {
    Rng rng = makeRng("canny thresholds");
    const float infinity = std::numeric_limits<float>::infinity();
    struct Pair {
        float low, high;
    };
    for (const Pair t : {Pair{0, 0}, Pair{0, infinity}, Pair{2.9f, 2.9f}, Pair{3, 3}, Pair{4, 4},
                         Pair{65535.5f, 65535.5f}, Pair{65536, 65536}, Pair{1e20f, 1e30f}, Pair{infinity, infinity},
                         Pair{std::nanf(""), 1}, Pair{0, -std::nanf("")}, Pair{1, std::nanf("")}, Pair{1.5f, 65535}}) {
        for (const Contents contents : {Contents::small, Contents::nearMax}) {
            checkDerivatives<std::int16_t>(rvxiCanny_16s8u_C1R, Rule::integers, 21, 9, contents, t.low, t.high, rng);
            checkDerivatives<float>(rvxiCanny_32f8u_C1R, Rule::floats, 21, 9, Contents::small, t.low, t.high, rng);
        }
    }
}

// Equal magnitudes: the pixel further left or up stays, on a diagonal neither does.
TEST(Canny, Ties) {
    const auto run = [](std::vector<std::int16_t> dx, std::vector<std::int16_t> dy) {
        std::vector<std::uint8_t> dst(9), buffer(1000);
        EXPECT_EQ(rvxiCanny_16s8u_C1R(dx.data(), 6, dy.data(), 6, dst.data(), 3, {3, 3}, 1, 1, buffer.data()),
                  StatusOk);
        return dst;
    };
    const std::vector<std::int16_t> none(9);
    EXPECT_EQ(run({0, 0, 0, 9, 9, 9, 0, 0, 0}, none), (std::vector<std::uint8_t>{0, 0, 0, 255, 0, 0, 0, 0, 0}));
    EXPECT_EQ(run(none, {0, 9, 0, 0, 9, 0, 0, 9, 0}), (std::vector<std::uint8_t>{0, 255, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(run({9, 0, 0, 0, 9, 0, 0, 0, 0}, {9, 0, 0, 0, 9, 0, 0, 0, 0}), std::vector<std::uint8_t>(9));
    EXPECT_EQ(run({0, 0, 9, 0, 9, 0, 0, 0, 0}, {0, 0, -9, 0, -9, 0, 0, 0, 0}), std::vector<std::uint8_t>(9));
}

// The directions of pairs (|dx|, |dy|): the pixel in the middle of a cell has one larger neighbour, to the left or
// above, which suppresses it exactly when the gradient points there.
template <class T, class Function>
void checkDirections(Function function, const std::vector<std::pair<T, T>> &cases, T larger, bool leftwards,
                     const std::function<bool(T, T)> &pointsThere) {
    constexpr int cell = 4, across = 1024;
    const int width = across * cell, height = static_cast<int>((cases.size() + across - 1) / across) * cell;
    const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<T> dx(pixels), dy(pixels);
    const auto at = [&](std::size_t i, int x, int y) {
        return (i / across * cell + static_cast<std::size_t>(y + 1)) * static_cast<std::size_t>(width) +
               i % across * cell + static_cast<std::size_t>(x + 1);
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        std::tie(dx[at(i, 0, 0)], dy[at(i, 0, 0)]) = cases[i];
        const std::size_t neighbour = leftwards ? at(i, -1, 0) : at(i, 0, -1);
        dx[neighbour] = dy[neighbour] = larger;
    }
    std::vector<std::uint8_t> dst(pixels);
    GuardedBuffer buffer = scratchFor({width, height});
    const int step = width * static_cast<int>(sizeof(T));
    ASSERT_EQ(function(dx.data(), step, dy.data(), step, dst.data(), width, {width, height}, 0, 0, buffer.data()),
              StatusOk);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const auto [ax, ay] = cases[i];
        ASSERT_EQ(dst[at(i, 0, 0)], pointsThere(ax, ay) ? 0 : 255) << "dx " << ax << " dy " << ay;
    }
}

// Every |dy| with the |dx| around both thresholds.
TEST(Canny, DirectionsAtTheThresholds) {
    for (const double constant : {2.414213562373095, 0.41421356237309503}) {
        const bool leftwards = constant > 1;
        std::vector<std::pair<std::int16_t, std::int16_t>> cases;
        for (int ay = 1; ay <= 32767; ++ay) {
            const int near = static_cast<int>(constant * ay);
            for (int ax = std::max(near - 1, 0); ax <= near + 2 && ax <= 32767; ++ax) {
                cases.emplace_back(ax, ay);
            }
        }
        checkDirections<std::int16_t>(rvxiCanny_16s8u_C1R, cases, 32767, leftwards, [=](float ax, int ay) {
            const auto product = static_cast<float>(constant * ay);
            return leftwards ? ax > product : ax < product;
        });
    }
}

// The float |dx| at both thresholds and one unit in the last place beside them.
TEST(Canny, FloatDirectionsAtTheThresholds) {
    Rng rng = makeRng("canny directions");
    for (const float constant : {2.4142137f, 0.41421357f}) {
        const bool leftwards = constant > 1;
        std::vector<std::pair<float, float>> cases;
        for (int i = 0; i < 5000; ++i) {
            const float ay = std::fabs(randomValue<float>(rng, Contents::random)) + 1, product = constant * ay;
            for (const float ax : {product, std::nextafter(product, 0.0f), std::nextafter(product, 1e9f)}) {
                cases.emplace_back(ax, ay);
            }
        }
        checkDirections<float>(rvxiCanny_32f8u_C1R, cases, 1e6f, leftwards,
                               [=](float ax, float ay) { return leftwards ? ax > constant * ay : ax < constant * ay; });
    }
}

// Every pixel an edge: the stack is as full as it can be. Also with sides that change the size formula.
TEST(Canny, ThinImagesFullOfEdges) {
    for (const RoiSize roi : {RoiSize{70000, 1}, RoiSize{70000, 2}, RoiSize{1, 70000}, RoiSize{65532, 1},
                              RoiSize{65533, 1}, RoiSize{1, 1}, RoiSize{2, 1}, RoiSize{3, 2}}) {
        const bool wide = roi.width >= roi.height;
        GuardedImage<std::int16_t> dx(roi.width, roi.height), dy(roi.width, roi.height);
        for (int y = 0; y < roi.height; ++y) {
            for (int x = 0; x < roi.width; ++x) {
                dx.set(x, y, static_cast<std::int16_t>(wide ? 0 : -32768));
                dy.set(x, y, static_cast<std::int16_t>(wide ? (y == 0 ? -32768 : 0) : 0));
            }
        }
        GuardedImage<std::uint8_t> dst(roi.width, roi.height);
        GuardedBuffer buffer = scratchFor(roi);
        ASSERT_EQ(rvxiCanny_16s8u_C1R(dx.data(), dx.step(), dy.data(), dy.step(), dst.data(), dst.step(), roi, 10,
                                      32767, buffer.data()),
                  StatusOk);
        EXPECT_TRUE(imageIs(dst, [&](auto, auto y) { return !wide || y == 0 ? 255 : 0; }))
            << roi.width << "x" << roi.height;
    }
}

// A line of weak pixels becomes an edge from wherever its strong pixel is.
TEST(Canny, LinesGrowFromEveryPixel) {
    const RoiSize roi{101, 3};
    GuardedImage<std::int16_t> dx(roi.width, roi.height), dy(roi.width, roi.height);
    GuardedImage<std::uint8_t> dst(roi.width, roi.height);
    GuardedBuffer buffer = scratchFor(roi);
    for (int strong = 0; strong < roi.width; ++strong) {
        for (int y = 0; y < roi.height; ++y) {
            for (int x = 0; x < roi.width; ++x) {
                dx.set(x, y, 0);
                dy.set(x, y, static_cast<std::int16_t>(y != 1 ? 0 : x == strong ? 300 : 100));
            }
        }
        ASSERT_EQ(rvxiCanny_16s8u_C1R(dx.data(), dx.step(), dy.data(), dy.step(), dst.data(), dst.step(), roi, 50, 200,
                                      buffer.data()),
                  StatusOk);
        ASSERT_TRUE(imageIs(dst, [](auto, auto y) { return y == 1 ? 255 : 0; })) << strong;
    }
}

// -------------------------------------------------------------------------------------------- from a picture

struct Setting {
    std::int32_t filter;
    MaskCode mask;
    std::int32_t norm;
};
constexpr Setting settings[] = {{CannyFilterSobel, Mask3x3, CannyNormL1},  {CannyFilterSobel, Mask3x3, CannyNormL2},
                                {CannyFilterSobel, Mask5x5, CannyNormL1},  {CannyFilterSobel, Mask5x5, CannyNormL2},
                                {CannyFilterScharr, Mask3x3, CannyNormL1}, {CannyFilterScharr, Mask3x3, CannyNormL2}};

GuardedBuffer borderScratchFor(RoiSize roi, const Setting &setting) {
    std::int32_t bytes = 0;
    EXPECT_EQ(rvxiCannyBorderGetSize(roi, setting.filter, setting.mask, PixelType8u, &bytes), StatusOk);
    GuardedBuffer buffer(bytes);
    buffer.spoil();
    return buffer;
}

Reference derivatives(const GuardedImage<std::uint8_t> &src, const Setting &setting, BorderKind border,
                      int borderValue) {
    const auto width = static_cast<int>(src.width()), height = static_cast<int>(src.height());
    const auto pixel = [&](int x, int y) -> int {
        const auto inMemory = [&](BorderKind side) { return (border & 15) == BorderInMemory || (border & side) != 0; };
        const bool outX = (x < 0 && !inMemory(BorderInMemoryLeft)) || (x >= width && !inMemory(BorderInMemoryRight));
        const bool outY = (y < 0 && !inMemory(BorderInMemoryTop)) || (y >= height && !inMemory(BorderInMemoryBottom));
        if ((outX || outY) && (border & 15) == BorderConstant) {
            return borderValue;
        }
        return src.at(outX ? std::clamp(x, 0, width - 1) : x, outY ? std::clamp(y, 0, height - 1) : y);
    };
    const std::vector<int> smooth = setting.mask == Mask5x5               ? std::vector<int>{1, 4, 6, 4, 1}
                                    : setting.filter == CannyFilterScharr ? std::vector<int>{3, 10, 3}
                                                                          : std::vector<int>{1, 2, 1};
    const std::vector<int> derive =
        setting.mask == Mask5x5 ? std::vector<int>{-1, -2, 0, 2, 1} : std::vector<int>{-1, 0, 1};
    const int n = static_cast<int>(smooth.size());
    Reference reference(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int j = 0; j < n; ++j) {
                for (int i = 0; i < n; ++i) {
                    const int v = pixel(x + i - n / 2, y + j - n / 2);
                    const auto u = static_cast<std::size_t>(i), w = static_cast<std::size_t>(j);
                    reference.dx[reference.at(x, y)] += derive[u] * smooth[w] * v;
                    reference.dy[reference.at(x, y)] += smooth[u] * derive[w] * v;
                }
            }
        }
    }
    return reference;
}

void checkPicture(int width, int height, const Setting &setting, BorderKind border, float low, float high, Rng &rng) {
    const int reach = setting.mask == Mask5x5 ? 2 : 1;
    const auto margin = [&](BorderKind side) {
        return (border & 15) == BorderInMemory || (border & side) != 0 ? reach : 0;
    };
    GuardedImage<std::uint8_t> src(width, height,
                                   {.padding = width % 3,
                                    .guard = height % 2 != 0 ? Guard::behind : Guard::before,
                                    .left = margin(BorderInMemoryLeft),
                                    .top = margin(BorderInMemoryTop),
                                    .right = margin(BorderInMemoryRight),
                                    .bottom = margin(BorderInMemoryBottom)});
    src.fill(rng, Contents::random);
    GuardedImage<std::uint8_t> dst(width, height, {.padding = 2});
    GuardedBuffer buffer = borderScratchFor(dst.roi(), setting);
    ASSERT_EQ(rvxiCannyBorder_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), dst.roi(), setting.filter,
                                     setting.mask, border, 77, setting.norm, buffer.data(), low, high),
              StatusOk);
    const Rule rule = setting.norm == CannyNormL1 ? Rule::integers : Rule::euclidean;
    ASSERT_TRUE(edgesAre(dst, derivatives(src, setting, border, 77).edges(rule, low, high)))
        << width << "x" << height << " filter " << setting.filter << " mask " << setting.mask << " norm "
        << setting.norm << " border " << border;
}

TEST(CannyBorder, EverySizeFilterNormAndBorder) {
    Rng rng = makeRng("canny border");
    for (const Setting &setting : settings) {
        const float unit = setting.mask == Mask5x5 ? 1500.0f : setting.filter == CannyFilterScharr ? 900.0f : 200.0f;
        for (int width = 1; width <= 35; ++width) {
            for (const int height : {1, 2, 5}) {
                const BorderKind border = width % 3 == 0   ? BorderConstant
                                          : width % 3 == 1 ? BorderReplicate
                                                           : BorderInMemory;
                checkPicture(width, height, setting, border, unit, 2 * unit, rng);
            }
        }
        for (BorderKind flags = 0; flags < 256; flags += 16) {
            checkPicture(11, 6, setting, BorderReplicate | flags, unit, 2 * unit, rng);
            checkPicture(10, 5, setting, BorderConstant | flags, unit, 2 * unit, rng);
        }
        checkPicture(1100, 9, setting, BorderReplicate, unit, 2 * unit, rng);
    }
}

// Steps whose magnitudes, 4 times their height, are the thresholds or beside them; one is higher by 1 further down.
TEST(CannyBorder, ThresholdsAtMagnitudes) {
    GuardedImage<std::uint8_t> src(9, 12), dst(9, 12);
    for (const Setting &setting : {settings[0], settings[1]}) {
        GuardedBuffer buffer = borderScratchFor(dst.roi(), setting);
        for (int height = 1; height < 255; ++height) {
            for (int y = 0; y < 12; ++y) {
                for (int x = 0; x < 9; ++x) {
                    src.set(x, y, static_cast<std::uint8_t>(x < 4 ? 0 : y < 6 ? height : height + 1));
                }
            }
            const auto m = static_cast<float>(4 * height);
            for (const float low : {std::nextafter(m, 0.0f), m, std::nextafter(m, 2000.0f)}) {
                for (const float high : {low, std::nextafter(m + 4, 0.0f), m + 4}) {
                    ASSERT_EQ(rvxiCannyBorder_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), dst.roi(),
                                                     setting.filter, setting.mask, BorderReplicate, 0, setting.norm,
                                                     buffer.data(), low, high),
                              StatusOk);
                    const Rule rule = setting.norm == CannyNormL1 ? Rule::integers : Rule::euclidean;
                    ASSERT_TRUE(edgesAre(dst, derivatives(src, setting, BorderReplicate, 0).edges(rule, low, high)))
                        << "height " << height << " low " << low << " high " << high;
                }
            }
        }
    }
}

// --------------------------------------------------------------------------------------------- sizes, statuses

TEST(Canny, Sizes) {
    std::int32_t size = -1;
    EXPECT_EQ(rvxiCannyGetSize({10, 20}, &size), StatusOk);
    EXPECT_EQ(size, 5 * 12 * 22 + 160 + 160);
    EXPECT_EQ(rvxiCannyGetSize({65532, 1}, &size), StatusOk);
    EXPECT_EQ(size, 5 * 65534 * 3 + 16 * 65532 + 160);
    EXPECT_EQ(rvxiCannyGetSize({65533, 1}, &size), StatusOk);
    EXPECT_EQ(size, 9 * 65535 * 3 + 16 * 65533 + 160);
    EXPECT_EQ(rvxiCannyBorderGetSize({10, 20}, CannyFilterSobel, Mask3x3, PixelType8u, &size), StatusOk);
    EXPECT_EQ(size, 12 * (22 + 16) + 4 * 12 * 22 + 64);
    EXPECT_EQ(rvxiCannyBorderGetSize({70000, 1}, CannyFilterSobel, Mask5x5, PixelType8u, &size), StatusOk);
    EXPECT_EQ(size, 70004 * (5 + 16) + 4 * 70004 * 5 + 64);

    size = -1;
    EXPECT_EQ(rvxiCannyBorderGetSize({5, 5}, 0, 35, 0, &size), StatusBadMaskSize);
    EXPECT_EQ(size, -1);
}

template <class T> struct Call {
    const T *dx, *dy;
    std::uint8_t *dst, *buffer;
    std::int32_t dxStep, dyStep, dstStep;
    RoiSize roi;
    float low, high;
};

template <class T, class Function> void checkStatuses(Function function) {
    constexpr auto size = static_cast<std::int32_t>(sizeof(T));
    GuardedImage<T> dx(9, 4), dy(9, 4);
    GuardedImage<std::uint8_t> dst(9, 4);
    GuardedBuffer buffer = scratchFor(dst.roi());
    const Call<T> good{dx.data(), dy.data(), dst.data(), buffer.data(), dx.step(), dy.step(), dst.step(),
                       dst.roi(), 1,         2};
    using C = Call<T>;
    Faults<C> faults;
    faults.nulls(&C::dx, &C::dy, &C::dst, &C::buffer).empty(&C::roi);
    faults.shortSteps(9 * size, &C::dxStep, &C::dyStep).shortSteps(9, &C::dstStep);
    faults.unevenSteps(9 * size, size, &C::dxStep, &C::dyStep).values(StatusBadArgument, &C::low, {-1, 3});
    expectFaultOrder<C>(
        good, faults,
        [&](const Call<T> &c) {
            return function(c.dx, c.dxStep, c.dy, c.dyStep, c.dst, c.dstStep, c.roi, c.low, c.high, c.buffer);
        },
        [&] { return dst.bytes(); });
}

TEST(Canny, StatusesInTheOrderOfTheChecks) {
    checkStatuses<std::int16_t>(rvxiCanny_16s8u_C1R);
    checkStatuses<float>(rvxiCanny_32f8u_C1R);
}

struct PictureCall {
    const std::uint8_t *src;
    std::uint8_t *dst, *buffer;
    std::int32_t srcStep, dstStep;
    RoiSize roi;
    std::int32_t filter;
    MaskCode mask;
    BorderKind border;
    std::int32_t norm;
    float low, high;
};

TEST(CannyBorder, StatusesInTheOrderOfTheChecks) {
    GuardedImage<std::uint8_t> src(9, 4), dst(9, 4);
    const Setting setting = settings[0];
    GuardedBuffer buffer = borderScratchFor(dst.roi(), setting);
    const PictureCall good{src.data(),     dst.data(),   buffer.data(),   src.step(),  dst.step(), dst.roi(),
                           setting.filter, setting.mask, BorderReplicate, CannyNormL1, 1,          2};
    using C = PictureCall;
    Faults<C> faults;
    faults.values(StatusBadMaskSize, &C::mask, {35}).nulls(&C::src, &C::dst, &C::buffer).empty(&C::roi);
    faults.shortSteps(9, &C::srcStep, &C::dstStep).values(StatusBadArgument, &C::filter, {3});
    faults.values(StatusBadArgument, &C::norm, {1}).values(StatusBadArgument, &C::low, {-1, 3});
    faults.values(StatusBadBorder, &C::border, {BorderWrap});
    expectFaultOrder<C>(
        good, faults,
        [&](const PictureCall &c) {
            return rvxiCannyBorder_8u_C1R(c.src, c.srcStep, c.dst, c.dstStep, c.roi, c.filter, c.mask, c.border, 0,
                                          c.norm, c.buffer, c.low, c.high);
        },
        [&] { return dst.bytes(); });
    EXPECT_EQ(
        rvxiCannyBorder_8u_C1R(nullptr, 0, nullptr, 0, {0, 0}, CannyFilterScharr, Mask5x5, 0, 0, 0, nullptr, 0, 0),
        StatusBadMaskSize);
}

} // namespace
