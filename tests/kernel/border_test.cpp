// Border primitives against the pictures in the public header, for regions smaller than the margin too.
#include "kernel/border.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace rvxcv;

// The pictures of the header, and rows narrower than their margins.
TEST(Border, ExtendedRowsOfEveryKind) {
    struct Picture {
        BorderKind kind;
        std::string row, extended; // by the same margin on both sides
    };
    for (const Picture &p : {Picture{BorderReplicate, "abcd", "aaaabcdddd"},
                             {BorderReplicate, "a", "aaaaaaa"},
                             {BorderWrap, "abcd", "bcdabcdabc"},
                             {BorderWrap, "ab", "ababababab"},
                             {BorderWrap, "a", "aaaaaaa"},
                             {BorderMirror, "abcd", "dcbabcdcba"},
                             {BorderMirror, "abc", "babcbabcbabcb"},
                             {BorderMirror, "ab", "babababa"},
                             {BorderMirror, "a", "aaaaaaa"},
                             {BorderMirrorRepeat, "abcd", "cbaabcddcb"},
                             {BorderMirrorRepeat, "ab", "abbaabbaab"},
                             {BorderMirrorRepeat, "a", "aaaaaaa"},
                             {BorderConstant, "abc", "....abc...."}}) {
        const auto width = static_cast<int>(p.row.size()), margin = (static_cast<int>(p.extended.size()) - width) / 2;
        std::string got;
        for (int x = -margin; x < width + margin; ++x) {
            const BorderIndex from = borderColumn(Border(p.kind), x, width);
            got += from.constant ? '.' : p.row[static_cast<std::size_t>(from.index)];
        }
        EXPECT_EQ(got, p.extended) << "kind " << p.kind << " of " << p.row;
    }
}

// Every set of sides in memory: a side counts for its own end of its own coordinate.
TEST(Border, SidesInMemoryKeepTheirCoordinates) {
    for (BorderKind sides = 0; sides < 256; sides += 16) {
        const Border border(BorderReplicate | sides);
        EXPECT_EQ(borderColumn(border, -2, 5).index, (sides & BorderInMemoryLeft) != 0 ? -2 : 0);
        EXPECT_EQ(borderColumn(border, 6, 5).index, (sides & BorderInMemoryRight) != 0 ? 6 : 4);
        EXPECT_EQ(borderRow(border, -2, 5).index, (sides & BorderInMemoryTop) != 0 ? -2 : 0);
        EXPECT_EQ(borderRow(border, 6, 5).index, (sides & BorderInMemoryBottom) != 0 ? 6 : 4);
        EXPECT_EQ(borderRow(Border(BorderConstant | sides), 6, 5).constant, (sides & BorderInMemoryBottom) == 0);
        // Rows before, in and behind the image, any part of them.
        std::uint8_t memory[40], *const image = memory + 16;
        for (int first = -9; first < 12; ++first) {
            const std::uint8_t *rows[10] = {};
            for (int count = 1; count < 9; ++count) {
                collectRows<std::uint8_t>(rows, {image, 1}, border, 5, first, count);
                for (int k = 0; k < count; ++k) {
                    ASSERT_EQ(rows[k] - image, borderRow(border, first + k, 5).index);
                }
                ASSERT_EQ(rows[count], nullptr) << "a pointer too many";
            }
        }
    }
    EXPECT_TRUE(Border(BorderInMemory).top && Border(BorderInMemory).right);
}

} // namespace
