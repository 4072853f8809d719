// The numbers of the exceptions that the simulator raises.
//
// Constants only.
#pragma once

#include <cstdint>

namespace vlt {

enum SimException : uint32_t {
    kExceptionSizeMismatch = 2,
    kExceptionUnrecognizedId = 3,
    kExceptionVersionMismatch = 5,
    kExceptionNameUnrecognized = 7,
    kExceptionEventIdDuplicate = 9,
    kExceptionTooManyObjects = 11,
    kExceptionInvalidDataType = 18,
    kExceptionInvalidDataSize = 19,
    kExceptionDataError = 20,
    kExceptionCreateFailed = 22,
    kExceptionFlightPlanFailed = 23,
};

}  // namespace vlt
