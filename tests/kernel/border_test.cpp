// Border primitives against the pictures in the public header, for regions smaller than the margin too.
#include "support/guarded.h"

#include "kernel/border.h"

#include <string>

namespace {

using namespace support;
using namespace rvxcv;

// The extension of "abcd…" by m letters on both sides, by building it step by step outward.
std::string extended(BorderKind kind, const std::string &row, int m) {
    std::string all = row;
    const auto n = static_cast<int>(row.size());
    for (int k = 0; k < m; ++k) {
        const auto pick = [&](int distance) { // letter at `distance` >= 1 outside, counted from either end
            switch (kind) {
            case BorderReplicate:
                return 0;
            case BorderWrap:
                return n - 1 - (distance - 1) % n;
            case BorderMirror: {
                int at = 0, direction = 1; // walk inward, turning at the ends
                for (int s = 0; s < distance && n > 1; ++s) {
                    if (at + direction < 0 || at + direction >= n) {
                        direction = -direction;
                    }
                    at += direction;
                }
                return at;
            }
            default: {
                int at = 0, direction = 1;
                for (int s = 1; s < distance; ++s) {
                    if (at + direction < 0 || at + direction >= n) {
                        direction = -direction;
                    } else {
                        at += direction;
                    }
                }
                return at;
            }
            }
        };
        const int p = pick(k + 1);
        const std::string before(1, row[static_cast<std::size_t>(p)]);
        const std::string after(1, row[static_cast<std::size_t>(n - 1 - p)]);
        all = before + all + after;
    }
    return all;
}

TEST(Border, PicturesOfTheHeader) {
    EXPECT_EQ(extended(BorderReplicate, "abcd", 3), "aaaabcdddd");
    EXPECT_EQ(extended(BorderWrap, "abcd", 3), "bcdabcdabc");
    EXPECT_EQ(extended(BorderMirror, "abcd", 3), "dcbabcdcba");
    EXPECT_EQ(extended(BorderMirrorRepeat, "abcd", 3), "cbaabcddcb");
}

TEST(Border, ExtendedRowsOfEveryKindAndWidth) {
    const char value = '.';
    for (const BorderKind kind : {BorderConstant, BorderReplicate, BorderWrap, BorderMirror, BorderMirrorRepeat}) {
        for (int width = 1; width <= 6; ++width) {
            const std::string row = std::string("abcdef").substr(0, static_cast<std::size_t>(width));
            for (int margin = 0; margin <= 14; ++margin) {
                std::string got(static_cast<std::size_t>(width + 2 * margin), '?');
                extendRow<1, char>(got.data(), row.data(), width, margin, margin, Border(kind), &value);
                const std::string dots(static_cast<std::size_t>(margin), '.');
                ASSERT_EQ(got, kind == BorderConstant ? dots + row + dots : extended(kind, row, margin))
                    << "kind " << kind << " width " << width;
            }
        }
    }
}

// A 2x2 image inside known surroundings, every set of sides in memory: each coordinate on its own.
TEST(Border, MixedSidesTreatEachCoordinateOnItsOwn) {
    constexpr int m = 2;
    GuardedImage<std::uint8_t> src(2, 2, {.padding = 5, .left = m, .top = m, .right = m, .bottom = m});
    for (int y = -m; y < 2 + m; ++y) {
        for (int x = -m; x < 2 + m; ++x) {
            src.set(x, y, static_cast<std::uint8_t>(10 * (y + 3) + x + 3));
        }
    }
    const std::uint8_t value = 255;
    for (const BorderKind kind : {BorderConstant, BorderReplicate}) {
        for (BorderKind sides = 0; sides < 256; sides += 16) {
            GuardedImage<std::uint8_t> dst(2 + 2 * m, 2 + 2 * m);
            extendImage<1, std::uint8_t>(Plane<std::uint8_t>{dst.data(), dst.step()},
                                         Plane<const std::uint8_t>{src.data(), src.step()}, {2, 2}, {m, m, m, m},
                                         Border(kind | sides), &value);
            const auto want = [&](std::int64_t dx, std::int64_t dy) -> std::uint8_t {
                std::int64_t x = dx - m, y = dy - m;
                const bool outX = (x < 0 && !(sides & BorderInMemoryLeft)) || (x > 1 && !(sides & BorderInMemoryRight));
                const bool outY = (y < 0 && !(sides & BorderInMemoryTop)) || (y > 1 && !(sides & BorderInMemoryBottom));
                if (kind == BorderConstant && (outX || outY)) {
                    return value;
                }
                x = outX ? (x < 0 ? 0 : 1) : x;
                y = outY ? (y < 0 ? 0 : 1) : y;
                return src.at(x, y);
            };
            ASSERT_TRUE(imageIs(dst, want)) << "kind " << kind << " sides " << sides;
        }
    }
    EXPECT_TRUE(Border(BorderInMemory).top && Border(BorderInMemory).right);
}

} // namespace
