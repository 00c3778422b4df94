// Memory that ends where the last byte of an image, a list or a scratch area ends: in front of an unmapped page, or in
// a heap block between the red zones of the address sanitizer. What arguments do not entitle a function to has no byte.
#pragma once

#include "reader.h"

#include <cstdint>
#include <cstring>
#include <tuple>
#include <type_traits>
#include <vector>

namespace fuzz {

enum class Element { u8, s8, u16, s16, s32, f32, f64 };

template <class T> constexpr Element elementOf() {
    using E = std::remove_const_t<T>;
    if constexpr (std::is_same_v<E, std::int8_t>) {
        return Element::s8;
    } else if constexpr (std::is_same_v<E, std::uint16_t>) {
        return Element::u16;
    } else if constexpr (std::is_same_v<E, std::int16_t>) {
        return Element::s16;
    } else if constexpr (std::is_same_v<E, std::int32_t>) {
        return Element::s32;
    } else if constexpr (std::is_same_v<E, float>) {
        return Element::f32;
    } else if constexpr (std::is_same_v<E, double>) {
        return Element::f64;
    } else {
        return Element::u8;
    }
}

// Fills with one of several kinds of pixels, chosen by a byte.
void fill(std::uint8_t *data, std::int64_t bytes, Element element, std::uint8_t contents);

// Thrown by the harness, never through the library: the call would need more memory than a fuzzer should spend.
struct Abandon {};

// Pixels around the region that are in memory.
struct Margin {
    std::int64_t left = 0, top = 0, right = 0, bottom = 0;

    // What a border in memory of this kind needs of a mask that reaches so far.
    static Margin of(BorderKind border, Margin reach) {
        const bool all = (border & 15) == BorderInMemory;
        return {all || (border & BorderInMemoryLeft) != 0 ? reach.left : 0,
                all || (border & BorderInMemoryTop) != 0 ? reach.top : 0,
                all || (border & BorderInMemoryRight) != 0 ? reach.right : 0,
                all || (border & BorderInMemoryBottom) != 0 ? reach.bottom : 0};
    }
};

struct Shape {
    RoiSize roi;
    std::int64_t channels = 1;
    Margin margin = {};
    std::int64_t leastStep = -1; // from which on a function takes a step; -1: the bytes of a row
    bool unseen = false;         // the function gets no step, or trusts it: it is always a good one
};

class Memory {
public:
    Memory() = default;
    Memory(const Memory &) = delete;
    Memory &operator=(const Memory &) = delete;
    ~Memory() { release(); }

    // The arguments are such that the function may use this memory.
    bool legal() const { return legal_; }
    // Takes memory of the exact size if `entitled`, else none at all, and fills it; what has memory already keeps it.
    void bind(bool entitled);
    // Remembers the bytes; afterwards tells whether those that must not change have kept their value: all of them, or
    // those between rows and around the region.
    void remember() const;
    bool intact(bool everything) const;

protected:
    // Decides on a step and with it on the extent.
    void layOut(Reader &in, const Shape &shape, std::int64_t elementSize);

    bool legal_ = true;
    bool guarded_ = true, aligned_ = false;
    Element element_ = Element::u8;
    std::uint8_t contents_ = 0;
    std::int64_t bytes_ = 0;                                      // of the block
    std::int64_t first_ = 0, rows_ = 1, rowBytes_ = 0, step_ = 0; // of the region in it
    std::uint8_t *data_ = nullptr;

private:
    void release();

    int slot_ = -1;
    mutable std::vector<std::uint8_t> before_;
};

// An image is a pointer and a step. Most steps cover the row, some are longer, some no multiple of the element, some
// nonsense; nonsense that would need more memory than there is becomes a step that is too small.
template <class T> class Image : public Memory {
public:
    Image(Reader &in, const Shape &shape) {
        element_ = elementOf<T>();
        layOut(in, shape, sizeof(T));
    }
    Image(Reader &in, RoiSize roi, std::int64_t channels = 1) : Image(in, Shape{roi, channels}) {}

    T *data() const { return reinterpret_cast<T *>(data_ + first_); }
    std::int32_t step() const { return static_cast<std::int32_t>(step_); }
    std::tuple<T *, std::int32_t> arguments() const { return {data(), step()}; }
};

// A list of elements.
template <class T> class Array : public Memory {
public:
    // A negative length is the function's to refuse.
    Array(Reader &in, std::int64_t count) {
        legal_ = count >= 0;
        const std::uint8_t place = in.byte();
        guarded_ = (place & 1) == 0;
        contents_ = static_cast<std::uint8_t>(place >> 1);
        setCount(count);
    }
    explicit Array(std::int64_t count) { setCount(count); }
    explicit Array(const std::vector<std::remove_const_t<T>> &values)
        : Array(static_cast<std::int64_t>(values.size())) {
        bind(true);
        std::memcpy(data_, values.data(), static_cast<std::size_t>(bytes_));
    }

    T *data() const { return reinterpret_cast<T *>(data_); }
    std::int64_t size() const { return bytes_ / static_cast<std::int64_t>(sizeof(T)); }
    std::tuple<T *> arguments() const { return {data()}; }

protected:
    void setCount(std::int64_t count) {
        element_ = elementOf<T>();
        aligned_ = !std::is_arithmetic_v<T>; // lists of records stand where such records may stand
        bytes_ = rowBytes_ = (count < 0 ? 0 : count) * static_cast<std::int64_t>(sizeof(T));
    }
};

// A record of so many bytes that a function fills: at a multiple of 8, unless it may stand anywhere.
template <class T> class Record : public Memory {
public:
    explicit Record(std::int64_t bytes, bool aligned = true) {
        aligned_ = aligned;
        bytes_ = rowBytes_ = bytes < 0 ? 0 : bytes;
    }

    T *data() const { return reinterpret_cast<T *>(data_); }
    std::tuple<T *> arguments() const { return {data()}; }
};

// Scratch: of the size that a query tells, at any address, and of any contents. Where the query fails there is none.
class Scratch : public Array<std::uint8_t> {
public:
    Scratch(Reader &in, std::int64_t bytes) : Array(in, bytes < 0 ? 0 : bytes) {}
};

} // namespace fuzz
