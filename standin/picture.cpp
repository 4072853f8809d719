#include "standin/picture.h"

#include "core/base/text.h"
#include "standin/day_airport.h"
#include "standin/svg_canvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

namespace vlt {

constexpr double kPageWidth = 1500;
constexpr double kPageHeight = 1040;
constexpr double kMargin = 20;
constexpr double kMainSide = 1000;
constexpr double kSideLeft = kMargin + kMainSide + kMargin;
constexpr double kInsetSide = kPageWidth - kSideLeft - kMargin;
constexpr double kInsetTop = 210;
constexpr double kInsetRadiusNm = 1.2;
constexpr double kInsetHighest = 3000;  // feet above the airport; what flies over it higher up isn't shown
constexpr double kSmallestRadiusNm = 12;
constexpr double kLargestRadiusNm = 40;
constexpr double kRingNm = 5;
constexpr size_t kBoardRows = 12;

constexpr double kMoment = 2.5;         // seconds
constexpr double kNewestSeconds = 300;  // a track older than this counts as history and is drawn faintly
constexpr double kLabelHeight = 11;
constexpr double kCharWidth = 6.1;

// ---- the aircraft

// Still there at `now`, or gone no more than a moment before: when the program leaves, all its aircraft go at
// once, and the picture shows them as they were.
static bool lf_isPresent(const ObjectLife& life, double now)
{
    return life.removedAt == kNeverInLife || life.removedAt > now - kMoment;
}

// A static aircraft: the program's name for it ends so.
static bool lf_isStatic(const ObjectLife& life)
{
    return life.tailNumber.ends_with('*');
}

struct ColourStop {
    double feet;
    int red, green, blue;
};

// From the ground's neighbourhood to the airways.
constexpr std::array<ColourStop, 6> kStops{{{0, 94, 234, 140},
                                            {4000, 190, 235, 80},
                                            {10000, 255, 214, 70},
                                            {18000, 255, 150, 60},
                                            {30000, 255, 86, 108},
                                            {41000, 206, 120, 255}}};

static std::string lf_heightColour(double feet, bool onGround)
{
    if (onGround) {
        return "#5fb4ff";
    }
    size_t i = 1;
    while (i + 1 < kStops.size() && feet > kStops[i].feet) {
        ++i;
    }
    const ColourStop& a = kStops[i - 1];
    const ColourStop& b = kStops[i];
    const double part = std::clamp((feet - a.feet) / (b.feet - a.feet), 0.0, 1.0);
    const auto mix = [part](int from, int to) {
        return static_cast<int>(std::lround(from + (to - from) * part));
    };
    return format("#{:02x}{:02x}{:02x}", mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue));
}

static std::string lf_track(const SvgMap& map, const ObjectLife& life, double now, double width)
{
    const bool present = lf_isPresent(life, now);
    std::vector<StyledPoint> points;
    points.reserve(life.track.size());
    for (const TrackPoint& point : life.track) {
        const bool fresh = present && now - point.time < kNewestSeconds;
        points.push_back(
            {gf_onPage(map, gf_placeOf(point)),
             format("stroke='{}' stroke-width='{:.1f}' opacity='{}'",
                    lf_heightColour(std::round(point.altitude / 500) * 500, point.onGround), width,
                    fresh     ? 0.9
                    : present ? 0.35
                              : 0.15)});
    }
    return gf_svgPieces(points);
}

// An outline in a colour that no height has.
static std::string lf_staticSymbol(PagePoint at, double turnDeg, double size)
{
    return gf_svgSymbol(kPlanePath, at, turnDeg, size, "fill='#0e202f' stroke='#f2f6fa' stroke-width='1.5'");
}

static std::string lf_symbol(PagePoint at, const ObjectLife& life, double size)
{
    const TrackPoint& point = life.track.back();
    const bool stands = lf_isStatic(life);
    const std::string colour = stands ? "#f2f6fa" : lf_heightColour(point.altitude, point.onGround);
    const double turnDeg = point.heading * kDegPerRad;
    if (life.category == "Rotorcraft") {
        return gf_svgSymbol("M-7,-8.5 L7,5.5 M7,-8.5 L-7,5.5 M0,-4 L0,10 M-2.5,10 L2.5,10", at, turnDeg, size,
                            format("fill='none' stroke='{}' stroke-width='2.2'", colour));
    }
    if (stands) {
        return lf_staticSymbol(at, turnDeg, size);
    }
    return gf_svgSymbol(kPlanePath, at, turnDeg, size,
                        format("fill='{}' stroke='#08131d' stroke-width='0.8'", colour));
}

