#include "core/base/random.h"

#include "core/base/parameters.h"

#include <random>

namespace vlt {

static thread_local std::mt19937_64 randomEngine{std::random_device{}()};  // [each thread its own]

uint32_t gf_randomNumber()
{
    return static_cast<uint32_t>(randomEngine());
}

void gf_seedRandom(uint64_t seed)
{
    randomEngine.seed(seed);
}

bool gf_randomAllowed()
{
    return RANDOM.value;
}

size_t randomIndex(size_t n)
{
    return !RANDOM.value || n < 2 ? 0 : gf_randomNumber() % n;
}

}  // namespace vlt
