#include "contract/contract.h"

#include "support/bordered.h"
#include "support/guarded.h"

#include <array>
#include <cinttypes>
#include <cstdio>

namespace contract {

// ------------------------------------------------------------------------------------------------- Digests and runs

void Digest::bytes(const void *data, std::int64_t count) {
    const auto *at = static_cast<const std::uint8_t *>(data);
    for (; count >= 8; count -= 8, at += 8) {
        std::uint64_t word;
        std::memcpy(&word, at, 8);
        mix(word);
    }
    std::uint64_t last = static_cast<std::uint64_t>(count) << 56;
    std::memcpy(&last, at, static_cast<std::size_t>(count));
    mix(last);
}

Run::Run(const char *member) : name(member), seed(0xcbf29ce484222325) {
    for (const char *c = member; *c != 0; ++c) {
        seed = (seed ^ static_cast<unsigned char>(*c)) * 0x100000001b3;
    }
}

bool Run::traced = false;

// splitmix64
std::uint64_t Run::next() {
    seed += 0x9e3779b97f4a7c15;
    std::uint64_t z = seed;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return z ^ (z >> 31);
}

// --------------------------------------------------------------------------------------------------------- Contents

namespace {

std::uint64_t scramble(std::int64_t x, std::int64_t y, std::uint64_t seed) {
    std::uint64_t z =
        seed + static_cast<std::uint64_t>(x) * 0x9e3779b97f4a7c15 + static_cast<std::uint64_t>(y) * 0xc2b2ae3d27d4eb4f;
    z = (z ^ (z >> 31)) * 0xbf58476d1ce4e5b9;
    return z ^ (z >> 29);
}

constexpr std::int64_t poolSize = 1 << 15; // a power of two

// The contents of a type, made once: images copy from a place of their own in it.
template <class T> const std::uint8_t *pool(unsigned contents) {
    static const auto made = [] {
        std::array<std::vector<T>, 5> pools;
        for (unsigned kind = 0; kind < pools.size(); ++kind) {
            support::Rng rng(kind + 1);
            pools[kind].resize(poolSize);
            for (T &value : pools[kind]) {
                value = support::randomValue<T>(rng, support::allContents[kind]);
            }
        }
        return pools;
    }();
    unsigned kind = 0;
    while ((contents >> kind & 1) == 0) {
        ++kind;
    }
    return reinterpret_cast<const std::uint8_t *>(made[kind].data());
}

template <class T> void storeAs(std::uint8_t *at, std::int64_t value) {
    const T element = static_cast<T>(value);
    std::memcpy(at, &element, sizeof element);
}

// The n-th of the contents that are allowed, around and around.
unsigned nthOf(unsigned allowed, std::uint64_t n) {
    std::vector<unsigned> kinds;
    for (unsigned bit = 1; bit <= special; bit *= 2) {
        if ((allowed & bit) != 0) {
            kinds.push_back(bit);
        }
    }
    return kinds[n % kinds.size()];
}

} // namespace

std::int64_t blocks(std::int64_t x, std::int64_t y, std::uint64_t seed) {
    const std::uint64_t patch = scramble(x / 5, y / 3, seed);
    return static_cast<std::int64_t>(patch % 4 * 60 + scramble(x, y, seed) % (patch % 3 + 1));
}

std::int64_t hills(std::int64_t x, std::int64_t y, std::uint64_t seed) {
    const auto wave = [](std::int64_t t) { // a triangle of period 32 and height 16
        const std::int64_t phase = t & 31;
        return phase < 16 ? phase : 31 - phase;
    };
    const auto shift = static_cast<std::int64_t>(seed % 32);
    return wave(x + shift) * 6 + wave(2 * y + x - shift) * 5 + wave(3 * x - 2 * y) * 4 +
           static_cast<std::int64_t>(scramble(x / 2, y / 2, seed) % 31);
}

std::int64_t twoLevels(std::int64_t x, std::int64_t y, std::uint64_t seed) {
    const std::uint64_t patch = scramble(x / 3, y / 2, seed) % 8, pixel = scramble(x, y, seed) % 16;
    return patch < 2 || pixel == 0 ? static_cast<std::int64_t>(1 + (patch + pixel) * 11) : 0;
}

std::int64_t fewZeros(std::int64_t x, std::int64_t y, std::uint64_t seed) {
    return static_cast<std::int64_t>(scramble(x, y, seed) % 23 == 0 ? 0 : 1 + scramble(x, y, seed) % 255);
}

Margin inMemory(BorderKind border, Margin margin) {
    const bool all = (border & 15) == BorderInMemory;
    return {all || (border & BorderInMemoryLeft) != 0 ? margin.left : 0,
            all || (border & BorderInMemoryTop) != 0 ? margin.top : 0,
            all || (border & BorderInMemoryRight) != 0 ? margin.right : 0,
            all || (border & BorderInMemoryBottom) != 0 ? margin.bottom : 0};
}

std::vector<BorderKind> bordersOf(std::initializer_list<BorderKind> kinds) { return support::bordersOf(kinds); }

const std::vector<RoiSize> &queryRegions() {
    static const std::vector<RoiSize> all = {
        {1, 1}, {2, 3}, {5, 4},  {17, 7}, {33, 9}, {67, 5},        {130, 90},    {1, 500},     {1920, 1080},
        {0, 7}, {7, 0}, {-1, 9}, {9, -5}, {0, 0},  {46341, 46341}, {1, 1 << 30}, {1 << 30, 1}, {INT32_MAX, INT32_MAX}};
    return all;
}

const std::vector<std::int32_t> &queryWidths() {
    static const std::vector<std::int32_t> all = {1, 2, 5, 16, 17, 33, 67, 130, 1920, 0, -1, 1 << 28, INT32_MAX};
    return all;
}

// ------------------------------------------------------------------------------------------------------------- Slots

Slot::Slot(Sweep &sweep) : sweep_(sweep) { sweep.slots_.push_back(this); }

void Slot::fault(const void *field, std::function<void()> apply) {
    sweep_.faults_.push_back({field, std::move(apply)});
}

ChoiceBase::ChoiceBase(Sweep &sweep) : Slot(sweep) { sweep.choices_.push_back(this); }

bool Memory::guarded = true;

Memory::Memory() = default;
Memory::~Memory() = default;

std::uint8_t *Memory::place(std::int64_t bytes, std::int64_t skew, bool guardBefore) {
    constexpr std::int64_t unit = 1 << 14; // whole pages, so that both ends are guarded
    const std::int64_t needed = bytes + skew, distance = guarded ? 0 : unit;
    if (!buffer_ || buffer_->size() < needed + 2 * distance) {
        buffer_ = std::make_unique<support::GuardedBuffer>((needed + unit - 1) / unit * unit + unit + 2 * distance);
    }
    std::uint8_t *start =
        guardBefore ? buffer_->data() + distance + skew : buffer_->data() + (buffer_->size() - distance - needed);
    // The pattern covers what the image may be seen to touch beside its bytes too.
    std::memset(start, 0x5b, static_cast<std::size_t>(bytes));
    return start;
}

Region::Region(Sweep &sweep, Size size) : Slot(sweep), size_(std::move(size)) {
    for (const RoiSize bad : {RoiSize{0, 0}, RoiSize{1, 0}, RoiSize{0, 1}}) {
        fault(this, [this, bad] { roi_ = {bad.width == 0 ? 0 : roi_.width, bad.height == 0 ? -1 : roi_.height}; });
    }
}

void Region::prepare() { roi_ = size_ ? size_(sweep_.roi()) : sweep_.roi(); }

Bytes::Bytes(Sweep &sweep, std::int64_t alignment, bool nullable) : Slot(sweep), alignment_(alignment) {
    if (nullable) {
        fault(this, [this] { data_ = nullptr; });
    }
}

void Bytes::size(std::int64_t bytes) {
    // What stands at any address ends at the unmapped page; what is aligned may leave a few bytes.
    const std::int64_t rounded = (bytes + alignment_ - 1) / alignment_ * alignment_;
    const bool guardBefore = alignment_ == 1 && sweep_.turn() % 3 == 2;
    data_ = good_ = memory_.place(rounded, guardBefore ? sweep_.turn() % 7 : 0, guardBefore);
    std::memset(good_, 0xa5 + sweep_.turn() % 16, static_cast<std::size_t>(rounded));
}

// ------------------------------------------------------------------------------------------------------------ Images

ImageBase::ImageBase(Sweep &sweep, Type type, int elementSize, ImageOptions options)
    : Slot(sweep), type_(type), elementSize_(elementSize), options_(std::move(options)),
      index_(static_cast<int>(sweep.of().next() % 64)) {
    if (!options_.faults) {
        return;
    }
    if (options_.nullable) {
        fault(&data_, [this] { data_ = nullptr; });
    }
    const auto covered = [this] {
        return options_.stepChannels == 0 ? rowBytes_ : rowBytes_ / options_.channels * options_.stepChannels;
    };
    fault(&step, [this, covered] { step = static_cast<std::int32_t>(covered() - 1); });
    fault(&step, [this] { step = -step; });
    if (options_.unevenSteps && elementSize_ > 1) {
        fault(&step, [this, covered] { step = static_cast<std::int32_t>(covered() + 1); });
        fault(&step, [this, covered] { step = static_cast<std::int32_t>(covered() + elementSize_ / 2); });
    }
}

void ImageBase::prepare() {
    const RoiSize roi = options_.size ? options_.size(sweep_.roi()) : sweep_.roi();
    const Margin margin = options_.margin ? options_.margin() : Margin{};
    const std::int64_t layout = options_.tight ? 0 : sweep_.turn() + index_;
    width_ = static_cast<std::int64_t>(roi.width) * options_.channels;
    height_ = roi.height;
    rowBytes_ = width_ * elementSize_;
    const std::int64_t full = rowBytes_ + (margin.left + margin.right) * options_.channels * elementSize_;
    constexpr std::int64_t paddings[] = {0, 3, 1, 13}, skews[] = {0, 0, 1, 3};
    const std::int64_t padding = paddings[layout % 4] * elementSize_;
    goodStep_ = full + padding;
    origin_ = margin.top * goodStep_ + margin.left * options_.channels * elementSize_;
    // Faulty steps may be a little longer: a check that is missing shall show in the digest.
    const std::int64_t slack = sweep_.faulty() ? height_ * elementSize_ : 0;
    size_ = (height_ + margin.top + margin.bottom) * goodStep_ - padding + slack;
    bytes_ = memory_.place(size_, skews[layout % 4], layout / 4 % 2 != 0);
    fill();
    restore();
}

void ImageBase::restore() {
    data_ = bytes_ + origin_;
    step = static_cast<std::int32_t>(goodStep_);
}

std::uint8_t *ImageBase::element(std::int64_t x, std::int64_t y) const {
    return bytes_ + origin_ + y * goodStep_ + x * elementSize_;
}

void ImageBase::fill() {
    const std::uint64_t seed = sweep_.of().next();
    if (options_.picture != nullptr && !(options_.mixed && sweep_.turn() % 2 != 0)) {
        constexpr void (*store[])(std::uint8_t *, std::int64_t) = {
            storeAs<std::uint8_t>, storeAs<std::int8_t>, storeAs<std::uint16_t>, storeAs<std::int16_t>,
            storeAs<std::int32_t>, storeAs<float>,       storeAs<double>};
        const auto put = store[static_cast<int>(type_)];
        const std::int64_t total = size_ / elementSize_;
        // The whole buffer, margins and padding as they come: a picture continues outside its region.
        const std::int64_t stride = goodStep_ / elementSize_;
        for (std::int64_t i = 0; i < total; ++i) {
            const std::int64_t column = i % stride;
            put(bytes_ + i * elementSize_,
                options_.picture(column / options_.channels, i / stride, seed + column % options_.channels));
        }
        return;
    }
    const unsigned kind = nthOf(options_.contents, static_cast<std::uint64_t>(sweep_.turn() / 2 + index_));
    const std::uint8_t *source = nullptr;
    switch (type_) {
    case Type::u8:
        source = pool<std::uint8_t>(kind);
        break;
    case Type::s8:
        source = pool<std::int8_t>(kind);
        break;
    case Type::u16:
        source = pool<std::uint16_t>(kind);
        break;
    case Type::s16:
        source = pool<std::int16_t>(kind);
        break;
    case Type::s32:
        source = pool<std::int32_t>(kind);
        break;
    case Type::f32:
        source = pool<float>(kind);
        break;
    case Type::f64:
        source = pool<double>(kind);
        break;
    }
    const std::int64_t poolBytes = poolSize * elementSize_;
    std::int64_t from = static_cast<std::int64_t>(seed % poolSize) * elementSize_;
    for (std::int64_t done = 0; done < size_;) {
        const std::int64_t part = std::min(size_ - done, poolBytes - from);
        std::memcpy(bytes_ + done, source + from, static_cast<std::size_t>(part));
        done += part;
        from = 0;
    }
}

void ImageBase::digest(Digest &digest) const {
    if (!options_.digested) {
        return;
    }
    const auto rows = [&]<class T>(T) {
        // Bytes outside the region as they are, numbers inside it.
        const std::uint8_t *at = bytes_;
        for (std::int64_t y = 0; y < height_; ++y) {
            const std::uint8_t *row = element(0, y);
            digest.bytes(at, row - at);
            for (std::int64_t x = 0; x < width_; ++x) {
                T value;
                std::memcpy(&value, row + x * elementSize_, sizeof value);
                digest.number(!options_.zeroSign && value == 0 ? T{0} : value);
            }
            at = row + rowBytes_;
        }
        digest.bytes(at, bytes_ + size_ - at);
    };
    if (type_ == Type::f32 && !options_.keepsBits) {
        rows(0.0F);
    } else if (type_ == Type::f64 && !options_.keepsBits) {
        rows(0.0);
    } else {
        digest.bytes(bytes_, size_);
    }
}

// ------------------------------------------------------------------------------------------------------------ Sweeps

Sweep::Sweep(Run &run, Plan plan) : run_(run), plan_(std::move(plan)) {}

std::uint64_t Sweep::combinations() const {
    std::uint64_t all = 1;
    for (const ChoiceBase *choice : choices_) {
        all *= choice->count();
    }
    return all;
}

void Sweep::prepare(RoiSize roi, std::uint64_t combination) {
    roi_ = roi;
    for (ChoiceBase *choice : choices_) {
        choice->select(combination % choice->count());
        combination /= choice->count();
    }
    for (Slot *slot : slots_) {
        slot->prepare();
    }
    before();
}

void Sweep::conclude(StatusCode status) {
    run_.digest.number(status);
    ++run_.statuses[faulty_ ? 1 : 0][status];
    for (const Slot *slot : slots_) {
        slot->digest(run_.digest);
    }
    after(status);
    if (Run::traced) {
        std::fprintf(stderr, "%s call %d, %d x %d: %d, %016" PRIx64 "\n", run_.name, turn_, roi_.width, roi_.height,
                     status, run_.digest.value());
    }
    ++turn_;
}

void Sweep::pass(RoiSize roi, std::uint64_t combination, const std::function<StatusCode()> &call) {
    prepare(roi, combination);
    conclude(call());
}

void Sweep::run(const std::function<StatusCode()> &call) {
    const std::uint64_t all = combinations();
    // A stride without a common divisor walks through all combinations before it repeats one.
    std::uint64_t stride = all * 5 / 8 + 1, at = 0;
    const auto common = [](std::uint64_t a, std::uint64_t b) {
        while (b != 0) {
            a = std::exchange(b, a % b);
        }
        return a;
    };
    while (common(stride, all) != 1) {
        ++stride;
    }
    const auto next = [&] { return at = (at + stride) % all; };
    for (const RoiSize roi : plan_.sizes) {
        for (int round = 0; round < plan_.rounds; ++round) {
            pass(roi, next(), call);
        }
    }
    const std::uint64_t most = std::min(all, static_cast<std::uint64_t>(plan_.combinations));
    for (std::uint64_t n = 0; n < most; ++n) {
        pass(plan_.choices, next(), call);
    }
    if (plan_.large.width > 0) {
        pass(plan_.large, next(), call);
    }
    if (plan_.faulty) {
        runFaults(call);
    }
}

void Sweep::runFaulty(std::initializer_list<std::size_t> which, const std::function<StatusCode()> &call) {
    for (auto a = which.begin(); a != which.end(); ++a) {
        for (auto b = a + 1; b != which.end(); ++b) {
            if (faults_[*a].field == faults_[*b].field) {
                return;
            }
        }
    }
    for (const std::size_t one : which) {
        faults_[one].apply();
    }
    const StatusCode status = call();
    for (Slot *slot : slots_) {
        slot->restore();
    }
    conclude(status);
    // A warning, or arguments that turn out to be legal, write: what follows starts from a fresh state again.
    if (status >= 0) {
        prepare(plan_.faults, 0);
    }
}

void Sweep::runFaults(const std::function<StatusCode()> &call) {
    faulty_ = true;
    prepare(plan_.faults, 0);
    const std::size_t count = faults_.size();
    for (std::size_t i = 0; i < count; ++i) {
        runFaulty({i}, call);
        for (std::size_t j = i + 1; j < count; ++j) {
            runFaulty({i, j}, call);
        }
    }
    for (int n = 0; count >= 3 && n < 24; ++n) {
        runFaulty({run_.next() % count, run_.next() % count, run_.next() % count}, call);
    }
    faulty_ = false;
}

} // namespace contract
