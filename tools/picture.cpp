#include "tools/picture.h"

#include "core/base/text.h"
#include "standin/feed_player.h"
#include "standin/picture_motion.h"
#include "standin/run_files.h"
#include "tools/replay.h"

#include <iostream>
#include <map>
#include <string>
#include <unordered_map>

namespace vlt {

// The positions that the feed tells of each address, due as long after they are heard as the engine waits.
static std::map<uint32_t, std::vector<MotionReport>> lf_reports(const FeedSource& feed, double seconds)
{
    constexpr double kDelay = static_cast<double>(kReplayDelayTicks) / kTicksPerSecond;
    std::map<uint32_t, std::vector<MotionReport>> reports;
    for (const DayLine& line : feed.lines(0, seconds)) {
        const auto fields = gf_split(line.text, ',');
        const auto number = [&](size_t field) { return std::stod(std::string(fields.at(field))); };
        reports[static_cast<uint32_t>(number(1))].push_back({line.time + kDelay, {number(2), number(3)}});
    }
    return reports;
}

// Keeps the way of every object.
class MotionWatch : public ReplayObserver
{
public:
    MotionWatch(const FeedSource& feed, double seconds) : m_reports(lf_reports(feed, seconds)) {}

    void onTick(int32_t now) override
    {
        constexpr int32_t kEvery = 25;
        if (now % kEvery != 0) {
            return;
        }
        for (const LiveAc& ac : liveAcs) {
            if (ac.fs == FsState::Active) {
                trackOf(ac).looks.push_back({static_cast<double>(now) / kTicksPerSecond, gf_placeOf(ac),
                                             ac.alt, ac.hdg * kDegPerRad, -ac.pitch * kDegPerRad, ac.speedOut,
                                             ac.st, ac.onGround});
            }
        }
    }
    void onSecond(int32_t, VirtualSimulator& simulator) override
    {
        simulator.takeCalls();
    }
    std::vector<MotionTrack> tracks;

private:
    MotionTrack& trackOf(const LiveAc& ac)
    {
        const auto [place, isNew] = m_index.try_emplace(ac.objectid, tracks.size());
        if (isNew) {
            tracks.push_back({format("{}, {}", ac.callsign, ac.model),
                              2 * ac.radius * kMetresPerNm,
                              {},
                              m_reports[ac.hexid]});
        }
        return tracks[place->second];
    }

    std::map<uint32_t, std::vector<MotionReport>> m_reports;
    std::unordered_map<uint32_t, size_t> m_index;  // into the tracks, by object
};

int gf_picture(const PictureOptions& options)
{
    ReplayToolOptions replay;
    replay.replay.world = options.world;
    replay.replay.seconds = options.seconds;
    replay.out = options.out / "airport";  // the built-in day's own file, which nobody asked for
    DayOptions day;
    day.world = options.world;
    const FeedSource feed(day);
    MotionWatch watch(feed, options.seconds);
    gf_replay(feed, gf_replayOptions(replay), &watch);
    std::filesystem::remove_all(replay.out);
    for (const MotionPicture& picture : gf_motionPictures(watch.tracks)) {
        const std::filesystem::path file = options.out / (picture.name + ".svg");
        gf_writeRunFile(file, picture.svg);
        std::cout << file.string() << '\n';
    }
    return 0;
}

}  // namespace vlt
