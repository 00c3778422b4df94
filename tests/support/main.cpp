// The tests' entry point: prints the seed of the random cases, so that a failure can be replayed with RVXCV_SEED=n.
#include "support/random.h"

#include <gtest/gtest.h>

#include <cstdio>

int main(int argc, char **argv) {
    testing::InitGoogleTest(&argc, argv);
    std::printf("seed of random cases: %llu (set RVXCV_SEED to replay another)\n",
                static_cast<unsigned long long>(support::baseSeed()));
    return RUN_ALL_TESTS();
}
