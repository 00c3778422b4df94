// The contract program's core. A driver declares the slots of a call (images, regions, choices of arguments, scratch)
// and the call itself; a Sweep then makes the call over sizes, layouts, contents and all choices, and with every fault,
// every pair and some threes of faults, and digests the status and every byte of every slot after each call.
#pragma once

#include "rvxcv.h"
#include "rvxcv/types.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace support {
class GuardedBuffer;
}

namespace contract {

// A running 64-bit hash of what a call gave back.
class Digest {
public:
    void bytes(const void *data, std::int64_t count);
    // Equal numbers give equal digests: of NaN there is only one.
    template <class T> void number(T value) {
        static_assert(std::is_arithmetic_v<T>);
        if constexpr (std::is_floating_point_v<T>) {
            if (value != value) {
                mix(0x7ff8dead7ff8dead);
                return;
            }
        }
        std::uint64_t word = 0;
        std::memcpy(&word, &value, sizeof value);
        mix(word);
    }
    template <class T> void numbers(std::initializer_list<T> values) {
        for (const T value : values) {
            number(value);
        }
    }
    std::uint64_t value() const { return state_ ^ (state_ >> 31); }

private:
    void mix(std::uint64_t word) {
        state_ = (state_ ^ word) * 0x9e3779b97f4a7c15;
        state_ ^= state_ >> 29;
    }
    std::uint64_t state_ = 0x243f6a8885a308d3;
};

// A value whose documentation gives a bound instead of its bits.
struct BoundedValue {
    double value, bound;
};

// One run of one member.
struct Run {
    explicit Run(const char *member);
    std::uint64_t next(); // of the member's own sequence of integers

    const char *name;
    std::uint64_t seed;
    Digest digest;
    std::vector<BoundedValue> values;
    static bool traced; // every call and the digest after it on the standard error output, to find the one that differs
    std::map<StatusCode, int> statuses[2]; // how often, of a sweep's legal calls and of its faulty ones
};

struct Member {
    const char *name;
    void (*run)(Run &run);
};
using Members = std::vector<Member>;

// One line of a table: the exported function, its driver and the driver's further arguments.
#define MEMBER(function, driver, ...)                                                                                  \
    contract::Member {                                                                                                 \
#function, [](contract::Run & run) { driver(run, function __VA_OPT__(, ) __VA_ARGS__); }                       \
    }

// The tables, one per subsystem.
void addArith(Members &members);
void addCore(Members &members);
void addFilter(Members &members);
void addGeometry(Members &members);
void addDetect(Members &members);
void addMotion(Members &members);
void addSegment(Members &members);
void addFeature(Members &members);
void addPyramid(Members &members);
void addMorph(Members &members);
void addStats(Members &members);

// What images hold. The names are those of support::Contents.
enum Contents : unsigned {
    random = 1,
    small = 2,
    nearMax = 4,
    constant = 8,
    special = 16, // NaN, infinities, negative zero, denormals among floats
    finite = random | small | nearMax | constant,
    any = finite | special
};

// A picture made by integers alone: the value at (x, y).
using Picture = std::int64_t (*)(std::int64_t x, std::int64_t y, std::uint64_t seed);
std::int64_t blocks(std::int64_t x, std::int64_t y, std::uint64_t seed);    // patches of a few levels
std::int64_t hills(std::int64_t x, std::int64_t y, std::uint64_t seed);     // smooth, 0..255
std::int64_t twoLevels(std::int64_t x, std::int64_t y, std::uint64_t seed); // mostly 0, patches of 1..255
std::int64_t fewZeros(std::int64_t x, std::int64_t y, std::uint64_t seed);  // mostly not 0

struct Margin {
    std::int64_t left = 0, top = 0, right = 0, bottom = 0; // pixels in memory around the region
};
// The margin that a border of this kind reads from memory, of the sides' widths given.
Margin inMemory(BorderKind border, Margin margin);
inline Margin inMemory(BorderKind border, std::int64_t all) { return inMemory(border, {all, all, all, all}); }

// Every kind with every set of sides in memory, and in memory as a whole.
std::vector<BorderKind> bordersOf(std::initializer_list<BorderKind> kinds);

class Sweep;

// Something that a call receives. Between calls `restore` takes a fault back.
class Slot {
public:
    explicit Slot(Sweep &sweep);
    Slot(const Slot &) = delete;
    Slot &operator=(const Slot &) = delete;
    virtual ~Slot() = default;
    virtual void prepare() = 0;
    virtual void restore() = 0;
    virtual void digest(Digest &) const {}

protected:
    // A fault of one field: two faults of the same field are not combined.
    void fault(const void *field, std::function<void()> apply);
    Sweep &sweep_;
};

// Bytes before (or behind) an unmapped page; they hold a pattern at first.
class Memory {
public:
    // Without guards a mapped page lies between, at the same places within a page: for emulators that read whole
    // vectors where an instruction reads a part.
    static bool guarded;

