// What was typed into a box of the window, when Enter is pressed.
//
// Any thread, one at a time; like every command it stores and saves at once and leaves the rest to the
// worker.
#pragma once

#include "core/base/parameters.h"

#include <string_view>

namespace vlt {

enum class Typed {
    Stored,
    Same,        // it is the present value
    Unreadable,  // it isn't a number, which is logged
};

// A number box: an empty text stands for the default, a number is brought into the range.
Typed lf_processTbInt(IntTextbox& box, std::string_view text);
Typed lf_processTbFloat(FloatTextbox& box, std::string_view text);  // hours, in steps of half an hour

// A text box.
void gf_enterText(StringTextbox& box, std::string_view text);

}  // namespace vlt
