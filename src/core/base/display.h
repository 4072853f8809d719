// What the window shows: the fields that are painted, and the message and error line at its bottom.
//
// Any thread writes its fields; the painter reads them without a lock, a torn value costs one wrong
// paint. All texts stand under displayMutex. Without a window the same fields feed the status lines.
#pragma once

#include "core/base/shared_value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vlt {

enum class FeedState : int32_t { Receiving = 1, Silent = 2, Stopped = 3 };

// The state of the display. Texts are read and written through the functions below only.
struct Display {
    std::string errorText;                    // [displayMutex]
    std::string messageText;                  // [displayMutex]
    std::string titleText;                    // [displayMutex] user aircraft title, cut for the window
    std::string modelText;                    // [displayMutex] user aircraft model
    std::string standText;                    // [displayMutex] user's stand
    std::string airportCode;                  // [displayMutex] the park airport's, empty for none
    std::string airportName;                  // [displayMutex]
    std::string qualityText;                  // [displayMutex] of its parking history
    std::string reservedStandText;            // [displayMutex] the stand kept free for the user
    std::string simText;                      // [displayMutex] "{} ({}.{}.{}.{})" of the connected simulator
    std::string rtVersionText;                // [displayMutex] empty in this version
    SharedValue<int32_t> messageSecond = 0;   // secondsCounter when messageText was set, 0 none
    SharedValue<int32_t> secondsCounter = 0;  // counts once a second while traffic runs
    SharedValue<bool> simIndicator = false;   // connected to the simulator
    SharedValue<bool> simRunningIndicator = false;
    SharedValue<bool> rtIndicator = false;
    SharedValue<bool> rtWaiting = false;
    SharedValue<FeedState> trafficFeedState = FeedState::Stopped;
    SharedValue<FeedState> weatherFeedState = FeedState::Stopped;
    SharedValue<int32_t> liveCount = 0;
    SharedValue<int32_t> minutesToRenewal = 0;
    SharedValue<int32_t> liveriesCount = -1;  // -1 while not known
    SharedValue<int32_t> thirdPartyCount = 0;
    SharedValue<int32_t> orbxCount = 0;
    SharedValue<int32_t> standCount = 0;           // of the park airport
    SharedValue<int32_t> airportAltitude = 0;      // of the park airport, feet
    SharedValue<int32_t> trafficWeek = 0;          // of the data behind its file
    SharedValue<bool> handmade = false;            // its stands are the user's own
    SharedValue<bool> learnSoftEnabled = true;     // the box of LEARN_SOFT takes input
    SharedValue<bool> percentageEnabled = false;   // the box of parking_percentage
    SharedValue<bool> flushStaticEnabled = false;  // the button
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

// Replaces one of the texts of `display`.
void gf_setText(std::string Display::*field, std::string_view text);
// A copy of one of the texts of `display`.
std::string gf_textOf(const std::string Display::*field);

// Once a second while traffic runs: counts, and takes a message of more than 25 s away.
void gf_displaySecond();

// Everything that belongs to one run as at its start; the liveries count stays.
void gf_resetDisplay();

// Texts shown without a window: each message and error is also given to `listener`, which runs on the
// thread that shows it and must not call back. nullptr for none.
using MessageListener = void (*)(std::string_view text, bool isError);
void gf_setMessageListener(MessageListener listener);

}  // namespace vlt
