// Status tables: the faults of a function in the order of its checks. Every fault alone gives its status; of any two
// the earlier one wins; outputs are unchanged to the byte.
#pragma once

#include <gtest/gtest.h>

#include "rvxcv/types.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace support {

// `apply` spoils one argument. Of two faults the later one is applied first, so the earlier holds if both touch one
// argument.
template <class Args> struct Fault {
    std::string name;
    StatusCode status;
    std::function<void(Args &)> apply;
};

// A list of faults in the order of the checks, put together from what calls have in common. Arguments are given as
// pointers to members; a fault's name is its kind and its number in the list.
template <class Args> class Faults : public std::vector<Fault<Args>> {
public:
    Faults &add(const std::string &name, StatusCode status, std::function<void(Args &)> apply) {
        this->push_back({name + " (" + std::to_string(this->size()) + ")", status, std::move(apply)});
        return *this;
    }
    template <class... Pointer> Faults &nulls(Pointer Args::*...pointer) {
        (add("null", StatusNullPointer, [=](Args &a) { a.*pointer = nullptr; }), ...);
        return *this;
    }
    Faults &empty(RoiSize Args::*roi) {
        add("no width", StatusBadSize, [=](Args &a) { (a.*roi).width = 0; });
        return add("negative height", StatusBadSize, [=](Args &a) { (a.*roi).height = -1; });
    }
    // One byte short of a row.
    template <class... Step> Faults &shortSteps(std::int64_t rowBytes, Step Args::*...step) {
        (values(StatusBadStep, step, {static_cast<Step>(rowBytes - 1)}), ...);
        return *this;
    }
    // Long enough, but for one byte or half an element too long; none with elements of a byte.
    template <class... Step> Faults &unevenSteps(std::int64_t rowBytes, std::size_t elementSize, Step Args::*...step) {
        for (std::size_t more = 1; more < elementSize; more *= std::max<std::size_t>(elementSize / 2, 2)) {
            (values(StatusStepNotMultiple, step, {static_cast<Step>(rowBytes + static_cast<std::int64_t>(more))}), ...);
        }
        return *this;
    }
    template <class Value>
    Faults &values(StatusCode status, Value Args::*argument, std::initializer_list<std::type_identity_t<Value>> all) {
        for (const Value &value : all) {
            add("value", status, [=](Args &a) { a.*argument = value; });
        }
        return *this;
    }
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
