#include "standin/picture.h"

#include "core/base/text.h"
#include "standin/day_airport.h"
#include "standin/picture_traffic.h"
#include "standin/run_files.h"
#include "standin/svg_canvas.h"

#include <algorithm>
#include <cmath>

namespace vlt {

constexpr double kPageWidth = 1500;
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

ChartAirport gf_dayChartAirport()
{
    ChartAirport airport;
    airport.code = kDayAirportCode;
    airport.at = kDayAirport;
    airport.elevation = kDayElevation;
    for (const DayRunway& runway : kDayRunways) {
        airport.runways.push_back(
            {runway.name, {gf_fieldPosition(runway.west), gf_fieldPosition(runway.east)}});
    }
    for (const DayStand& stand : gf_dayStands()) {
        airport.stands.push_back({stand.id, gf_fieldPosition(stand.at), stand.radiusM});
    }
    return airport;
}

// ---- the frame of a map

static std::string lf_ring(const SvgMap& map, double nm)
{
    const PagePoint centre = gf_onPage(map, map.centre);
    const double radius = nm * gf_pagePerNm(map);
    return format("<circle cx='{:.1f}' cy='{:.1f}' r='{:.1f}' fill='none' stroke='#2a4258' "
                  "stroke-dasharray='2 5'/>\n<text x='{:.1f}' y='{:.1f}' class='ring'>{:.0f} nm</text>\n",
                  centre.x, centre.y, radius, centre.x + 3, centre.y - radius - 3, nm);
}

static std::string lf_compass(const SvgMap& map)
{
    std::string svg;
    const PagePoint centre = gf_onPage(map, map.centre);
    const double outer = map.side / 2 - 6;
    for (int deg = 0; deg < 360; deg += 10) {
        const double angle = deg * kRadPerDeg;
        const double inner = outer - (deg % 30 == 0 ? 12 : 6);
        svg += format("<line x1='{:.1f}' y1='{:.1f}' x2='{:.1f}' y2='{:.1f}' stroke='#3c5a75'/>\n",
                      centre.x + inner * std::sin(angle), centre.y - inner * std::cos(angle),
                      centre.x + outer * std::sin(angle), centre.y - outer * std::cos(angle));
        if (deg % 30 == 0) {
            const double at = outer - 23;
            svg += format("<text x='{:.1f}' y='{:.1f}' class='ring' text-anchor='middle'>{:02d}</text>\n",
                          centre.x + at * std::sin(angle), centre.y - at * std::cos(angle) + 4,
                          deg == 0 ? 36 : deg / 10);
        }
    }
    return svg;
}

static std::string lf_frame(const SvgMap& map, const char* id)
{
    return format("<clipPath id='{}'><rect x='{}' y='{}' width='{}' height='{}' rx='8'/></clipPath>\n"
                  "<rect x='{}' y='{}' width='{}' height='{}' rx='8' fill='url(#sea)' stroke='#35526b'/>\n",
                  id, map.left, map.top, map.side, map.side, map.left, map.top, map.side, map.side);
}

static std::string lf_northAndScale(const SvgMap& map, double nm, const std::string& label)
{
    const double x = map.left + map.side - 34;
    const double y = map.top + 46;
    const double length = nm * gf_pagePerNm(map);
    const double right = map.left + map.side - 18;
    const double base = map.top + map.side - 18;
    return format(
        "<path d='M{0:.1f},{1:.1f} l-8,22 l8,-5 l8,5 z' fill='#dbe9f5'/>"
        "<text x='{0:.1f}' y='{2:.1f}' class='label' text-anchor='middle'>N</text>\n"
        "<path d='M{3:.1f},{4:.1f} v6 h{5:.1f} v-6' fill='none' stroke='#dbe9f5' stroke-width='1.5'/>"
        "<text x='{6:.1f}' y='{7:.1f}' class='label' text-anchor='middle'>{8}</text>\n",
        x, y - 20, y - 24, right - length, base - 6, length, right - length / 2, base - 8, label);
}

// ---- the airport

static std::string lf_runway(const SvgMap& map, const ChartRunway& runway, double widthM, bool named)
{
    const PagePoint a = gf_onPage(map, runway.ends[0]);
    const PagePoint b = gf_onPage(map, runway.ends[1]);
    const double width = std::max(widthM / kMetresPerNm * gf_pagePerNm(map), 3.0);
    std::string svg =
        format("<path d='M{} L{}' stroke='#9fb3c4' stroke-width='{:.1f}'/>", gf_pair(a), gf_pair(b), width);
    svg += format("<path d='M{} L{}' stroke='#ffffff' stroke-width='{:.1f}' stroke-dasharray='7 6'/>\n",
                  gf_pair(a), gf_pair(b), std::max(width / 8, 0.6));
    if (named) {
        const size_t slash = runway.name.find('/');
        const PagePoint ends[] = {a, b};
        for (size_t i = 0; i < 2; ++i) {
            const double away = i == 0 ? -14 : 14;
            const std::string name = i == 0 ? runway.name.substr(0, slash) : runway.name.substr(slash + 1);
            svg += format("<text x='{:.1f}' y='{:.1f}' class='runway' text-anchor='middle'>{}</text>\n",
                          ends[i].x + away, ends[i].y - 6, gf_xmlText(name));
        }
    }
    return svg;
}

static std::string lf_airport(const SvgMap& map, const ChartAirport& airport, bool large)
{
    std::string svg;
    for (const ChartRunway& runway : airport.runways) {
        svg += lf_runway(map, runway, 60, large);
    }
    for (const ChartStand& stand : airport.stands) {
        if (large) {
            const PagePoint at = gf_onPage(map, stand.at);
            svg += format("<circle cx='{:.1f}' cy='{:.1f}' r='{:.1f}' fill='#1b3347' stroke='#6d8ba5' "
                          "stroke-width='0.8'/>\n",
                          at.x, at.y, stand.radiusM / kMetresPerNm * gf_pagePerNm(map));
        }
    }
    if (!large) {
        const PagePoint at = gf_onPage(map, airport.at);
        svg += format("<text x='{:.1f}' y='{:.1f}' class='airport' text-anchor='middle'>{}</text>\n", at.x,
                      at.y + 34, gf_xmlText(airport.code));
    }
    return svg;
}

static std::string lf_user(const SvgMap& map, const Chart& chart)
{
    const PagePoint at = gf_onPage(map, chart.user);
    return format("<g transform='translate({:.1f},{:.1f}) rotate({:.0f})'><circle r='9' fill='none' "
                  "stroke='#ffffff' stroke-width='1.6'/><path d='M0,-14 L0,-5 M-4,3 L0,-5 L4,3' fill='none' "
                  "stroke='#ffffff' stroke-width='1.6'/></g>\n",
                  at.x, at.y, chart.userHeading * kDegPerRad);
}

// ---- the side of the page

// Everybody but those that fly high over the airport.
static std::vector<ObjectLife> lf_lowTraffic(const Chart& chart)
{
    std::vector<ObjectLife> low = chart.lives;
    const double ceiling = (chart.airport ? chart.airport->elevation : 0) + kInsetHighest;
    std::erase_if(low, [&](const ObjectLife& life) {
        return std::all_of(life.track.begin(), life.track.end(),
                           [&](const TrackPoint& point) { return point.altitude > ceiling; });
    });
    return low;
}

struct Numbers {
    size_t airborne = 0;
    size_t ground = 0;
    size_t gone = 0;
};

static Numbers lf_numbers(const Chart& chart, double now)
{
    Numbers numbers;
    for (const ObjectLife& life : chart.lives) {
        const bool onGround = !life.track.empty() && life.track.back().onGround;
        ++(!gf_isPresent(life, now) ? numbers.gone : onGround ? numbers.ground : numbers.airborne);
    }
    return numbers;
}

static std::string lf_heading(const Chart& chart, double now)
{
    const Numbers n = lf_numbers(chart, now);
    const int seconds = static_cast<int>(now);
    return format(
        "<text x='{0}' y='64' class='title'>{1}</text><text x='{0}' y='92' class='subtitle'>{2}</text>\n"
        "<text x='{0}' y='132' class='fact'>{3} airborne &#183; {4} on the ground &#183; {5} gone</text>"
        "<text x='{0}' y='156' class='fact'>after {6}:{7:02d} min of live traffic</text>\n",
        kSideLeft, gf_xmlText(chart.title), gf_xmlText(chart.subtitle), n.airborne, n.ground, n.gone,
        seconds / 60, seconds % 60);
}

static std::string lf_legend(double top)
{
    std::string svg = format("<text x='{}' y='{}' class='fact'>height</text>\n", kSideLeft, top);
    constexpr int kSteps = 44;
    const double width = kInsetSide / (kSteps + 4);
    svg += format("<rect x='{:.1f}' y='{:.1f}' width='{:.1f}' height='12' fill='{}'/>"
                  "<text x='{:.1f}' y='{:.1f}' class='ring'>ground</text>\n",
                  kSideLeft, top + 10, width * 3, gf_heightColour(0, true), kSideLeft, top + 36);
    for (int i = 0; i < kSteps; ++i) {
        const double feet = i * 41000.0 / (kSteps - 1);
        svg += format("<rect x='{:.1f}' y='{:.1f}' width='{:.1f}' height='12' fill='{}'/>\n",
                      kSideLeft + width * (i + 4), top + 10, width + 0.4, gf_heightColour(feet, false));
    }
    for (const double feet : {5000.0, 10000.0, 20000.0, 30000.0, 40000.0}) {
        svg += format("<text x='{:.1f}' y='{:.1f}' class='ring' text-anchor='middle'>{:.0f}</text>\n",
                      kSideLeft + width * (4 + feet / 41000 * (kSteps - 1)), top + 36, feet);
    }
    return svg;
}

// The nearest in the air, as a board.
static std::string lf_board(const Chart& chart, LatLon centre, double now, double top)
{
    std::vector<std::pair<double, const ObjectLife*>> nearest;
    for (const ObjectLife& life : chart.lives) {
        if (gf_isPresent(life, now) && !life.track.empty() && !life.track.back().onGround) {
            nearest.emplace_back(distNm(centre, {life.track.back().lat, life.track.back().lon}), &life);
        }
    }
    std::sort(nearest.begin(), nearest.end());
    nearest.resize(std::min(nearest.size(), kBoardRows));
    std::string svg =
        format("<text x='{}' y='{:.0f}' class='fact'>nearest in the air</text>\n", kSideLeft, top);
    double y = top + 20;
    for (const auto& [nm, life] : nearest) {
        const TrackPoint& point = life->track.back();
        svg += format("<text y='{0:.0f}' class='row'><tspan x='{1}' fill='{2}'>{3}</tspan>"
                      "<tspan x='{4}'>{5}</tspan><tspan x='{6}'>{7}</tspan><tspan x='{8}'>{9:.0f} kt</tspan>"
                      "<tspan x='{10}'>{11:.1f} nm</tspan></text>\n",
                      y, kSideLeft, gf_heightColour(point.altitude, false), gf_xmlText(life->tailNumber),
                      kSideLeft + 95, gf_xmlText(life->model), kSideLeft + 160, gf_heightText(point),
                      kSideLeft + 250, point.tas, kSideLeft + 330, nm);
        y += 17;
    }
    return svg;
}

constexpr const char* kHead =
    "<svg xmlns='http://www.w3.org/2000/svg' width='1500' height='1040' viewBox='0 0 1500 1040'>\n"
    "<defs><radialGradient id='sea'><stop offset='0' stop-color='#12283a'/>"
    "<stop offset='1' stop-color='#0a1824'/></radialGradient></defs>\n"
    "<style>text{font-family:'DejaVu "
    "Sans',Verdana,sans-serif}.label{font-size:10px;fill:#eef6fc;font-weight:bold}"
    ".detail{font-size:9px;fill:#a9c0d3}.ring{font-size:9px;fill:#64829c}.runway{font-size:11px;fill:#dbe9f5}"
    ".airport{font-size:13px;fill:#ffffff;font-weight:bold}.title{font-size:38px;fill:#ffffff;font-weight:"
    "bold}"
    ".subtitle{font-size:15px;fill:#7fa3c0}.fact{font-size:15px;fill:#c9dcea}"
    ".row{font-size:12px;fill:#c9dcea}</style>\n"
    "<rect width='1500' height='1040' fill='#07111a'/>\n";

// As wide as the traffic that is there, within limits.
static double lf_radius(const Chart& chart, LatLon centre, double now)
{
    std::vector<double> distances;
    for (const ObjectLife& life : chart.lives) {
        if (gf_isPresent(life, now) && !life.track.empty()) {
            distances.push_back(distNm(centre, {life.track.back().lat, life.track.back().lon}));
        }
    }
    std::sort(distances.begin(), distances.end());
    const double wanted = distances.empty() ? 0 : distances[distances.size() * 95 / 100] * 1.08;
    return std::clamp(wanted, kSmallestRadiusNm, kLargestRadiusNm);
}

std::string gf_trafficSvg(const Chart& chart)
{
    double now = 0;
    for (const ObjectLife& life : chart.lives) {
        now = life.track.empty() ? now : std::max(now, life.track.back().time);
    }
    const LatLon centre = chart.airport ? chart.airport->at : chart.user;
    const SvgMap map{kMargin, kMargin, kMainSide, centre, lf_radius(chart, centre, now)};
    const SvgMap inset{kSideLeft, kInsetTop, kInsetSide, centre, kInsetRadiusNm};
    std::string svg = kHead + lf_frame(map, "wide") + "<g clip-path='url(#wide)'>\n" + lf_compass(map);
    for (double nm = kRingNm; nm<map.radiusNm; nm += map.radiusNm> 25 ? 2 * kRingNm : kRingNm) {
        svg += lf_ring(map, nm);
    }
    if (chart.airport) {
        svg += lf_airport(map, *chart.airport, false);
    }
    svg += gf_trafficOnMap(map, chart.lives, now, 0.85, kInsetRadiusNm) + lf_user(map, chart) + "</g>\n";
    svg += lf_northAndScale(map, kRingNm, "5 nm");
    svg += lf_heading(chart, now);
    svg += lf_frame(inset, "near") + "<g clip-path='url(#near)'>\n";
    if (chart.airport) {
        svg += lf_airport(inset, *chart.airport, true);
    }
    svg += gf_trafficOnMap(inset, lf_lowTraffic(chart), now, 0.7, 0) + lf_user(inset, chart) + "</g>\n";
    svg += lf_northAndScale(inset, 1000 / kMetresPerNm, "1000 m");
    if (chart.airport) {
        svg += format("<text x='{:.0f}' y='{:.0f}' class='fact'>{} &#183; elevation {:.0f} ft</text>\n",
                      kSideLeft, kInsetTop + kInsetSide + 26, gf_xmlText(chart.airport->code),
                      chart.airport->elevation);
    }
    svg += lf_legend(kInsetTop + kInsetSide + 62);
    svg += lf_board(chart, centre, now, kInsetTop + kInsetSide + 132);
    return svg + "</svg>\n";
}

void gf_writePicture(const Chart& chart, const std::filesystem::path& file)
{
    gf_writeRunFile(file, gf_trafficSvg(chart));
}

}  // namespace vlt
