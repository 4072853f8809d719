// The program's own exception, for a failure that the user must read.
#pragma once

#include <fmt/format.h>

#include <stdexcept>
#include <string>

namespace vlt {

// Without a number of its own.
inline constexpr int kPlainUserError = 99;

// Its text is "{code}: {text}", or the bare text with kPlainUserError. It ends a run as SYSTEM ERROR,
// with the text on the window's error line.
class UserErrorException : public std::runtime_error
{
public:
    UserErrorException(int code, const std::string& text)
        : std::runtime_error(code == kPlainUserError ? text : fmt::format("{}: {}", code, text))
    {
    }
};

}  // namespace vlt