static LatLon lf_lastPlace(const ObjectLife& life)
{
    return {life.track.back().lat, life.track.back().lon};
}

// "gnd", "2600 ft" or "FL340".
static std::string lf_heightText(const TrackPoint& point)
{
    return point.onGround            ? "gnd"
           : point.altitude >= 10000 ? format("FL{:03.0f}", point.altitude / 100)
                                     : format("{:.0f} ft", std::round(point.altitude / 100) * 100);
}

static bool lf_overlap(const PageBox& a, const PageBox& b)
{
    return a.left < b.left + b.width && b.left < a.left + a.width && a.top < b.top + b.height &&
           b.top < a.top + a.height;
}

// Where the label goes: the first of some places round the symbol that is free, else none.
static std::optional<PagePoint> lf_placeLabel(std::vector<PageBox>& taken, PagePoint at, size_t letters)
{
    const double width = static_cast<double>(letters) * kCharWidth;
    const std::array<PagePoint, 8> offsets{{{12, -4},
                                            {-12 - width, -4},
                                            {-width / 2, 24},
                                            {-width / 2, -28},
                                            {16, 20},
                                            {16, -26},
                                            {-16 - width, 20},
                                            {-16 - width, -26}}};
    for (const PagePoint& offset : offsets) {
        const PagePoint label{at.x + offset.x, at.y + offset.y};
        const PageBox box{label.x, label.y - kLabelHeight, width, 2 * kLabelHeight};
        if (std::ranges::none_of(taken, [&](const PageBox& other) { return lf_overlap(other, box); })) {
            taken.push_back(box);
            return label;
        }
    }
    return std::nullopt;
}

static std::string lf_label(std::vector<PageBox>& taken, PagePoint at, const ObjectLife& life)
{
    const std::string second =
        lf_isStatic(life) ? life.model : format("{} {}", life.model, lf_heightText(life.track.back()));
    const auto label = lf_placeLabel(taken, at, std::max(life.tailNumber.size(), second.size()));
    if (!label) {
        return {};
    }
    return gf_svgText(*label, life.tailNumber, "class='label'") +
           gf_svgText({label->x, label->y + kLabelHeight}, second, "class='detail'");
}

// Everybody's tracks, with symbols and labels of those that are still there. `size` scales the symbols. Who
// is nearer to the map's centre than `nearNm` gets no label, and a static aircraft no symbol: another map has
// it. Static aircraft lie below the others, and get their labels where there is room left.
static std::string lf_trafficOnMap(const SvgMap& map, const std::vector<ObjectLife>& lives, double now,
                                   double size, double nearNm)
{
    std::string svg;
    std::vector<PageBox> taken;
    std::vector<std::pair<const ObjectLife*, PagePoint>> shown;
    for (const ObjectLife& life : lives) {
        svg += lf_track(map, life, now, size * 2);
        if (lf_isPresent(life, now) && !life.track.empty()) {
            const PagePoint at = gf_onPage(map, lf_lastPlace(life));
            const bool elsewhere = lf_isStatic(life) && distNm(map.centre, lf_lastPlace(life)) < nearNm;
            if (!elsewhere && gf_isInside(map.frame, at)) {
                shown.emplace_back(&life, at);
            }
        }
    }
    std::stable_partition(shown.begin(), shown.end(),
                          [](const auto& one) { return lf_isStatic(*one.first); });
    for (const auto& [life, at] : shown) {
        taken.push_back({at.x - 9 * size, at.y - 9 * size, 18 * size, 18 * size});
        svg += lf_symbol(at, *life, size);
    }
    std::ranges::reverse(shown);
    for (const auto& [life, at] : shown) {
        if (distNm(map.centre, lf_lastPlace(*life)) >= nearNm) {
            svg += lf_label(taken, at, *life);
        }
    }
    return svg;
}

