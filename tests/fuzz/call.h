// One call of the library, decoded from a few bytes and judged. A driver, one per family, decodes the arguments of a
// member and runs it:
//
//     template <class S, class D, class... P>
//     void filtered(Call &call, StatusCode (*member)(const S *, int32_t, D *, int32_t, RoiSize, P...)) {
//         call.documented({StatusBadArgument});
//         const RoiSize roi = call.in.roi();
//         Image<const S> src(call.in, roi);
//         Image<D> dst(call.in, roi);
//         call.run(member, src, dst, roi, ...);
//     }
//
// run() gives images, lists and scratch the memory that the arguments entitle the function to, sometimes makes a
// pointer null, and aborts on what no call may do: a status that is not documented, success with illegal arguments or a
// null pointer, a changed input, an output changed by a failing call or outside its rows.
#pragma once

#include "memory.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string_view>
#include <utility>

namespace fuzz {

// The exported function's name.
const char *nameOf(const void *function);
template <class... P> const char *nameOf(StatusCode (*function)(P...)) {
    return nameOf(reinterpret_cast<const void *>(function));
}
// The function succeeded.
void noteReached(const void *function);
// The channels of an image, from the function's name.
template <class... P> int channelsOf(StatusCode (*function)(P...)) {
    const std::string_view name = nameOf(function);
    return name.find("_C3") != std::string_view::npos ? 3 : name.find("_C4") != std::string_view::npos ? 4 : 1;
}

class Call {
public:
    Call(const std::uint8_t *data, std::size_t size) : in(data, size) {}

    Reader in;

    // Statuses that the family documents beside those that every image function may give.
    void documented(std::initializer_list<StatusCode> more) { more_ = more; }
    // From here on: some pointers may be null; failing calls may have written; the arguments are wrong in a way that no
    // image shows, so that there must be a failure and no memory is given.
    void nullsAllowed() { nullsAllowed_ = true; }
    void failuresWrite(bool may = true) { failuresWrite_ = may; }
    void refuse(bool wrong) { refused_ = refused_ || wrong; }
    // Memory that the function reaches through a list of pointers or a record.
    template <class T> void watch(Image<T> &image) { watched_.push_back({&image, std::is_const_v<T>}); }
    // Which pointer of all that are passed shall be null.
    void makeNull(int index) { null_ = index; }

    template <class... P, class... A> StatusCode run(StatusCode (*function)(P...), A &&...arguments) {
        const bool entitled = !refused_ && (... && isLegal(arguments));
        (..., bind(arguments, entitled));
        auto flat = std::tuple_cat(flatten(arguments)...);
        static_assert(std::tuple_size_v<decltype(flat)> == sizeof...(P));
        bool nulled = false;
        std::apply([&](auto &...value) { (..., (nulled = maybeNull(value) || nulled)); }, flat);
        if (tracing()) {
            std::apply([&](auto &...value) { trace(function, value...); }, flat);
        }
        for (const Watched &each : watched_) {
            each.memory->remember();
        }
        const StatusCode status = std::apply(function, flat);
        nulled_ = nulled_ || nulled;
        const char *fault = judge(reinterpret_cast<const void *>(function), status, entitled, nulled);
        bool intact = true;
        for (const Watched &each : watched_) {
            intact = each.memory->intact(each.constant || (status < 0 && !failuresWrite_)) && intact;
        }
        (..., (intact = keeps<std::remove_reference_t<A>>(arguments, status) && intact));
        if (fault == nullptr && !intact) {
            fault = "bytes changed that are not its to write";
        }
        if (fault != nullptr) {
            std::apply([&](auto &...value) { trace(function, value...); }, flat);
            std::fprintf(stderr, "%s: status %d: %s\n", nameOf(function), status, fault);
            std::abort();
        }
        return status;
    }

    // The size that a query tells, whatever else is wrong; -1 when it fails. Gives up where that is too much.
    template <class... P, class... A> std::int64_t size(StatusCode (*query)(P...), A &&...arguments) {
        const bool refused = std::exchange(refused_, false);
        Array<std::int32_t> bytes(1);
        const StatusCode status = run(query, arguments..., bytes);
        refused_ = refused;
        return status >= 0 ? affordable(*bytes.data()) : refusedSize(arguments...);
    }
    // Of queries that tell two sizes, a record's and a buffer's.
    struct Sizes {
        std::int64_t record = -1, buffer = -1;
    };
    template <class... P, class... A> Sizes sizes(StatusCode (*query)(P...), A &&...arguments) {
        const bool refused = std::exchange(refused_, false);
        Array<std::int32_t> record(1), buffer(1);
        const StatusCode status = run(query, arguments..., record, buffer);
        refused_ = refused;
        if (status < 0) {
            refusedSize(arguments...);
            return {};
        }
        return {affordable(*record.data()), affordable(*buffer.data())};
    }

private:
    template <class A> static constexpr bool isMemory = std::is_base_of_v<Memory, std::remove_cvref_t<A>>;

