// The way of a leg: from where the aircraft is to the second sample of its stream.
//
// It is a cubic Hermite curve: it leaves with the aircraft's velocity and arrives with the one with which the
// next leg will leave, so that neither the speed nor the nose jumps at a sample, and every reported place is
// passed. Worker thread, no state.
#pragma once

#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <cstdint>

namespace vlt {

inline constexpr double kMetresPerTickPerKnot = kMetresPerNm / 360000.0;

// The fastest turn of the nose, radians per tick.
double gf_fastestTurn(const LiveAc& ac);

// One that stands turns on a narrow arc before it taxies off, if its nose is far off the leg ahead. Ticks
// that it needs for that; 0 if it needn't.
double gf_ticksOfTurn(const LiveAc& ac);
// It stands, and doesn't just not move yet.
bool gf_stands(const LiveAc& ac);
// Inserts the end of that arc as the second sample.
void gf_turnFirst(LiveAc& ac);

// From one place to another, on the plane that touches the globe at the first.
Metres gf_metres(LatLon from, LatLon to);

// The aircraft is moved tail first over the leg ahead: it is being pushed, or its reports tell of a nose that
// looks back.
bool gf_goesBackwards(const LiveAc& ac);

// By how many radians an aircraft has to turn over the leg ahead: into it, and towards the one after it.
double gf_turnOfLeg(const LiveAc& ac);

// After the leg the aircraft stands on the ground, elsewhere than at a stand.
bool gf_stopsAfterLeg(const LiveAc& ac);

// Lays the way of the leg, `ticks` long, from the aircraft to the second sample.
void gf_layWay(LiveAc& ac, int32_t ticks);

// Lays a quadratic Bezier curve from the aircraft past the second sample of its stream, which is the control
// point and is erased, to the third. The stream holds at least three samples.
void makeCurve(LiveAc& ac);

// A way has been laid for the leg.
bool gf_isLaid(const Way& way);

// One tick along the way: place and velocity.
void gf_stepWay(LiveAc& ac);

// Where the nose of one that follows its way belongs at the moment, radians.
double gf_noseOnWay(const LiveAc& ac);

// One tick of turning towards `target`, in radians, by `rate` at most, in radians per tick.
void gf_turnTowards(LiveAc& ac, double target, double rate);

}  // namespace vlt
