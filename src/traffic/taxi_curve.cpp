#include "traffic/taxi_curve.h"

#include "core/base/log.h"
#include "core/base/text.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vlt {

static constexpr double kMetresPerDegree = 111132.95;  // of latitude
static constexpr double kEndOfCurve = 0.999999;        // its end itself counts as outside

static double lf_metresPerDegreeOfLongitude(double lat)
{
    return std::cos(lat * kRadPerDeg) * kMetresPerDegree;
}

bool gf_hasCurve(const Curve& curve)
{
    return !std::isnan(curve.ctlE) && !std::isnan(curve.ctlN);
}

void makeCurve(LiveAc& ac)
{
    const PosSample& control = ac.stream[1];
    PosSample& end = ac.stream[2];
    if (end.speed == 0) {
        end.speed = (ac.stream[0].speed + control.speed) / 2;
    }
    Curve curve;
    curve.lat0 = ac.lat;
    curve.lon0 = ac.lon;
    const double perLon = lf_metresPerDegreeOfLongitude(ac.lat);
    curve.endN = (end.lat - ac.lat) * kMetresPerDegree;
    curve.endE = std::remainder(end.lon - ac.lon, 360.0) * perLon;
    curve.ctlN = (control.lat - ac.lat) * kMetresPerDegree;
    curve.ctlE = std::remainder(control.lon - ac.lon, 360.0) * perLon;
    ac.curve = curve;
    ac.stream.erase(ac.stream.begin() + 1);
}

std::optional<CurvePoint> curvePoint(const Curve& curve, double t)
{
    if (!gf_hasCurve(curve) || !(t >= curve.t0 && t <= curve.t1)) {
        return std::nullopt;
    }
    const double u = (t - curve.t0) / (curve.t1 - curve.t0);
    const double toControl = 2 * (1 - u);
    const double east = toControl * u * curve.ctlE + u * u * curve.endE;
    const double north = toControl * u * curve.ctlN + u * u * curve.endN;
    const double tangentE = 2 * u * (curve.endE - curve.ctlE) + toControl * curve.ctlE;
    const double tangentN = 2 * u * (curve.endN - curve.ctlN) + toControl * curve.ctlN;
    return CurvePoint{curve.lat0 + north / kMetresPerDegree,
                      curve.lon0 + east / lf_metresPerDegreeOfLongitude(curve.lat0),
                      gf_normalAngle(std::atan2(tangentE, tangentN))};
}

void gf_turnTowards(LiveAc& ac, double target)
{
    constexpr double kFits = 0.5 * kRadPerDeg;
    const double off = angleDiff(ac.hdg, target);
    if (std::abs(off) > kFits) {
        ac.hdg = gf_normalAngle(ac.hdg + std::clamp(off, -ac.turnRate, ac.turnRate));
    }
}

void gf_followCurve(LiveAc& ac)
{
    ac.curve.t = std::min(ac.curve.t + ac.curve.dt, kEndOfCurve);
    const auto point = curvePoint(ac.curve, ac.curve.t);
    if (!point) {
        logLine(format("{} error in curve at index: {:.2F}", ac.callsign, ac.curve.t));
        return;
    }
    ac.lat = point->lat;
    ac.lon = point->lon;
    // Backwards the tail goes first.
    const bool backwards = ac.st == StState::PushingBack;
    gf_turnTowards(ac, backwards ? gf_normalAngle(point->bearing + std::numbers::pi) : point->bearing);
}

}  // namespace vlt