    Memory();
    ~Memory();
    std::uint8_t *place(std::int64_t bytes, std::int64_t skew, bool guardBefore);

private:
    std::unique_ptr<support::GuardedBuffer> buffer_;
};

// Sizes and layouts of a sweep.
struct Plan {
    std::vector<RoiSize> sizes = {{1, 1}, {2, 3}, {5, 4}, {17, 7}, {33, 9}, {67, 5}};
    RoiSize large = {130, 90}; // one call
    RoiSize choices = {19, 7}; // every combination of choices
    RoiSize faults = {21, 6};
    int rounds = 4;         // calls a size
    int combinations = 400; // at most as many of the choices'
    bool faulty = true;
};

class ChoiceBase;

class Sweep {
public:
    explicit Sweep(Run &run, Plan plan = {});

    // Before every call, once the slots are prepared: size queries and initialisations.
    std::function<void()> before = [] {};
    // After every call, faulty ones too: what only a driver can digest, and releases.
    std::function<void(StatusCode)> after = [](StatusCode) {};

    void run(const std::function<StatusCode()> &call);

    RoiSize roi() const { return roi_; }
    int turn() const { return turn_; } // counts the calls
    bool faulty() const { return faulty_; }
    Run &of() { return run_; }
    Digest &digest() { return run_.digest; }

private:
    friend class Slot;
    friend class ChoiceBase;
    struct Fault {
        const void *field;
        std::function<void()> apply;
    };

    void pass(RoiSize roi, std::uint64_t combination, const std::function<StatusCode()> &call);
    void prepare(RoiSize roi, std::uint64_t combination);
    void conclude(StatusCode status);
    void runFaults(const std::function<StatusCode()> &call);
    void runFaulty(std::initializer_list<std::size_t> which, const std::function<StatusCode()> &call);
    std::uint64_t combinations() const;

