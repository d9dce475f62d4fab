#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace valdorn::simulation {

// A small generator (SplitMix64) that draws the same on every platform and with every library, so
// that a seed found anywhere can be replayed here. A value; one thread at a time.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        state_ += 0x9E3779B97F4A7C15U;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31U);
    }

    // A number below `bound`, which is not 0. The slight bias of the remainder does no harm here.
    std::size_t below(std::size_t bound) { return static_cast<std::size_t>(next() % bound); }

    // True in `percent` of a hundred cases.
    bool chance(unsigned percent) { return below(100) < percent; }

    // One of the items of a container that is not empty.
    template <typename Items>
    const auto& pick(const Items& items) {
        return *(items.begin() + static_cast<std::ptrdiff_t>(below(items.size())));
    }
    template <typename Item>
    Item pick(std::initializer_list<Item> items) {
        return *(items.begin() + below(items.size()));
    }

private:
    std::uint64_t state_;
};

}  // namespace valdorn::simulation
