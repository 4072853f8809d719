// The log: one file, one line per event, each flushed so that a crash leaves it complete.
//
// Any thread; every line takes logMutex. Before `logStart`, and after `gf_logEnd`, lines go nowhere.
#pragma once

#include <string>
#include <string_view>

namespace vlt {

// Opens `Log.txt` in the current directory; two older logs are kept as Log0.txt and Log00.txt.
// Throws std::runtime_error if the file can't be written.
void logStart();
// Flushes and closes the log.
void gf_logEnd();

void logLine(std::string_view text);
// With the time of day in front.
void logLineTimed(std::string_view text);
// Silent once a stop or close is requested.
void logLineUnlessStopping(std::string_view text);
// A line of stars, `width` wide, with the title in its middle; with an empty title just stars.
void logBanner(std::string_view title, int width = 70);

}  // namespace vlt
