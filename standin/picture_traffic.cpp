#include "standin/picture_traffic.h"

#include "core/base/text.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vlt {

constexpr double kMoment = 2.5;  // seconds
constexpr double kLabelHeight = 11;
constexpr double kCharWidth = 6.1;
constexpr double kNewestSeconds = 300;  // a track older than this counts as history and is drawn faintly

bool gf_isPresent(const ObjectLife& life, double now)
{
    return life.removedAt == kNeverInLife || life.removedAt > now - kMoment;
}

static std::string lf_trackPart(const std::string& points, const std::string& colour, double width,
                                double opacity)
{
    return format("<polyline points='{}' fill='none' stroke='{}' stroke-width='{:.1f}' opacity='{:.2f}' "
                  "stroke-linejoin='round' stroke-linecap='round'/>\n",
                  points, colour, width, opacity);
}

// A track in pieces of one colour each.
static std::string lf_track(const SvgMap& map, const ObjectLife& life, double now, double width)
{
    const double old = gf_isPresent(life, now) ? 0.35 : 0.15;
    std::string svg;
    std::string points;
    std::string colour;
    bool fresh = false;
    int count = 0;
    const auto finish = [&] {
        if (count > 1) {
            svg += lf_trackPart(points, colour, width, fresh ? 0.9 : old);
        }
    };
    for (const TrackPoint& point : life.track) {
        const PagePoint at = gf_onPage(map, {point.lat, point.lon});
        const std::string here = gf_heightColour(std::round(point.altitude / 500) * 500, point.onGround);
        const bool freshHere = gf_isPresent(life, now) && now - point.time < kNewestSeconds;
        if (here != colour || freshHere != fresh) {
            const size_t last = points.find_last_of(' ', points.size() > 1 ? points.size() - 2 : 0);
            const std::string joint =
                points.empty() ? "" : points.substr(last == std::string::npos ? 0 : last + 1);
            finish();
            points = joint;
            count = joint.empty() ? 0 : 1;
            colour = here;
            fresh = freshHere;
        }
        points += gf_pair(at) + " ";
        ++count;
    }
    finish();
    return svg;
}

static std::string lf_symbol(PagePoint at, const TrackPoint& point, const std::string& category, double size)
{
    const std::string colour = gf_heightColour(point.altitude, point.onGround);
    // An aircraft from above, nose up, 20 units long; a helicopter is its rotor.
    const char* plane = "M0,-10 L1.6,-5 L1.6,-1.5 L10,3.5 L10,5.5 L1.6,3 L1.2,7 L4,9 L4,10 L0,9 "
                        "L-4,10 L-4,9 L-1.2,7 L-1.6,3 L-10,5.5 L-10,3.5 L-1.6,-1.5 L-1.6,-5 Z";
    const char* helicopter = "M-7,-8.5 L7,5.5 M7,-8.5 L-7,5.5 M0,-4 L0,10 M-2.5,10 L2.5,10";
    const bool rotor = category == "Rotorcraft";
    return format("<path transform='translate({:.1f},{:.1f}) rotate({:.0f}) scale({:.2f})' d='{}' fill='{}' "
                  "stroke='{}' stroke-width='{}'/>\n",
                  at.x, at.y, point.heading * kDegPerRad, size, rotor ? helicopter : plane,
                  rotor ? "none" : colour, rotor ? colour : "#08131d", rotor ? 2.2 : 0.8);
}

std::string gf_heightText(const TrackPoint& point)
{
    return point.onGround            ? "gnd"
           : point.altitude >= 10000 ? format("FL{:03.0f}", point.altitude / 100)
                                     : format("{:.0f} ft", std::round(point.altitude / 100) * 100);
}

// Where the label goes: the first of some places round the symbol that is free, else none.
static bool lf_placeLabel(std::vector<PageBox>& taken, PagePoint at, size_t letters, PagePoint& label)
{
    const double width = static_cast<double>(letters) * kCharWidth;
    const double height = 2 * kLabelHeight;
    const std::array<PagePoint, 8> offsets{{{12, -4},
                                            {-12 - width, -4},
                                            {-width / 2, 24},
                                            {-width / 2, -28},
                                            {16, 20},
                                            {16, -26},
                                            {-16 - width, 20},
                                            {-16 - width, -26}}};
    for (const PagePoint& offset : offsets) {
        label = {at.x + offset.x, at.y + offset.y};
        const PageBox box{label.x, label.y - kLabelHeight, label.x + width, label.y + height - kLabelHeight};
        if (std::none_of(taken.begin(), taken.end(), [&](const PageBox& b) { return gf_overlaps(b, box); })) {
            taken.push_back(box);
            return true;
        }
    }
    return false;
}

static std::string lf_label(std::vector<PageBox>& taken, PagePoint at, const ObjectLife& life)
{
    const TrackPoint& point = life.track.back();
    const std::string second = format("{} {}", life.model, gf_heightText(point));
    PagePoint label;
    if (!lf_placeLabel(taken, at, std::max(life.tailNumber.size(), second.size()), label)) {
        return {};
    }
    return format("<text x='{:.1f}' y='{:.1f}' class='label'>{}</text>"
                  "<text x='{:.1f}' y='{:.1f}' class='detail'>{}</text>\n",
                  label.x, label.y, gf_xmlText(life.tailNumber), label.x, label.y + kLabelHeight,
                  gf_xmlText(second));
}

static bool lf_shown(const SvgMap& map, const ObjectLife& life, double now)
{
    return gf_isPresent(life, now) && !life.track.empty() &&
           gf_inFrame(map, gf_onPage(map, {life.track.back().lat, life.track.back().lon}));
}

std::string gf_trafficOnMap(const SvgMap& map, const std::vector<ObjectLife>& lives, double now, double size,
                            double nearNm)
{
    std::string svg;
    std::vector<PageBox> taken;
    for (const ObjectLife& life : lives) {
        svg += lf_track(map, life, now, size * 2);
    }
    for (const ObjectLife& life : lives) {
        if (lf_shown(map, life, now)) {
            const TrackPoint& last = life.track.back();
            const PagePoint at = gf_onPage(map, {last.lat, last.lon});
            taken.push_back({at.x - 9 * size, at.y - 9 * size, at.x + 9 * size, at.y + 9 * size});
            svg += lf_symbol(at, last, life.category, size);
        }
    }
    for (const ObjectLife& life : lives) {
        if (lf_shown(map, life, now) &&
            distNm(map.centre, {life.track.back().lat, life.track.back().lon}) >= nearNm) {
            svg += lf_label(taken, gf_onPage(map, {life.track.back().lat, life.track.back().lon}), life);
        }
    }
    return svg;
}

}  // namespace vlt
