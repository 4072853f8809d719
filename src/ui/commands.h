// What the user can do: click a check box, press a button, type into a box and press Enter.
//
// Any thread, one command at a time. A change is stored and saved at once; what the worker must do about it
// is asked by flags. Without a window the same is done by lines of text.
#pragma once

#include "core/base/parameters.h"

#include <string>
#include <string_view>

namespace vlt {

// The control takes input now.
bool gf_isEnabled(const Parameter& control);

// A setting that the park airport's learned file keeps is the user's own; nothing if there is no such
// airport.
void gf_notePerAirport();

// A setting that static parking is planned by: a renewal follows within 15 s, and the message line tells
// when.
void gf_respondSoon();

// Turns the box round, with all that follows.
void gf_clickCheckbox(Checkbox& box);

// The button of this name, in any case of its letters; nullptr for none that does anything.
const Button* gf_findButton(std::string_view name);
void gf_pressButton(const Button& button);

}  // namespace vlt
