// Where an aircraft is due by its own reports, half a minute after each, and how far its object is from
// there.
//
// Pure; one thread at a time. Distances in metres, times in ticks unless named otherwise.
#pragma once

#include "traffic/geodesy.h"
#include "traffic/traffic.h"

#include <optional>
#include <vector>

namespace vlt {

// A place on the way of the reports, between two of them.
struct DuePlace {
    LatLon at;
    double altitude = 0;  // feet
    double knots = 0;
    bool airborne = false;  // both reports around it are
    bool taxis = false;     // both are on the ground, slower than a runway's speeds
};

// How an object differs from its reports.
struct DueOffset {
    double metres = 0;   // from the place that is due now
    double feet = 0;     // above it
    double seconds = 0;  // later than due, along the way; 0 for one that is due to stand
};

class DueTrack
{
public:
    // `needsNoRun`: a helicopter, which lifts off at any speed.
    void add(const PosSample& sample, bool needsNoRun);
    // The place that is due; none before the first report, after the last, and in a gap of more than 30 s,
    // in which nobody can tell.
    std::optional<DuePlace> placeAt(double when) const;
    // Of an object at `altitude` feet from the place that is due now.
    DueOffset offsetFrom(const DuePlace& due, LatLon object, double altitude, int32_t now) const;
    // When the first report of the air after one on the ground was due that is nearest to `now`; none if
    // that is more than a minute off or ends a gap of more than 30 s.
    std::optional<int32_t> liftOffNear(int32_t now) const;

private:
    struct Report {
        int32_t due;
        LatLon at;
        double altitude;
        double knots;
        bool airborne;
        bool lifts;  // in the air, or on its way there
    };
    size_t reportAfter(double when) const;
    double ticksLate(LatLon object, int32_t now) const;

    std::vector<Report> m_reports;  // by due time, rising
};

}  // namespace vlt
