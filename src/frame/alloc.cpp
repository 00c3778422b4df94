#include "frame/alloc.h"

#include "rvxcore.h"

namespace {

template <class T> T *allocate(std::int32_t count) {
    if (count <= 0) {
        return nullptr;
    }
    return static_cast<T *>(rvxMalloc(std::int64_t{count} * static_cast<std::int64_t>(sizeof(T))));
}

} // namespace

std::uint8_t *rvxsMalloc_8u(std::int32_t count) { return allocate<std::uint8_t>(count); }

std::uint16_t *rvxsMalloc_16u(std::int32_t count) { return allocate<std::uint16_t>(count); }

std::int32_t *rvxsMalloc_32s(std::int32_t count) { return allocate<std::int32_t>(count); }

float *rvxsMalloc_32f(std::int32_t count) { return allocate<float>(count); }

void rvxsFree(void *block) { rvxFree(block); }
