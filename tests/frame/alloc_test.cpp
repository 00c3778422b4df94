#include "frame/alloc.h"

#include "rvxcore.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

template <class T> void expectBlocks(T *(*allocate)(std::int32_t)) {
    EXPECT_EQ(allocate(0), nullptr);
    EXPECT_EQ(allocate(-1), nullptr);
    EXPECT_EQ(allocate(INT32_MIN), nullptr);
    for (const std::int32_t count : {1, 15, 16, 17, 100003}) {
        T *block = allocate(count);
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0U);
        std::memset(block, 0x5a,
                    static_cast<std::size_t>(count) * sizeof(T)); // the whole block, under the sanitizer's eye
        rvxsFree(block);
    }
}

TEST(TypedAllocation, BlocksHoldTheirElements) {
    expectBlocks(rvxsMalloc_8u);
    expectBlocks(rvxsMalloc_16u);
    expectBlocks(rvxsMalloc_32s);
    expectBlocks(rvxsMalloc_32f);
    rvxsFree(nullptr);
}

// 2^30 + 4 elements of four bytes are 2^32 + 16 bytes: a product in 32 bits would be a small block.
TEST(TypedAllocation, ByteCountDoesNotWrap) {
    constexpr std::int32_t count = (1 << 30) + 4;
    void *whole = rvxMalloc(4 * std::int64_t{count});
    if (whole == nullptr) {
        GTEST_SKIP() << "no address space for 4 GiB";
    }
    rvxFree(whole);
    std::int32_t *block = rvxsMalloc_32s(count);
    ASSERT_NE(block, nullptr);
    block[count - 1] = 7;
    EXPECT_EQ(block[count - 1], 7);
    rvxsFree(block);
}

} // namespace
