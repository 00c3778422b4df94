// Typed allocation for the families: state records and temporary blocks. Blocks have the alignment of rvxMalloc; a
// kernel that needs more aligns inside the block.
#pragma once

#include <cstdint>

extern "C" {

// `count` elements; null when the count is not positive or there is no memory.
std::uint8_t *rvxsMalloc_8u(std::int32_t count);
std::uint16_t *rvxsMalloc_16u(std::int32_t count);
std::int32_t *rvxsMalloc_32s(std::int32_t count);
float *rvxsMalloc_32f(std::int32_t count);

// Releases a block of any of them; null is allowed.
void rvxsFree(void *block);
}
