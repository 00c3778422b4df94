// The tests' entry point: prints the seed of the random cases, so that a failure can be replayed with RVXCV_SEED=n.
#include "support/random.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace {

// Programs that another build made run with the library named in RVXCV_EXPECTED_LIBRARY, or not at all.
bool isExpectedLibrary() {
    const char *expected = std::getenv("RVXCV_EXPECTED_LIBRARY");
    if (expected == nullptr) {
        return true;
    }
    Dl_info loaded;
    if (dladdr(dlsym(RTLD_DEFAULT, "rvxcvGetLibVersion"), &loaded) == 0) {
        return false;
    }
    std::printf("library: %s\n", loaded.dli_fname);
    return std::filesystem::equivalent(loaded.dli_fname, expected);
}

} // namespace

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    std::printf("seed of random cases: %llu (set RVXCV_SEED to replay another)\n",
                static_cast<unsigned long long>(support::baseSeed()));
    if (!isExpectedLibrary()) {
        std::fprintf(stderr, "not the library to be tested\n");
        return 1;
    }
    return RUN_ALL_TESTS();
}