// ---- the frame of a map

// A square of the page that shows `radiusNm` from its middle to each edge.
static SvgMap lf_squareMap(double left, double top, double side, LatLon centre, double radiusNm)
{
    return {{left, top, side, side}, centre, side / 2 / (radiusNm * kMetresPerNm)};
}

static std::string lf_ring(const SvgMap& map, double nm)
{
    const PagePoint centre = gf_onPage(map, map.centre);
    const double radius = nm * kMetresPerNm * map.pagePerM;
    return gf_svgCircle(centre, radius, "fill='none' stroke='#2a4258' stroke-dasharray='2 5'") +
           gf_svgText({centre.x + 3, centre.y - radius - 3}, format("{:.0f} nm", nm), "class='ring'");
}

// What lies on the map, cut off at its frame.
static std::string lf_framed(const SvgMap& map, const char* id, const std::string& content)
{
    return format("<clipPath id='{}'>{}</clipPath>\n", id, gf_svgBox(map.frame, "rx='8'")) +
           gf_svgBox(map.frame, "rx='8' fill='#0e202f' stroke='#35526b'") +
           format("<g clip-path='url(#{})'>\n{}</g>\n", id, content);
}

static std::string lf_northAndScale(const SvgMap& map, double metres, const std::string& label)
{
    const double right = map.frame.left + map.frame.width - 18;
    const double base = map.frame.top + map.frame.height - 24;
    const double left = right - metres * map.pagePerM;
    const PagePoint north{right - 16, map.frame.top + 26};
    const std::string style = "class='label' text-anchor='middle'";
    return gf_svgSymbol("M0,0 l-8,22 l8,-5 l8,5 z", north, 0, 1, "fill='#dbe9f5'") +
           gf_svgText({north.x, north.y - 4}, "N", style) +
           gf_svgLine({{left, base}, {left, base + 6}, {right, base + 6}, {right, base}},
                      "stroke='#dbe9f5' stroke-width='1.5'") +
           gf_svgText({(left + right) / 2, base - 2}, label, style);
}

// ---- the airport

static std::string lf_runway(const SvgMap& map, const DayRunway& runway, bool named)
{
    constexpr double kWidthM = 60;
    const PagePoint west = gf_onPage(map, gf_fieldPosition(runway.west));
    const PagePoint east = gf_onPage(map, gf_fieldPosition(runway.east));
    const double width = std::max(kWidthM * map.pagePerM, 3.0);
    std::string svg =
        gf_svgLine({west, east}, format("stroke='#9fb3c4' stroke-width='{:.1f}'", width)) +
        gf_svgLine({west, east}, format("stroke='#fff' stroke-width='{:.1f}' stroke-dasharray='7 6'",
                                        std::max(width / 8, 0.6)));
    if (named) {
        const std::string name = runway.name;
        const size_t slash = name.find('/');
        svg += gf_svgText({west.x - 14, west.y - 6}, name.substr(0, slash), "class='runway'") +
               gf_svgText({east.x + 14, east.y - 6}, name.substr(slash + 1), "class='runway'");
    }
    return svg;
}

static std::string lf_airport(const SvgMap& map, bool large)
{
    std::string svg;
    for (const DayRunway& runway : kDayRunways) {
        svg += lf_runway(map, runway, large);
    }
    if (!large) {
        const PagePoint at = gf_onPage(map, kDayAirport);
        return svg + gf_svgText({at.x, at.y + 34}, kDayAirportCode, "class='airport'");
    }
    for (const DayStand& stand : gf_dayStands()) {
        svg += gf_svgCircle(gf_onPage(map, gf_fieldPosition(stand.at)), stand.radiusM * map.pagePerM,
                            "fill='#1b3347' stroke='#6d8ba5' stroke-width='0.8'");
    }
    return svg;
}

