/* What the processor can do, and memory that suits its vectors. */
#include <rvxcore.h>
#include <stdio.h>

int main(void) {
    const uint64_t enabled = rvxGetEnabledCpuFeatures();
    uint64_t detected = 0;
    const StatusCode status = rvxGetCpuFeatures(&detected, NULL);
    void *block = rvxMalloc(1000);
    const int aligned = block != NULL && (uintptr_t)block % 64 == 0;
    rvxFree(block);
    printf("AVX2: %s\n", (enabled & RVX_CPU_AVX2) != 0 ? "yes" : "no");
    return status == StatusOk && aligned && (enabled & ~detected) == 0 ? 0 : 1;
}
