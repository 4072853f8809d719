// Binds registrations to livery titles: from the liveries themselves, from the server's regcode file and
// from the user's own files, in rising order of authority.
//
// Worker thread, when the master index stands. State: `regcodeTitles`, `specialTitles` and
// `dontUseTitles` of liveries.h. A source that can't be had is logged and left out.
#pragma once

#include "liveries/liveries.h"
#include "liveries/regcode_files.h"

#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// Appends the server file's and the user's titles without a registration to `dontUseTitles`, for a scan.
void readDontUseTitles();
bool isDontUseTitle(std::string_view title);

// Enters the registrations printed on the liveries of the list `liveries`. Clashes keep the first, and
// are written to a report.
void collectInlineRegcodes();

// Enters those of the server's file and of the user's files. A later source wins. What was done goes to
// a report, and special titles to `specialTitles`.
void processRegcodeFiles();

// The title of the first variant that has one; empty when there is none.
std::string_view findRegcodeTitle(std::string_view regcode);

// Enters entries of installed titles, and appends what changed and a line of counts to `results`.
void gf_processRegcodeEntries(const std::vector<RegcodeEntry>& entries, std::vector<std::string>& results);

}  // namespace vlt
