// The curve that a taxiing aircraft takes round a bend: a quadratic Bezier in metres around its start.
//
// Worker thread, no state.
#pragma once

#include "traffic/traffic.h"

#include <optional>

namespace vlt {

struct CurvePoint {
    double lat = 0;
    double lon = 0;
    double bearing = 0;  // of the tangent, radians
};

// A curve is in force.
bool gf_hasCurve(const Curve& curve);

// The curve from the aircraft past the second sample of its stream, which is the control point and is
// erased, to the third. The stream holds at least three samples.
void makeCurve(LiveAc& ac);

// Where the curve is at `t`; none outside it and without a curve.
std::optional<CurvePoint> curvePoint(const Curve& curve, double t);

// One tick of turning towards `target`, in radians, at the turn rate in force, until it fits.
void gf_turnTowards(LiveAc& ac, double target);

// One tick along the curve in force: position, and the heading towards the tangent.
void gf_followCurve(LiveAc& ac);

}  // namespace vlt