static std::string lf_user(const SvgMap& map, const Chart& chart)
{
    const PagePoint at = gf_onPage(map, chart.user);
    const std::string style = "fill='none' stroke='#ffffff' stroke-width='1.6'";
    return gf_svgCircle(at, 9, style) +
           gf_svgSymbol("M0,-14 L0,-5 M-4,3 L0,-5 L4,3", at, chart.userHeading * kDegPerRad, 1, style);
}

// ---- the side of the page

// Everybody but those that fly high over the airport.
static std::vector<ObjectLife> lf_lowTraffic(const Chart& chart)
{
    std::vector<ObjectLife> low = chart.lives;
    const double ceiling = (chart.atDayAirport ? kDayElevation : 0) + kInsetHighest;
    std::erase_if(low, [&](const ObjectLife& life) {
        return std::all_of(life.track.begin(), life.track.end(),
                           [&](const TrackPoint& point) { return point.altitude > ceiling; });
    });
    return low;
}

static std::string lf_heading(const Chart& chart, double now)
{
    size_t airborne = 0, ground = 0, stands = 0, gone = 0;
    for (const ObjectLife& life : chart.lives) {
        const bool onGround = !life.track.empty() && life.track.back().onGround;
        ++(!lf_isPresent(life, now) ? gone : lf_isStatic(life) ? stands : onGround ? ground : airborne);
    }
    const int seconds = static_cast<int>(now);
    return gf_svgText({kSideLeft, 64}, chart.title, "class='title'") +
           gf_svgText({kSideLeft, 92}, chart.subtitle, "class='subtitle'") +
           gf_svgText(
               {kSideLeft, 132},
               format("{} airborne, {} on the ground, {} static, {} gone", airborne, ground, stands, gone),
               "class='fact'") +
           gf_svgText({kSideLeft, 156},
                      format("after {}:{:02d} min of live traffic", seconds / 60, seconds % 60),
                      "class='fact'");
}

static std::string lf_legend(double top)
{
    constexpr int kSteps = 44;
    constexpr int kBefore = 8;  // steps to the left of the heights, for what is on the ground
    constexpr double kHighest = 41000;
    const double width = kInsetSide / (kSteps + kBefore);
    const auto at = [&](double feet) {
        return kSideLeft + width * (kBefore + feet / kHighest * (kSteps - 1));
    };
    std::string svg = gf_svgText({kSideLeft, top}, "height", "class='fact'") +
                      lf_staticSymbol({kSideLeft + width * 1.5, top + 16}, 0, 0.7) +
                      gf_svgText({kSideLeft, top + 36}, "static", "class='ring'") +
                      gf_svgBox({kSideLeft + width * 4, top + 10, width * 3, 12},
                                format("fill='{}'", lf_heightColour(0, true))) +
                      gf_svgText({kSideLeft + width * 4, top + 36}, "ground", "class='ring'");
    for (int i = 0; i < kSteps; ++i) {
        const double feet = i * kHighest / (kSteps - 1);
        svg += gf_svgBox({at(feet), top + 10, width + 0.4, 12},
                         format("fill='{}'", lf_heightColour(feet, false)));
    }
    for (const double feet : {5000.0, 10000.0, 20000.0, 30000.0, 40000.0}) {
        svg += gf_svgText({at(feet), top + 36}, format("{:.0f}", feet), "class='ring' text-anchor='middle'");
    }
    return svg;
}

// The nearest in the air, as a board.
static std::string lf_board(const Chart& chart, LatLon centre, double now, double top)
{
    std::vector<std::pair<double, const ObjectLife*>> nearest;
    for (const ObjectLife& life : chart.lives) {
        if (lf_isPresent(life, now) && !life.track.empty() && !life.track.back().onGround) {
            nearest.emplace_back(distNm(centre, lf_lastPlace(life)), &life);
        }
    }
    std::sort(nearest.begin(), nearest.end());
    nearest.resize(std::min(nearest.size(), kBoardRows));
    std::string svg = gf_svgText({kSideLeft, top}, "nearest in the air", "class='fact'");
    double y = top + 20;
    for (const auto& [nm, life] : nearest) {
        const TrackPoint& point = life->track.back();
        svg += gf_svgText({kSideLeft, y}, life->tailNumber,
                          format("style='fill:{}' class='row'", lf_heightColour(point.altitude, false)));
        const std::pair<double, std::string> cells[] = {{95, life->model},
                                                        {160, lf_heightText(point)},
                                                        {250, format("{:.0f} kt", point.tas)},
                                                        {330, format("{:.1f} nm", nm)}};
        for (const auto& [x, text] : cells) {
            svg += gf_svgText({kSideLeft + x, y}, text, "class='row'");
        }
        y += 17;
    }
    return svg;
}

