// Chance, where the user allows it: the parameter RANDOM off makes every choice the first one.
//
// One engine per thread, so no lock. A replay seeds its thread to give the same output twice.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vlt {

// The next number of this thread's engine, whatever RANDOM says.
uint32_t gf_randomNumber();
// Starts this thread's engine anew from `seed`.
void gf_seedRandom(uint64_t seed);

// RANDOM is on.
bool gf_randomAllowed();

// 0 when RANDOM is off or n is below 2, else one of 0 to n - 1.
size_t randomIndex(size_t n);

// Puts a list in random order, in place; nothing happens with RANDOM off.
template <typename T>
void gf_shuffle(std::vector<T>& list)
{
    if (!gf_randomAllowed()) {
        return;
    }
    for (size_t left = list.size(); left > 1; --left) {
        std::swap(list[randomIndex(left)], list[left - 1]);
    }
}

}  // namespace vlt
