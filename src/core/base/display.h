// What the window shows: the fields that are painted, a record for each subject, and the message and error
// line at its bottom.
//
// Any thread writes its fields; the painter reads them without a lock, a torn value costs one wrong paint.
// Message and error are set under displayMutex, so that no message comes over an error. Without a window the
// same fields feed the status lines.
#pragma once

#include "core/base/shared_text.h"
#include "core/base/shared_value.h"

#include <cstdint>
#include <string_view>

namespace vlt {

struct ShownSim {
    SharedText name;  // "{} ({}.{}.{}.{})" of the connected simulator
    SharedValue<bool> connected = false;
    SharedValue<bool> running = false;
};

struct ShownUser {
    SharedText title;  // of the aircraft, cut for the window
    SharedText model;
};

// The park airport; as it is made: none.
struct ShownAirport {
    SharedText code;
    SharedText name;
    SharedText quality;        // of its parking history
    SharedText reservedStand;  // kept free for the user
    SharedText userStand;      // at which the user is
    SharedValue<int32_t> standCount = 0;
    SharedValue<int32_t> altitude = 0;             // feet
    SharedValue<int32_t> wanted = 0;               // parked aircraft
    SharedValue<int32_t> wantedPercent = 0;        // of the stands
    SharedValue<int32_t> maxFitReal = -1;          // half hours back that the planning went; -1 not yet
    SharedValue<int32_t> maxFitSoft = -1;          // the same for inferred options
    SharedValue<int32_t> staticCount = 0;          // static aircraft that stand
    SharedValue<bool> parkingEnabled = true;       // the boxes of the parking settings
    SharedValue<int32_t> trafficWeek = 0;          // of the data behind its file
    SharedValue<bool> handmade = false;            // its stands are the user's own
    SharedValue<bool> learnSoftEnabled = true;     // the box of LEARN_SOFT takes input
    SharedValue<bool> percentageEnabled = false;   // the box of parking_percentage
    SharedValue<bool> flushStaticEnabled = false;  // the button
};

// The scan of what the user has installed; an empty folder: none runs.
struct ShownScan {
    SharedText folder;
    SharedValue<int32_t> files = 0;  // seen so far
    SharedValue<int32_t> found = 0;  // liveries or airports found so far
};

struct Display {
    SharedText error;                         // empty: none
    SharedText message;                       // empty: none
    SharedValue<int32_t> messageSecond = 0;   // secondsCounter when the message was set, 0 none
    SharedValue<int32_t> secondsCounter = 0;  // counts once a second while traffic runs
    ShownSim sim;
    ShownUser user;
    ShownAirport airport;
    ShownScan scan;
    SharedValue<bool> realTraffic = false;  // it is connected
    SharedValue<int32_t> liveCount = 0;
    SharedValue<int32_t> minutesToRenewal = 0;
    SharedValue<int32_t> liveriesCount = -1;  // -1 while not known
    SharedValue<int32_t> thirdPartyCount = 0;
    SharedValue<int32_t> orbxCount = 0;
    SharedValue<bool> installPathEnabled = false;  // the install path's box takes input
};
extern Display display;

// Sets the message line; an empty text clears it. Does nothing while an error is shown.
void showMessage(std::string_view text, bool alsoLog);
void clearMessage();
// Shows and logs an error, which stays until the display is reset.
void showError(std::string_view text);
// Takes the error line away, for a restart.
void gf_clearError();

// Once a second while traffic runs: counts, and takes a message of more than 25 s away.
void gf_displaySecond();

// Everything that belongs to one run as at its start; the liveries count stays.
void gf_resetDisplay();

// Texts shown without a window: each message and error is also given to `listener`, which runs on the
// thread that shows it and must not call back. nullptr for none.
using MessageListener = void (*)(std::string_view text, bool isError);
void gf_setMessageListener(MessageListener listener);

}  // namespace vlt
