// Status tables: the faults of a function in the order of its checks. Every fault alone gives its status; of any two
// the earlier one wins; outputs are unchanged to the byte.
#pragma once

#include <gtest/gtest.h>

#include "rvxcv/types.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace support {

// `apply` spoils one argument. Of two faults the later one is applied first, so the earlier holds if both touch one
// argument.
template <class Args> struct Fault {
    std::string name;
    StatusCode status;
    std::function<void(Args &)> apply;
};

// `call` runs the function on the arguments, `outputs` returns the bytes of everything that it could write.
template <class Args>
void expectFaultOrder(const Args &good, const std::vector<Fault<Args>> &faults,
                      const std::function<StatusCode(const Args &)> &call,
                      const std::function<std::vector<std::uint8_t>()> &outputs) {
    const std::vector<std::uint8_t> before = outputs();
    for (std::size_t i = 0; i < faults.size(); ++i) {
        for (std::size_t j = i; j < faults.size(); ++j) {
            Args args = good;
            faults[j].apply(args);
            faults[i].apply(args);
            EXPECT_EQ(call(args), faults[i].status) << faults[i].name << " with " << faults[j].name;
            ASSERT_EQ(outputs(), before) << "written despite " << faults[i].name << " with " << faults[j].name;
        }
    }
    EXPECT_GE(call(good), StatusOk) << "the faultless arguments must pass";
}

} // namespace support