    template <class A> static bool isLegal(const A &argument) {
        if constexpr (isMemory<A>) {
            return argument.legal();
        } else {
            return true;
        }
    }
    // What is passed as constant has been bound when it was written.
    template <class A> static void bind(A &argument, bool entitled) {
        if constexpr (isMemory<A>) {
            if constexpr (!std::is_const_v<A>) {
                argument.bind(entitled);
            }
            if constexpr (!std::is_same_v<std::remove_cvref_t<A>, Scratch>) {
                argument.remember();
            }
        }
    }
    template <class A> static auto flatten(const A &argument) {
        if constexpr (isMemory<A>) {
            return argument.arguments();
        } else {
            return std::tuple<A>(argument);
        }
    }
    template <class A> bool keeps(A &argument, StatusCode status) const {
        if constexpr (!isMemory<A> || std::is_same_v<std::remove_cvref_t<A>, Scratch>) {
            return true;
        } else {
            using Pointee = std::remove_pointer_t<decltype(argument.data())>;
            return argument.intact(std::is_const_v<Pointee> || std::is_const_v<A> || (status < 0 && !failuresWrite_));
        }
    }
    template <class V> bool maybeNull(V &value) {
        if constexpr (std::is_pointer_v<V>) {
            if (value != nullptr && null_-- == 0) {
                value = nullptr;
                return true;
            }
        }
        return false;
    }

    static std::int64_t affordable(std::int32_t bytes) {
        if (bytes > 1 << 24) {
            throw Abandon();
        }
        return bytes;
    }

    // Where a query fails because of a null pointer, or because a size does not fit, there is nothing to call the
    // function with.
    template <class... A> std::int64_t refusedSize(const A &...arguments) const {
        constexpr std::int32_t large = 1 << 16;
        const auto check = [](const auto &argument) {
            if constexpr (std::is_same_v<std::remove_cvref_t<decltype(argument)>, RoiSize>) {
                return argument.width > large || argument.height > large;
            } else if constexpr (std::is_same_v<std::remove_cvref_t<decltype(argument)>, std::int32_t>) {
                return argument > large;
            } else {
                return false;
            }
        };
        if (nulled_ || (... || check(arguments))) {
            throw Abandon();
        }
        return -1;
    }

    static bool tracing();
    template <class... P, class... V> static void trace(StatusCode (*function)(P...), const V &...values) {
        std::fprintf(stderr, "%s(", nameOf(function));
        (..., print(values));
        std::fprintf(stderr, ")\n");
    }
    template <class V> static void print(const V &value) {
        if constexpr (std::is_pointer_v<V>) {
            std::fprintf(stderr, " %p", reinterpret_cast<const void *>(value));
        } else if constexpr (std::is_arithmetic_v<V>) {
            std::fprintf(stderr, " %.9g", static_cast<double>(value));
        } else if constexpr (std::is_same_v<V, RoiSize>) {
            std::fprintf(stderr, " %dx%d", value.width, value.height);
        } else if constexpr (std::is_same_v<V, Point2i>) {
            std::fprintf(stderr, " (%d,%d)", value.x, value.y);
        } else if constexpr (std::is_same_v<V, Rect2i>) {
            std::fprintf(stderr, " (%d,%d %dx%d)", value.x, value.y, value.width, value.height);
        } else {
            std::fprintf(stderr, " {..}");
        }
    }

    // What is wrong with a status, or null.
    const char *judge(const void *function, StatusCode status, bool entitled, bool nulled) const;

    struct Watched {
        Memory *memory;
        bool constant;
    };
    std::vector<Watched> watched_;
    std::vector<StatusCode> more_;
    bool nullsAllowed_ = false, failuresWrite_ = false, refused_ = false, nulled_ = false;
    int null_ = -1;
};

// Each target has a table of its members: what is run when an input names the member's number.
struct Member {
    const char *name;
    void (*run)(Call &);
};
extern const std::vector<Member> members;

// A line of such a table: the family's driver, the function, and what else the driver takes.
#define MEMBER(driver, function, ...)                                                                                  \
    fuzz::Member {                                                                                                     \
#function, [](fuzz::Call & call) { driver(call, function __VA_OPT__(, ) __VA_ARGS__); }                        \
    }

// A function of sizes and parameters alone, and of pointers to single results: any numbers will do.
template <class... P> void query(Call &call, StatusCode (*member)(P...)) {
    call.documented({StatusBadMaskSize, StatusBadArgument, StatusBadChannelCount, StatusBadDataType, StatusOutOfRange,
                     StatusBadChannelLayout});
    const auto argument = [&]<class A>(std::type_identity<A>) {
        if constexpr (std::is_pointer_v<A>) {
            return Record<std::remove_pointer_t<A>>(sizeof(std::remove_pointer_t<A>));
        } else if constexpr (std::is_same_v<A, RoiSize>) {
            return call.in.byte() < 192 ? call.in.roi()
                                        : RoiSize{call.in.any<std::int32_t>(), call.in.any<std::int32_t>()};
        } else if constexpr (std::is_same_v<A, std::int32_t>) {
            return call.in.oneOf<std::int32_t>({3, 1, 5, 33, 13, 7, 55, 0, 2});
        } else if constexpr (std::is_same_v<A, HoughResolution>) {
            return HoughResolution{call.in.real(1, 4), call.in.real(0.01F, 1)};
        } else {
            return call.in.any<A>();
        }
    };
    [&](auto &&...each) { call.run(member, each...); }(argument(std::type_identity<P>{})...);
}

} // namespace fuzz
