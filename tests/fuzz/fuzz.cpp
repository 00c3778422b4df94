// What every target of library calls shares: memory with exact ends, the judgement of a call, and the entry points of
// the fuzzer. An input is a list of calls of callBytes bytes each, the first two being the member's number.
//
// Environment: RVXCV_FUZZ_TRACE=1 prints every call before it is made. RVXCV_FUZZ_REACHED=FILE appends, at the end, the
// names of the functions that succeeded at least once. RVXCV_FUZZ_SEEDS=FOLDER writes seeds that let every member
// succeed, and ends.
#include "call.h"

#include <sanitizer/asan_interface.h>

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <string>

namespace fuzz {
namespace {

constexpr std::size_t callBytes = 32;
constexpr std::size_t mostCalls = 30;

// ---------------------------------------------------------------------------------------------------------- names

const std::map<const void *, const char *> &exportedNames() {
#define EXPORT(name) {reinterpret_cast<const void *>(&name), #name},
    static const std::map<const void *, const char *> names = {
#include "frame/exports.def"
    };
#undef EXPORT
    return names;
}

std::set<std::string> &reached() {
    static std::set<std::string> names;
    return names;
}

// Whether a function has failed since this was last cleared.
bool someFailed = false;

void writeReached() {
    std::FILE *const file = std::fopen(std::getenv("RVXCV_FUZZ_REACHED"), "a");
    for (const std::string &name : reached()) {
        std::fprintf(file, "%s\n", name.c_str());
    }
    std::fclose(file);
}

// --------------------------------------------------------------------------------------------------------- guards

// Areas in front of an unmapped page. What is not in use is poisoned, so that bytes in front of a block are watched
// too.
class Guards {
public:
    static constexpr int count = 32;
    static constexpr std::size_t bytes = std::size_t{1} << 20;

