#include "standin/picture_motion.h"

#include "core/base/text.h"
#include "standin/day_airport.h"
#include "standin/svg_canvas.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <ranges>
#include <span>
#include <stdexcept>

namespace vlt {

using Looks = std::span<const MotionLook>;

constexpr double kPageWidth = 900;
constexpr double kPageHeight = 560;
constexpr PageBox kDiagram{76, 46, 608, 430};
constexpr double kLegendLeft = 708;
constexpr double kDelay = static_cast<double>(kReplayDelayTicks) / kTicksPerSecond;  // seconds

constexpr const char* kInk = "#1d2733";
constexpr const char* kBlue = "#1f6fb4";
constexpr const char* kGreen = "#2b8a3e";
constexpr const char* kRed = "#c92a2a";
constexpr const char* kPurple = "#7048a8";
constexpr const char* kOrange = "#d9730d";
constexpr const char* kGround = "#fbeee2";
constexpr const char* kCss = "text{font-size:12px;fill:#5b6875}.title{font-size:17px;font-weight:bold}"
                             ".words{font-size:13px}.title,.words{fill:#1d2733}.grid{stroke:#dfe4e9}"
                             ".middle{text-anchor:middle}.end{text-anchor:end}";

// --- what is looked for

// At least two looks, so that there is a way from the first to the last.
static Looks lf_between(Looks looks, double begin, double end)
{
    const auto first = std::ranges::lower_bound(looks, begin, {}, &MotionLook::time);
    const Looks found{first, std::ranges::upper_bound(looks, end, {}, &MotionLook::time)};
    if (found.size() < 2) {
        throw std::runtime_error("too little is seen of an aircraft: more seconds are needed");
    }
    return found;
}

static double lf_turnedDeg(const MotionLook& a, const MotionLook& b)
{
    return std::abs(std::remainder(b.headingDeg - a.headingDeg, 360));
}

static double lf_metres(const MotionLook& a, const MotionLook& b)
{
    return distNm(a.at, b.at) * kMetresPerNm;
}

// When these phases begin that follow each other; empty if they don't.
static std::vector<double> lf_phases(Looks looks, std::initializer_list<StState> wanted)
{
    std::vector<MotionLook> starts;
    std::ranges::unique_copy(looks, std::back_inserter(starts), {}, &MotionLook::st);
    const auto isIn = [](const MotionLook& look, StState st) { return look.st == st; };
    const auto first = std::search(starts.begin(), starts.end(), wanted.begin(), wanted.end(), isIn);
    std::vector<double> times;
    if (first != starts.end()) {
        std::transform(first, first + std::ssize(wanted), std::back_inserter(times),
                       [](const MotionLook& look) { return look.time; });
    }
    return times;
}

// When a fast aircraft leaves the ground or comes down to it; neither helicopters nor light aircraft do so at
// such a speed.
static std::vector<double> lf_change(Looks looks, bool toGround)
{
    constexpr double kFast = 100;  // knots
    const auto before = std::ranges::adjacent_find(looks, [&](const MotionLook& a, const MotionLook& b) {
        return a.onGround != b.onGround && b.onGround == toGround && b.knots > kFast;
    });
    return before == looks.end() ? std::vector<double>{} : std::vector<double>{(before + 1)->time};
}

// An aircraft, and when it did what was looked for.
struct Found {
    const MotionTrack* track = nullptr;
    std::vector<double> times;
};

// Who does first what `find` finds.
template <typename Find>
static Found lf_first(const std::vector<MotionTrack>& tracks, const char* what, Find find)
{
    Found first;
    for (const MotionTrack& track : tracks) {
        const std::vector<double> times = find(Looks(track.looks));
        if (!times.empty() && (first.track == nullptr || times[0] < first.times[0])) {
            first = {&track, times};
        }
    }
    if (first.track == nullptr) {
        throw std::runtime_error(format("nobody {}: more seconds are needed", what));
    }
    return first;
}

// --- the page

struct LegendRow {
    std::string words;
    const char* colour;
};

static std::string lf_page(std::string_view title, std::string_view caption, const std::string& content,
                           const std::vector<LegendRow>& legend)
{
    std::string svg = gf_svgBox({0, 0, kPageWidth, kPageHeight}, "fill='white'") +
                      gf_svgText({20, 28}, title, "class='title'") +
                      gf_svgText({20, kPageHeight - 16}, caption, "style='font-size:13px'") + content;
    double y = kDiagram.top + 18;
    for (const LegendRow& row : legend) {
        svg += gf_svgBox({kLegendLeft, y - 10, 12, 12}, format("fill='{}' class='grid'", row.colour)) +
               gf_svgText({kLegendLeft + 20, y}, row.words, "class='words'");
        y += 20;
    }
    return gf_svgPage(kPageWidth, kPageHeight, kCss, svg);
}

// A diagram, and the numbers at its edges.
struct Axes {
    PageBox box;
    double left = 0, right = 1, low = 0, high = 1;
};

static PagePoint lf_at(const Axes& axes, double x, double y)
{
    return {axes.box.left + (x - axes.left) / (axes.right - axes.left) * axes.box.width,
            axes.box.top + (axes.high - y) / (axes.high - axes.low) * axes.box.height};
}

// The multiples between two numbers of the least step of 1, 2, 5, 10 ... that makes at most `most` pieces.
static std::vector<double> lf_marks(double low, double high, double most)
{
    double step = std::pow(10, std::floor(std::log10((high - low) / most)));
    for (const double factor : {2.0, 2.5, 2.0}) {
        step *= (high - low) / step > most ? factor : 1;
    }
    std::vector<double> marks;
    for (double n = std::ceil(low / step - 1e-9); n <= high / step + 1e-9; ++n) {
        marks.push_back(n * step + 0.0);  // no "-0"
    }
    return marks;
}

// Lines at round numbers, named at the left and, if it has a name, along the lower edge.
static std::string lf_grid(const Axes& axes, std::string_view below, std::string_view beside)
{
    const PagePoint middle = lf_at(axes, (axes.left + axes.right) / 2, (axes.low + axes.high) / 2);
    std::string svg = format("<g transform='translate(20,{:.1f}) rotate(-90)'>{}</g>\n", middle.y,
                             gf_svgText({0, 0}, beside, "class='middle'"));
    for (const double x : lf_marks(axes.left, axes.right, 10)) {
        const PagePoint at = lf_at(axes, x, axes.low);
        svg += gf_svgLine({at, lf_at(axes, x, axes.high)}, "class='grid'");
        svg += below.empty() ? "" : gf_svgText({at.x, at.y + 18}, format("{:g}", x), "class='middle'");
    }
    for (const double y : lf_marks(axes.low, axes.high, 6)) {
        const PagePoint at = lf_at(axes, axes.left, y);
        svg += gf_svgLine({at, lf_at(axes, axes.right, y)}, "class='grid'") +
               gf_svgText({at.x - 8, at.y + 4}, format("{:g}", y), "class='end'");
    }
    return svg + gf_svgText({middle.x, axes.box.top + axes.box.height + 38}, below, "class='middle'");
}

// --- plans, in metres around an origin

struct Phase {
    StState st;
    const char* words;
    const char* colour;
};
constexpr Phase kPhases[] = {{StState::Parked, "parked", "#5b6875"},
                             {StState::PushingBack, "pushing back", kRed},
                             {StState::PushedBack, "pushed back", kPurple},
                             {StState::Taxi, "taxiing", kBlue},
                             {StState::Parking, "parking", kGreen}};

static const char* lf_colour(StState st)
{
    const auto* phase = std::ranges::find(kPhases, st, &Phase::st);
    return phase == std::end(kPhases) ? kInk : phase->colour;
}

static Axes lf_axes(const SvgMap& map, LatLon origin)
{
    const PageBox& box = map.frame;
    const PagePoint zero = gf_onPage(map, origin);
    return {box, (box.left - zero.x) / map.pagePerM, (box.left + box.width - zero.x) / map.pagePerM,
            (zero.y - box.top - box.height) / map.pagePerM, (zero.y - box.top) / map.pagePerM};
}

// The way, and a silhouette every so many seconds where the aircraft has moved or turned since the last one.
static std::string lf_way(const SvgMap& map, Looks looks, double spanM, double seconds)
{
    const double scale = spanM * map.pagePerM / kPlaneLength;
    const MotionLook* last = nullptr;
    std::string svg;
    std::vector<StyledPoint> way;
    for (const MotionLook& look : looks) {
        const PagePoint at = gf_onPage(map, look.at);
        way.push_back({at, format("stroke='{}' stroke-width='2'", lf_colour(look.st))});
        if (last == nullptr || (look.time - last->time >= seconds &&
                                (lf_metres(*last, look) > 4 || lf_turnedDeg(*last, look) > 30))) {
            svg += gf_svgSymbol(kPlanePath, at, look.headingDeg, scale,
                                format("fill='{0}' fill-opacity='0.16' stroke='{0}' stroke-width='{1:.2f}'",
                                       lf_colour(look.st), 1 / scale));
            last = &look;
        }
    }
    return svg + gf_svgPieces(way);
}

// From `begin` to `end`, a silhouette every so many seconds; with the stand, if there is one to be shown.
static std::string lf_planPicture(const char* title, const MotionTrack& track, double begin, double end,
                                  double everySeconds, const std::optional<DayStand>& stand)
{
    constexpr double kWideM = 300;
    const Looks looks = lf_between(track.looks, begin, end);
    const LatLon from = looks.front().at;
    const LatLon to = looks.back().at;
    const SvgMap map{kDiagram, {(from.lat + to.lat) / 2, (from.lon + to.lon) / 2}, kDiagram.width / kWideM};
    const LatLon origin = stand ? gf_fieldPosition(stand->at) : from;
    std::string svg =
        lf_grid(lf_axes(map, origin), "east, m", "north, m") + lf_way(map, looks, track.spanM, everySeconds);
    std::vector<LegendRow> legend;
    for (const Phase& phase : kPhases) {
        if (std::ranges::find(looks, phase.st, &MotionLook::st) != looks.end()) {
            legend.push_back({phase.words, phase.colour});
        }
    }
    for (const MotionReport& report : track.reports) {
        const PagePoint at = gf_onPage(map, report.at);
        if (report.due >= begin && report.due <= end + kDelay && gf_isInside(kDiagram, at)) {
            svg += gf_svgCircle(at, 3, format("fill='{}'", kOrange));
        }
    }
    legend.push_back({"reported positions", kOrange});
    if (stand) {
        svg += gf_svgCircle(gf_onPage(map, origin), stand->radiusM * map.pagePerM,
                            format("fill='none' stroke='{}' stroke-dasharray='5 4'", kInk));
        legend.push_back({format("stand {}, {:.0f} m radius", stand->id, stand->radiusM), kInk});
    }
    return lf_page(title,
                   format("{}; built-in day, {:.0f} s to {:.0f} s; a silhouette every {} s while it moves; "
                          "reports due up to {} s later",
                          track.name, begin, end, everySeconds, kDelay),
                   svg, legend);
}

// --- curves over time, in panels below one another

struct PanelCurve {
    const char* words;
    const char* colour;
    const char* dashes;
    double (*value)(const MotionLook& before, const MotionLook& now);
};

struct Panel {
    const char* label;
    double step;  // to which its limits are rounded
    std::vector<PanelCurve> curves;
};

static const Panel kHeightPanel{"height, ft", 100, {{"height", kBlue, "none", [](auto&, auto& now) {
                                                         return now.altitude - kDayElevation;
                                                     }}}};
static const Panel kPitchPanel{
    "pitch, degrees", 2, {{"pitch, nose up", kGreen, "none", [](auto&, auto& now) { return now.pitchDeg; }}}};
static const Panel kSpeedPanel{
    "speed, kn",
    50,
    {{"speed as it moved", kRed, "none",
      [](auto& before, auto& now) { return distNm(before.at, now.at) / (now.time - before.time) * 3600; }},
     {"speed as sent, dashed", kPurple, "6 3", [](auto&, auto& now) { return now.knots; }}}};

// The limits are rounded outwards, so that a curve that rests doesn't lie on the edge.
static void lf_fitAxes(Axes& axes, const Panel& panel, Looks looks)
{
    axes.low = INFINITY;
    axes.high = -INFINITY;
    for (const PanelCurve& curve : panel.curves) {
        for (size_t i = 1; i < looks.size(); ++i) {
            const double value = curve.value(looks[i - 1], looks[i]);
            axes.low = std::min(axes.low, std::floor(value / panel.step) * panel.step);
            axes.high = std::max(axes.high, std::ceil(value / panel.step + 0.1) * panel.step);
        }
    }
}

static std::string lf_panel(const Axes& axes, const Panel& panel, Looks looks, double zero, const char* below)
{
    // Where the aircraft is on the ground, a line as wide as the panel is high.
    std::vector<StyledPoint> ground;
    std::string curves;
    for (const MotionLook& look : looks) {
        ground.push_back(
            {lf_at(axes, look.time - zero, (axes.low + axes.high) / 2),
             format("stroke='{}' stroke-width='{}'", look.onGround ? kGround : "none", axes.box.height)});
    }
    for (const PanelCurve& curve : panel.curves) {
        std::vector<PagePoint> points;
        for (size_t i = 1; i < looks.size(); ++i) {
            points.push_back(lf_at(axes, looks[i].time - zero, curve.value(looks[i - 1], looks[i])));
        }
        curves += gf_svgLine(
            points, format("stroke='{}' stroke-width='2' stroke-dasharray='{}'", curve.colour, curve.dashes));
    }
    return gf_svgPieces(ground) + lf_grid(axes, below, panel.label) + curves +
           gf_svgLine({lf_at(axes, 0, axes.low), lf_at(axes, 0, axes.high)},
                      format("stroke='{}' stroke-width='2' stroke-dasharray='3 4'", kInk));
}

// From `before` seconds ahead of `zero` to `after` seconds behind it.
static std::string lf_curvePicture(const char* title, const char* moment, const Found& found, double before,
                                   double after, const std::vector<Panel>& panels)
{
    constexpr double kGap = 18;
    const double zero = found.times[0];
    const Looks looks = lf_between(found.track->looks, zero - before, zero + after);
    const auto count = static_cast<double>(panels.size());
    Axes axes{kDiagram, -before, after};
    axes.box.height = (kDiagram.height - kGap * (count - 1)) / count;
    const std::string below = format("seconds from the {}", moment);
    std::string svg;
    std::vector<LegendRow> legend;
    for (const Panel& panel : panels) {
        lf_fitAxes(axes, panel, looks);
        svg += lf_panel(axes, panel, looks, zero, &panel == &panels.back() ? below.c_str() : "");
        axes.box.top += axes.box.height + kGap;
        for (const PanelCurve& curve : panel.curves) {
            legend.push_back({curve.words, curve.colour});
        }
    }
    legend.push_back({"driven on the ground", kGround});
    return lf_page(title,
                   format("{}; {} at {:.2f} s of the built-in day; heights of the aircraft's centre over the "
                          "airport",
                          found.track->name, moment, zero),
                   svg, legend);
}

// --- the pictures

// The stand nearest to where an aircraft is at a time.
static DayStand lf_standOf(const Found& found, double time)
{
    const LatLon place = lf_between(found.track->looks, time, time + 1).front().at;
    const std::vector<DayStand> stands = gf_dayStands();
    return *std::ranges::min_element(
        stands, {}, [&](const DayStand& s) { return distNm(place, gf_fieldPosition(s.at)); });
}

std::vector<MotionPicture> gf_motionPictures(const std::vector<MotionTrack>& tracks)
{
    const Found parks = lf_first(tracks, "parks", [](Looks looks) {
        return lf_phases(looks, {StState::Parking, StState::Parked});
    });
    const Found leaves = lf_first(tracks, "is pushed back", [](Looks looks) {
        return lf_phases(looks, {StState::PushingBack, StState::PushedBack, StState::Taxi});
    });
    const Found lands = lf_first(tracks, "touches down", [](Looks looks) { return lf_change(looks, true); });
    const Found starts = lf_first(tracks, "takes off", [](Looks looks) { return lf_change(looks, false); });
    const double parking = parks.times[0];
    const double parked = parks.times[1];
    return {{"arrival", lf_planPicture("The drive onto a stand", *parks.track, parking - 40, parked + 1, 6,
                                       lf_standOf(parks, parked))},
            {"landing", lf_curvePicture("Flare, touchdown and landing roll", "touchdown", lands, 60, 20,
                                        {kHeightPanel, kPitchPanel})},
            {"push-back", lf_planPicture("Push-back", *leaves.track, leaves.times[0] - 1,
                                         leaves.times[2] + 30, 10, lf_standOf(leaves, leaves.times[0]))},
            {"take-off", lf_curvePicture("Take-off run, rotation and climb", "rotation", starts, 30, 30,
                                         {kHeightPanel, kPitchPanel, kSpeedPanel})},
            {"taxi", lf_planPicture("Taxiing round bends", *parks.track, parking - 95, parking - 5, 12, {})}};
}

}  // namespace vlt