    Run &run_;
    Plan plan_;
    std::vector<Slot *> slots_;
    std::vector<ChoiceBase *> choices_;
    std::vector<Fault> faults_;
    RoiSize roi_{};
    int turn_ = 0;
    bool faulty_ = false;
};

// One of several legal arguments, and illegal ones.
class ChoiceBase : public Slot {
public:
    explicit ChoiceBase(Sweep &sweep);
    virtual std::uint64_t count() const = 0;
    virtual void select(std::uint64_t index) = 0;
};

template <class T> class Choice : public ChoiceBase {
public:
    Choice(Sweep &sweep, std::vector<T> good, std::vector<T> bad = {})
        : ChoiceBase(sweep), good_(std::move(good)), value_(good_.front()) {
        for (const T &value : bad) {
            fault(this, [this, value] { value_ = value; });
        }
    }
    operator T() const { return value_; }
    const T &value() const { return value_; }
    std::uint64_t count() const override { return good_.size(); }
    void select(std::uint64_t index) override {
        index_ = index;
        value_ = good_[index];
    }
    void prepare() override {}
    void restore() override { value_ = good_[index_]; }

private:
    std::vector<T> good_;
    T value_;
    std::uint64_t index_ = 0;
};

// The region of a call.
class Region : public Slot {
public:
    using Size = std::function<RoiSize(RoiSize)>;
    explicit Region(Sweep &sweep, Size size = {});
    operator RoiSize() const { return roi_; }
    RoiSize value() const { return roi_; }
    void prepare() override;
    void restore() override { prepare(); }

private:
    Size size_;
    RoiSize roi_{};
};

struct ImageOptions {
    int channels = 1;
    unsigned contents = any;
    Picture picture = nullptr;                 // instead of contents
    bool mixed = false;                        // the picture in half of the calls only
    std::function<RoiSize(RoiSize)> size = {}; // of the sweep's region; the same size if empty
    std::function<Margin()> margin = {};
    bool keepsBits = false;  // NaN count as bits
    bool zeroSign = true;    // else the sign of a zero is not fixed
    bool unevenSteps = true; // steps that are no multiple of the element are faults
    int stepChannels = 0;    // channels that a step must cover; 0: all
    bool nullable = true;    // null is a fault
    bool faults = true;      // else the call receives neither pointer nor step
    bool digested = true;
    bool tight = false; // always without padding and with aligned rows
};

class ImageBase : public Slot {
public:
    void prepare() override;
    void restore() override;
    void digest(Digest &digest) const override;
    std::int32_t step = 0;
    // The element in column x (channels counted) of row y, region and margin.
    std::uint8_t *element(std::int64_t x, std::int64_t y) const;
    std::int64_t rowElements() const { return width_; }

protected:
    enum class Type { u8, s8, u16, s16, s32, f32, f64 };
    template <class T> static constexpr Type typeOf() {
        if constexpr (std::is_floating_point_v<T>) {
            return sizeof(T) == 4 ? Type::f32 : Type::f64;
        } else {
            return sizeof(T) == 4   ? Type::s32
                   : sizeof(T) == 2 ? (std::is_signed_v<T> ? Type::s16 : Type::u16)
                                    : (std::is_signed_v<T> ? Type::s8 : Type::u8);
        }
    }
    ImageBase(Sweep &sweep, Type type, int elementSize, ImageOptions options);
    void *data_ = nullptr;

private:
    void fill();
    Type type_;
    std::int64_t elementSize_;
    ImageOptions options_;
    int index_; // of the image in its sweep: layouts and contents differ from image to image
    Memory memory_;
    std::uint8_t *bytes_ = nullptr;
    std::int64_t size_ = 0, width_ = 0, height_ = 0, rowBytes_ = 0, goodStep_ = 0, origin_ = 0;
};

// An image; of const elements: a source.
template <class T> class Image : public ImageBase {
public:
    using Element = std::remove_const_t<T>;
    explicit Image(Sweep &sweep, ImageOptions options = {})
        : ImageBase(sweep, typeOf<Element>(), sizeof(T), std::move(options)) {}
    operator T *() const { return static_cast<T *>(data_); }
    Element at(std::int64_t x, std::int64_t y) const {
        Element value;
        std::memcpy(&value, element(x, y), sizeof value);
        return value;
    }
    void set(std::int64_t x, std::int64_t y, Element value) { std::memcpy(element(x, y), &value, sizeof value); }
};

// An image that is also another one's destination, or its own source: call with the pointer of either.

// Scratch or a record of so many bytes, told in Sweep::before. Its contents are not digested.
class Bytes : public Slot {
public:
    explicit Bytes(Sweep &sweep, std::int64_t alignment = 1, bool nullable = true);
    void size(std::int64_t bytes);
    operator std::uint8_t *() const { return data_; }
    template <class T> T *as() const { return reinterpret_cast<T *>(data_); }
    void prepare() override {}
    void restore() override { data_ = good_; }

private:
    std::int64_t alignment_;
    Memory memory_;
    std::uint8_t *data_ = nullptr, *good_ = nullptr;
};

// A few numbers that a call reads, or a pattern that it overwrites, before an unmapped page.
template <class T> class Numbers : public Slot {
public:
    Numbers(Sweep &sweep, std::vector<T> values, bool nullable = true) : Slot(sweep), values_(std::move(values)) {
        if (nullable) {
            fault(this, [this] { data_ = nullptr; });
        }
    }
    // Outputs: count numbers of a pattern.
    Numbers(Sweep &sweep, std::size_t count) : Numbers(sweep, std::vector<T>(count)) {
        std::memset(static_cast<void *>(values_.data()), 0x5b, count * sizeof(T));
    }
    operator T *() const { return data_; }
    void assign(std::vector<T> values) {
        values_ = std::move(values);
        prepare();
    }
    T operator[](std::size_t i) const {
        T value;
        std::memcpy(static_cast<void *>(&value), good_ + i, sizeof value);
        return value;
    }
    std::size_t count() const { return values_.size(); }
    void prepare() override {
        const std::size_t bytes = values_.size() * sizeof(T);
        data_ = good_ = reinterpret_cast<T *>(memory_.place(static_cast<std::int64_t>(bytes), 0, false));
        std::memcpy(static_cast<void *>(data_), values_.data(), bytes);
    }
    void restore() override { data_ = good_; }
    bool digested = true;
    void digest(Digest &digest) const override {
        if (!digested) {
            return;
        }
        if constexpr (std::is_arithmetic_v<T>) {
            for (std::size_t i = 0; i < values_.size(); ++i) {
                digest.number((*this)[i]);
            }
        } else if constexpr (!std::is_pointer_v<T>) {
            digest.bytes(good_, static_cast<std::int64_t>(values_.size() * sizeof(T)));
        }
    }

private:
    std::vector<T> values_;
    Memory memory_;
    T *data_ = nullptr, *good_ = nullptr;
};

// A pointer argument whose value the driver sets before every call (states of the library's own memory).
template <class T> class Pointer : public Slot {
public:
    explicit Pointer(Sweep &sweep) : Slot(sweep) {
        fault(this, [this] { value_ = nullptr; });
    }
    void set(T *value) { value_ = good_ = value; }
    T *good() const { return good_; }
    operator T *() const { return value_; }
    void prepare() override {}
    void restore() override { value_ = good_; }

private:
    T *value_ = nullptr, *good_ = nullptr;
};

// An array of pointers to rows.
template <class T> class Rows : public Slot {
public:
    explicit Rows(Sweep &sweep) : Slot(sweep), array_(sweep, std::vector<T *>(1), false) {
        fault(this, [this] { data_ = nullptr; });
        fault(&array_, [this] { static_cast<T **>(array_)[array_.count() - 1] = nullptr; });
    }
    void set(const ImageBase &image, std::int64_t count) {
        rows_.clear();
        for (std::int64_t y = 0; y < count; ++y) {
            rows_.push_back(reinterpret_cast<T *>(image.element(0, y)));
        }
        restore();
    }
    operator T * const *() const { return data_; }
    void prepare() override {}
    void restore() override {
        array_.assign(rows_);
        data_ = array_;
    }

private:
    Numbers<T *> array_;
    std::vector<T *> rows_;
    T *const *data_ = nullptr;
};

// Calls `visit` with every combination of the lists' values.
template <class Visit> void forEach(const Visit &visit) { visit(); }
template <class Visit, class T, class... Lists>
void forEach(const Visit &visit, const std::vector<T> &list, const Lists &...lists) {
    for (const T &value : list) {
        forEach([&](const auto &...rest) { visit(value, rest...); }, lists...);
    }
}

// Regions and widths for size queries: legal ones, empty ones, and some whose sizes do not fit.
const std::vector<RoiSize> &queryRegions();
const std::vector<std::int32_t> &queryWidths();

// A size query: query(value of each list..., pointer to the size). Statuses and sizes, and null.
template <class Query, class... Lists> void sizes(Run &run, const Query &query, const Lists &...lists) {
    forEach(
        [&](const auto &...values) {
            std::int32_t size = 0x5b5b5b5b;
            run.digest.number(query(values..., &size));
            run.digest.number(size);
            run.digest.number(query(values..., static_cast<std::int32_t *>(nullptr)));
        },
        lists...);
}
// The same of two sizes.
template <class Query, class... Lists> void twoSizes(Run &run, const Query &query, const Lists &...lists) {
    forEach(
        [&](const auto &...values) {
            std::int32_t first = 0x5b5b5b5b, second = 0x5b5b5b5b;
            std::int32_t *const null = nullptr;
            run.digest.number(query(values..., &first, &second));
            run.digest.numbers({first, second});
            run.digest.number(query(values..., null, &second));
            run.digest.number(query(values..., &first, null));
            run.digest.numbers({first, second});
        },
        lists...);
}

} // namespace contract