// ---- the page

constexpr const char* kCss =
    ".label{font-size:10px;fill:#eef6fc;font-weight:bold}.detail{font-size:9px;fill:#a9c0d3}"
    ".ring{font-size:9px;fill:#64829c}.runway{font-size:11px;fill:#dbe9f5}"
    ".airport{font-size:13px;fill:#ffffff;font-weight:bold}.runway,.airport{text-anchor:middle}"
    ".title{font-size:38px;fill:#ffffff;font-weight:bold}.subtitle{font-size:15px;fill:#7fa3c0}"
    ".fact{font-size:15px;fill:#c9dcea}.row{font-size:12px;fill:#c9dcea}"
    "polyline{stroke-linejoin:round}";

// As wide as the traffic that is there, within limits.
static double lf_radiusNm(const Chart& chart, LatLon centre, double now)
{
    std::vector<double> distances;
    for (const ObjectLife& life : chart.lives) {
        if (lf_isPresent(life, now) && !life.track.empty()) {
            distances.push_back(distNm(centre, lf_lastPlace(life)));
        }
    }
    std::sort(distances.begin(), distances.end());
    const double wanted = distances.empty() ? 0 : distances[distances.size() * 95 / 100] * 1.08;
    return std::clamp(wanted, kSmallestRadiusNm, kLargestRadiusNm);
}

static std::string lf_wideMap(const Chart& chart, LatLon centre, double now)
{
    const double radiusNm = lf_radiusNm(chart, centre, now);
    const SvgMap map = lf_squareMap(kMargin, kMargin, kMainSide, centre, radiusNm);
    std::string svg;
    const double ringsNm = radiusNm > 25 ? 2 * kRingNm : kRingNm;
    for (double nm = kRingNm; nm < radiusNm; nm += ringsNm) {
        svg += lf_ring(map, nm);
    }
    svg += (chart.atDayAirport ? lf_airport(map, false) : "") +
           lf_trafficOnMap(map, chart.lives, now, 0.85, kInsetRadiusNm) + lf_user(map, chart);
    return lf_framed(map, "wide", svg) + lf_northAndScale(map, kRingNm * kMetresPerNm, "5 nm");
}

static std::string lf_nearMap(const Chart& chart, LatLon centre, double now)
{
    const SvgMap map = lf_squareMap(kSideLeft, kInsetTop, kInsetSide, centre, kInsetRadiusNm);
    return lf_framed(map, "near",
                     (chart.atDayAirport ? lf_airport(map, true) : "") +
                         lf_trafficOnMap(map, lf_lowTraffic(chart), now, 0.7, 0) + lf_user(map, chart)) +
           lf_northAndScale(map, 1000, "1000 m");
}

std::string gf_trafficSvg(const Chart& chart)
{
    double now = 0;
    for (const ObjectLife& life : chart.lives) {
        now = life.track.empty() ? now : std::max(now, life.track.back().time);
    }
    const LatLon centre = chart.atDayAirport ? kDayAirport : chart.user;
    std::string svg = gf_svgBox({0, 0, kPageWidth, kPageHeight}, "fill='#07111a'") +
                      lf_wideMap(chart, centre, now) + lf_heading(chart, now) +
                      lf_nearMap(chart, centre, now);
    double top = kInsetTop + kInsetSide + 26;
    if (chart.atDayAirport) {
        svg += gf_svgText({kSideLeft, top}, format("{}, elevation {:.0f} ft", kDayAirportCode, kDayElevation),
                          "class='fact'");
    }
    svg += lf_legend(top + 36) + lf_board(chart, centre, now, top + 106);
    return gf_svgPage(kPageWidth, kPageHeight, kCss, svg);
}

}  // namespace vlt
