// The pictures of docs/motion.md: what an aircraft did around a stand, on a taxiway and on a runway.
//
// Pure functions; any thread.
#pragma once

#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <string>
#include <vector>

namespace vlt {

// An aircraft at one moment of a replay of the built-in day.
struct MotionLook {
    double time = 0;  // seconds of the replay
    LatLon at;
    double altitude = 0;    // feet
    double headingDeg = 0;  // true
    double pitchDeg = 0;    // positive nose up
    double knots = 0;       // as sent; negative while pushing back
    StState st = StState::Birth;
    bool onGround = false;
};

// A position that was reported, and when the aircraft is due there.
struct MotionReport {
    double due = 0;  // seconds of the replay
    LatLon at;
};

// One object.
struct MotionTrack {
    std::string name;  // call sign and model
    double spanM = 0;
    std::vector<MotionLook> looks;      // several a second, by time
    std::vector<MotionReport> reports;  // by time
};

struct MotionPicture {
    std::string name;
    std::string svg;
};

// Arrival, landing, push-back, take-off and taxi, each of the first aircraft that did it. Throws
// std::runtime_error if nobody did.
std::vector<MotionPicture> gf_motionPictures(const std::vector<MotionTrack>& tracks);

}  // namespace vlt
