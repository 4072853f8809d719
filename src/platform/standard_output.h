// Lines to standard output that never hold the program.
//
// Whoever started the program may have stopped reading: a line that can't be taken at once is dropped.
// Any thread; one lock inside, under which nothing else is called.
#pragma once

#include <string_view>

namespace vlt {

// Writes the text and a line end. False if it was dropped, or its end was.
bool gf_printLine(std::string_view text);

}  // namespace vlt