    Guards() {
        constexpr std::size_t page = 4096;
        for (Slot &slot : slots_) {
            void *const map =
                mmap(nullptr, bytes + page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
            if (map == MAP_FAILED || mprotect(map, bytes, PROT_READ | PROT_WRITE) != 0) {
                std::abort();
            }
            slot.end = static_cast<std::uint8_t *>(map) + bytes;
            __asan_poison_memory_region(map, bytes);
        }
    }

    // -1 when all are taken or the block is too large for one.
    int take(std::size_t size, std::uint8_t *&data) {
        for (int i = 0; i < count && size <= bytes; ++i) {
            Slot &slot = slots_[i];
            if (!slot.used) {
                slot = {slot.end, size, true};
                data = slot.end - size;
                __asan_unpoison_memory_region(data, size);
                return i;
            }
        }
        return -1;
    }
    void giveBack(int i) {
        __asan_poison_memory_region(slots_[i].end - (slots_[i].size + 7) / 8 * 8, (slots_[i].size + 7) / 8 * 8);
        slots_[i].used = false;
    }

private:
    struct Slot {
        std::uint8_t *end = nullptr;
        std::size_t size = 0;
        bool used = false;
    };
    Slot slots_[count];
};

Guards &guards() {
    static Guards all;
    return all;
}

std::uint32_t nextRandom(std::uint32_t &state) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
}

template <class T> T pixel(std::uint32_t random, std::uint8_t contents) {
    constexpr bool real = std::is_floating_point_v<T>;
    constexpr T extremes[] = {T{0},
                              T{1},
                              std::numeric_limits<T>::max(),
                              std::numeric_limits<T>::lowest(),
                              static_cast<T>(-1),
                              real ? std::numeric_limits<T>::quiet_NaN() : T{2},
                              real ? std::numeric_limits<T>::infinity() : T{3},
                              real ? -std::numeric_limits<T>::infinity() : T{127},
                              real ? std::numeric_limits<T>::denorm_min() : static_cast<T>(255)};
    switch (contents % 8) {
    case 0:
        if constexpr (real) {
            return static_cast<T>(random % 65536) / T{256};
        } else {
            return static_cast<T>(random);
        }
    case 1:
        return static_cast<T>(contents / 8);
    case 2:
        return extremes[random % std::size(extremes)];
    case 3:
        return static_cast<T>(random % 2 * 255);
    case 4:
        return static_cast<T>(random % 16 == 0 ? random >> 8 : 0);
    case 5:
        return static_cast<T>(random % 4);
    case 6: {
        T bits;
        const std::uint32_t words[2] = {random, random * 2654435761U};
        std::memcpy(&bits, words, sizeof bits);
        return bits;
    }
    default:
        return static_cast<T>(random % 32 == 0 ? 0 : 1);
    }
}

template <class T> void fillAs(std::uint8_t *data, std::int64_t bytes, std::uint8_t contents) {
    std::uint32_t random = 0x9e3779b9U ^ contents * 0x01000193U;
    std::int64_t at = 0;
    for (; at + static_cast<std::int64_t>(sizeof(T)) <= bytes; at += sizeof(T)) {
        const T value = pixel<T>(nextRandom(random), contents);
        std::memcpy(data + at, &value, sizeof value);
    }
    for (; at < bytes; ++at) {
        data[at] = static_cast<std::uint8_t>(nextRandom(random));
    }
}

} // namespace

const char *nameOf(const void *function) {
    const auto found = exportedNames().find(function);
    if (found == exportedNames().end()) {
        std::fprintf(stderr, "a member that exports.def does not list\n");
        std::abort();
    }
    return found->second;
}

void noteReached(const void *function) {
    static const bool noting =
        std::getenv("RVXCV_FUZZ_REACHED") != nullptr || std::getenv("RVXCV_FUZZ_SEEDS") != nullptr;
    if (noting) {
        reached().insert(nameOf(function));
    }
}

void fill(std::uint8_t *data, std::int64_t bytes, Element element, std::uint8_t contents) {
    switch (element) {
    case Element::u8:
        return fillAs<std::uint8_t>(data, bytes, contents);
    case Element::s8:
        return fillAs<std::int8_t>(data, bytes, contents);
    case Element::u16:
        return fillAs<std::uint16_t>(data, bytes, contents);
    case Element::s16:
        return fillAs<std::int16_t>(data, bytes, contents);
    case Element::s32:
        return fillAs<std::int32_t>(data, bytes, contents);
    case Element::f32:
        return fillAs<float>(data, bytes, contents);
    case Element::f64:
        return fillAs<double>(data, bytes, contents);
    }
}

void Memory::layOut(Reader &in, const Shape &shape, std::int64_t elementSize) {
    constexpr std::int64_t largest = std::int64_t{1} << 18;
    const std::uint8_t place = in.byte(), kind = place >> 3;
    contents_ = in.byte();
    guarded_ = (place & 1) == 0;
    const Margin &margin = shape.margin;
    const std::int64_t pixel = elementSize * shape.channels;
    rowBytes_ = shape.roi.width * pixel;
    rows_ = shape.roi.height;
    const std::int64_t tight = rowBytes_ + (margin.left + margin.right) * pixel;
    const std::int64_t least = shape.leastStep >= 0 ? shape.leastStep : rowBytes_;
    if (kind < 12) {
        step_ = tight;
    } else if (kind < 20) {
        step_ = tight + (kind - 11) * elementSize;
    } else if (kind < 24) {
        step_ = tight + (kind - 19);
    } else if (kind < 28) {
        const std::int64_t odd[] = {rowBytes_ - 1, rowBytes_ - elementSize, 0, -tight};
        step_ = odd[kind - 24];
    } else if (kind < 29) {
        step_ = least;
    } else {
        step_ = in.any<std::int32_t>();
    }
    step_ = std::clamp<std::int64_t>(step_, INT32_MIN, INT32_MAX);
    const auto covers = [&] { return shape.roi.width >= 1 && shape.roi.height >= 1 && step_ >= least; };
    const auto extent = [&] { return (rows_ + margin.top + margin.bottom - 1) * step_ + tight; };
    if (shape.unseen && !(covers() && step_ >= tight && extent() <= largest)) {
        step_ = tight;
        if (covers() && extent() > largest) {
            throw Abandon();
        }
    }
    if (covers() && extent() > largest) {
        step_ = std::min<std::int64_t>(least - 1, INT32_MAX);
    }
    legal_ = covers();
    if (legal_) {
        first_ = margin.top * step_ + margin.left * pixel;
        bytes_ = extent();
    }
}

void Memory::bind(bool entitled) {
    if (data_ != nullptr) {
        return;
    }
    const std::int64_t bytes = entitled ? bytes_ : 0;
    if (!entitled) {
        bytes_ = 0;
    }
    // A block in front of the page stands where its length puts it, so a record's has the length of a multiple of 8
    // bytes.
    if ((guarded_ || bytes == 0) && (!aligned_ || bytes % 8 == 0)) {
        slot_ = guards().take(static_cast<std::size_t>(bytes), data_);
    }
    if (slot_ < 0) {
        data_ = static_cast<std::uint8_t *>(std::malloc(static_cast<std::size_t>(bytes)));
    }
    fill(data_, bytes, element_, contents_);
}

void Memory::release() {
    if (slot_ >= 0) {
        guards().giveBack(slot_);
    } else {
        std::free(data_);
    }
}

void Memory::remember() const { before_.assign(data_, data_ + bytes_); }

bool Memory::intact(bool everything) const {
    if (everything) {
        return std::equal(before_.begin(), before_.end(), data_);
    }
    if (rowBytes_ > step_ && rows_ > 1) {
        return true; // rows that overlap have nothing between them
    }
    std::int64_t at = 0;
    for (std::int64_t row = 0; row < rows_ && bytes_ > 0; ++row) {
        const std::int64_t begin = first_ + row * step_;
        if (std::memcmp(&before_[static_cast<std::size_t>(at)], data_ + at, static_cast<std::size_t>(begin - at)) !=
            0) {
            return false;
        }
        at = begin + rowBytes_;
    }
    return at >= bytes_ ||
           std::memcmp(&before_[static_cast<std::size_t>(at)], data_ + at, static_cast<std::size_t>(bytes_ - at)) == 0;
}

bool Call::tracing() {
    static const bool on = std::getenv("RVXCV_FUZZ_TRACE") != nullptr;
    return on;
}

const char *Call::judge(const void *function, StatusCode status, bool entitled, bool nulled) const {
    constexpr StatusCode common[] = {StatusOk, StatusNullPointer, StatusBadSize, StatusBadStep, StatusStepNotMultiple};
    if (std::find(std::begin(common), std::end(common), status) == std::end(common) &&
        std::find(more_.begin(), more_.end(), status) == more_.end()) {
        return "a status that is not documented";
    }
    if (status >= 0 && !entitled) {
        return "success with arguments that are not legal";
    }
    if (status >= 0 && nulled && !nullsAllowed_) {
        return "success with a null pointer";
    }
    if (status >= 0) {
        noteReached(function);
    } else {
        someFailed = true;
    }
    return nullptr;
}

namespace {

void runCall(const std::uint8_t *data, std::size_t size) {
    Call call(data, size);
    const std::size_t number = call.in.byte() + 256U * call.in.byte();
    const std::uint8_t null = call.in.byte();
    if (null >= 240) {
        call.makeNull(null - 240);
    }
    try {
        members[number % members.size()].run(call);
    } catch (const Abandon &) {
    }
}

// Files of so many calls that each member succeeds in one, with arguments chosen at random from a fixed seed.
void writeSeeds(const std::string &folder) {
    std::vector<std::uint8_t> bytes;
    std::uint32_t random = 0x2545f491U;
    int file = 0;
    for (std::size_t member = 0; member < members.size(); ++member) {
        std::vector<std::uint8_t> call(callBytes);
        reached().erase(members[member].name);
        const auto succeeded = [&] { return reached().count(members[member].name) != 0; };
        // At best nothing fails that the driver calls: other functions succeed in no other seed.
        constexpr int patience = 3000;
        for (int attempt = 0; !succeeded() || (someFailed && attempt < patience); ++attempt) {
            if (attempt == 2 * patience) {
                break;
            }
            for (std::uint8_t &byte : call) {
                byte = static_cast<std::uint8_t>(nextRandom(random) >> 8);
            }
            call[0] = static_cast<std::uint8_t>(member % 256);
            call[1] = static_cast<std::uint8_t>(member / 256);
            someFailed = false;
            reached().erase(members[member].name);
            runCall(call.data(), call.size());
        }
        if (reached().count(members[member].name) == 0) {
            std::fprintf(stderr, "no success of %s\n", members[member].name);
        }
        bytes.insert(bytes.end(), call.begin(), call.end());
        if (bytes.size() == callBytes * mostCalls || member + 1 == members.size()) {
            std::FILE *const out = std::fopen((folder + "/" + std::to_string(file++)).c_str(), "wb");
            std::fwrite(bytes.data(), 1, bytes.size(), out);
            std::fclose(out);
            bytes.clear();
        }
    }
}

} // namespace
} // namespace fuzz

// Refuses what is larger than any state that a fuzzer's sizes need: the library then sees that there is no memory.
extern "C" const char *__asan_default_options() { return "allocator_may_return_null=1:max_allocation_size_mb=64"; }

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    if (std::getenv("RVXCV_FUZZ_REACHED") != nullptr) {
        fuzz::reached(); // made before the exit handler, and so destroyed after it
        std::atexit(fuzz::writeReached);
    }
    if (const char *const folder = std::getenv("RVXCV_FUZZ_SEEDS")) {
        fuzz::writeSeeds(folder);
        std::exit(0);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    for (std::size_t call = 0; call < fuzz::mostCalls && call * fuzz::callBytes < size; ++call) {
        const std::size_t at = call * fuzz::callBytes;
        fuzz::runCall(data + at, std::min(fuzz::callBytes, size - at));
    }
    return 0;
}
