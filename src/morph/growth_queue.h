// A queue for growth that never rises above the level it stands at: lists by level, taken from the highest level
// downwards. A node is a number with a link; its key is an unsigned integer of `digits` bytes. Keys that share all
// higher bytes with the current one are told apart by their lowest byte, others by the highest byte in which they
// differ from it; when the lists of a byte are used up, the highest list of the next byte is dealt out to them. So a
// node moves at most `digits` times, whatever the keys are.
#pragma once

#include "kernel/base.h"

#include <bit>

namespace rvxcv {

template <int digits> class GrowthQueue {
public:
    using Node = std::uint32_t;

    explicit GrowthQueue(Node *links) : links_(links) {}

    std::uint32_t current() const { return current_; }

    // No key may exceed the current one.
    RVX_INLINE void push(Node node, std::uint32_t key) {
        int digit = 0;
        if constexpr (digits > 1) {
            digit = (31 - std::countl_zero((key ^ current_) | 1)) / 8;
        }
        const std::uint32_t level = key >> (8 * digit) & 0xff;
        std::uint64_t &used = used_[digit][level / 64];
        const std::uint64_t bit = 1ull << (level % 64);
        Node &head = heads_[digit][level];
        links_[node] = (used & bit) != 0 ? head : last;
        head = node;
        used |= bit;
    }

    // The next node in *node; keyOf(node) gives its key again. False when there is none.
    template <class KeyOf> RVX_INLINE bool pop(Node *node, const KeyOf &keyOf) {
        for (;;) {
            int level = highest(0);
            if (level >= 0) {
                current_ = (current_ & ~0xffu) | static_cast<std::uint32_t>(level);
                Node &head = heads_[0][level];
                *node = head;
                head = links_[head];
                if (head == last) {
                    drop(0, level);
                }
                return true;
            }
            int digit = 1;
            for (; digit < digits && (level = highest(digit)) < 0; ++digit) {
            }
            if (digit >= digits) {
                return false;
            }
            deal(digit, level, keyOf);
        }
    }

private:
    static constexpr Node last = UINT32_MAX;

    RVX_INLINE int highest(int digit) const {
        for (int word = 3; word >= 0; --word) {
            if (used_[digit][word] != 0) {
                return 64 * word + 63 - std::countl_zero(used_[digit][word]);
            }
        }
        return -1;
    }
    RVX_INLINE void drop(int digit, int level) { used_[digit][level / 64] &= ~(1ull << (level % 64)); }

    template <class KeyOf> void deal(int digit, int level, const KeyOf &keyOf) {
        drop(digit, level);
        const std::uint32_t below = (1u << (8 * digit)) - 1;
        current_ =
            (current_ & ~(below | 0xffu << (8 * digit))) | static_cast<std::uint32_t>(level) << (8 * digit) | below;
        for (Node node = heads_[digit][level]; node != last;) {
            const Node next = links_[node];
            push(node, keyOf(node));
            node = next;
        }
    }

    Node *links_;
    std::uint32_t current_ = static_cast<std::uint32_t>((1ull << (8 * digits)) - 1);
    std::uint64_t used_[digits][4]{};
    Node heads_[digits][256]; // of the lists that are used
};

} // namespace rvxcv
