#include "platform/timer.h"

namespace vlt {

FineTimer::FineTimer() = default;

FineTimer::~FineTimer() = default;

}  // namespace vlt
