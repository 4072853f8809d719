// What becomes of a new report, and of an aircraft whose reports end.
#include "traffic/stream.h"

#include "airports/loading.h"
#include "airports/stand_search.h"
#include "traffic/arrival.h"
#include "traffic/stage.h"
#include "traffic/stream_end.h"

namespace vlt {

class Stream : public Stage
{
protected:
    // The reports that `text` tells, the first one 5 s after the stream's last.
    static void hear(LiveAc& ac, const std::string& text)
    {
        for (const PosSample& sample : samples(text, ac.stream.back().time)) {
            decodeExisting(ac, sample);
        }
    }
    // Parked at a stand at its place, as after its arrival.
    static LiveAc& parked(const std::string& scene = "parked extended: 0s")
    {
        ParkPos& stand = gf_addStand("A1", 0, 0, 90);
        LiveAc& ac = add(scene);
        gf_takeStand(ac, stand);
        ac.stream.front().time = tick + kParkedAheadTicks - 200'000;
        return ac;
    }
    // Two of 20 m, so many metres apart.
    static void addStandsSideBySide(double metres)
    {
        gf_addStand("A1", 0, 0, 90);
        gf_addStand("A2", metres, 0, 90);
        for (ParkPos& stand : parkApf.stands) {
            stand.radius = 20 / kMetresPerNm;
        }
        gf_findNeighbours(parkApf.stands);
    }
};

TEST_F(Stream, whatAReportDoes)
{
    // A half span is 17.05 m: after a push-back 2.75 of them, 46.9 m, are enough to taxi, or 6, 102.3 m,
    // anyhow.
    // clang-format off
    const struct { const char *what, *before, *reports, *after; } cases[] = {
        {"a standing one needs no history",     "taxi: 0s",                     "0@0 0@3 0@0",   "taxi: 0s 0+15s"},
        {"jitter on the ground is a stop",      "taxi: -60 0",                  "8@3",           "taxi: -60 0 0s"},
        {"a stop stays while it lasts",         "taxi: -60 0 0s",             "8@3",          "taxi: -60 0 0s 0s"},
        {"jitter in the air",                   "flying: 0^900 90^900",       "98^900",       "flying: 0^900 90^900"},
        {"down, but it still flies",         "flying lands: 0^100@90 90@60", "90@0", "flying lands: 0^100@90 90@60"},
        {"rolling, it doesn't speed up",     "taxi rolls: 0@90 90@60",          "180@90",  "taxi rolls: 0@90 90@60 180@60"},
        {"but going round it does",          "taxi runs rolls: 0@90 90@60",     "180@90",  "taxi runs rolls: 0@90 90@60 180@90"},
        {"and if it climbs",                 "taxi rolls: 0@90 90@60",          "180v257@90",  "taxi rolls: 0@90 90@60 180v257@90"},
        {"not during a run",                    "taxi runs: 0@40 60@50",  "68@50",    "taxi runs: 0@40 60@50"},
        {"but before it",                       "taxi runs: 0@40 60@49",  "68@45",    "taxi runs: 0@40 60@49 60s"},
        {"no same place during a run",          "taxi runs: 0@40 60@30",  "60@30",    "taxi runs: 0@40 60@30"},
        {"but before it",                       "taxi runs: 0@20 60@29",  "60@20",    "taxi: 0@20 60@29 60s"},
        {"nor a knot",                          "taxi runs: 0@40 60@60",  "60@1",     "taxi runs: 0@40 60@60"},
        {"but the end of it",                   "taxi runs: 0@40 60@60",  "60@0",     "taxi runs: 0@40 60@60 60s"},
        {"no speed of 0 out of a run",          "taxi: 0@60 300@60",      "700@0",    "taxi: 0@60 300@60 700@0"},
        {"nor during it",                       "taxi runs: 0@60 300@50", "700@0",    "taxi runs: 0@60 300@50"},
        {"a stop of 10 s is none",              "taxi: -120 -60 0 0+10s", "90@12",    "taxi: -120 -60 0 90@12+15"},
        {"one of 15 s is one",                  "taxi: -120 -60 0 0+15s", "90@12",    "taxi: -120 -60 0 0+15s 90@12"},
        {"long, but it goes on where it began", "taxi: -120 -60 0 0+60s", "21@12",    "taxi: -120 -60 0 21@12+65"},
        {"the same, a little farther",          "taxi: -120 -60 0 0+60s", "23@12",    "taxi: -120 -60 0 0+60s 23@12"},
        {"several reports of a short stop",     "taxi: -120 0 0+4s 0+4s 0+4s", "90@12",    "taxi: -120 0 90@12+17"},
        {"a helicopter keeps every report",     "taxi Rotorcraft: -60 0",     "4@5 4@5",      "taxi: -60 0 4@5 4@5s"},
        {"the order of time is kept",           "taxi: 0 60+90",              "120+-80",      "taxi: 0 60+90 120+0"},
        {"two fast reports begin a take-off",   "taxi: 0 60@43",          "160@43",   "taxi runs: 0 60@43 160@43"},
        {"one doesn't",                         "taxi: 0 60@42",              "160@60",       "taxi: 0 60@42 160@60"},
        {"nor one that becomes slower",         "taxi: 0 60@60",              "160@42",       "taxi: 0 60@60 160@42"},
        {"one in the air does",                 "taxi: 0 60@20",      "160^900@80", "taxi runs: 0 60@20 160^900@80"},
        {"one in the air after a landing",      "taxi rolls landed: 0 90", "200^9", "taxi rolls landed: 0 90 200^9"},
        {"a second one: it goes around", "taxi rolls landed: 0 90", "200^9 400^9", "taxi runs rolls: 0 90 200^9 400^9"},
        {"leading back as it rolls: two go", "taxi rolls: 0@60 100@60 200@60", "50@60", "taxi rolls: 0@60 50@60+15"},
        {"two at the most", "taxi rolls: 0@60 100@60 150@60 200@60", "50@60", "taxi rolls: 0@60 100@60 50@60+15"},
        {"back from the only one, it waits",    "taxi rolls: 0@60",       "-90@50",   "taxi rolls: 0@60 -90@50"},
        {"the same, extended",                  "taxi rolls extended: 0@60", "-90@50",   "taxi rolls extended: 0@60"},
        {"aside from the only one",          "taxi rolls extended: 0@60", "-90,60@50", "taxi rolls: 0@60 -90,60@50"},
        {"a roll doesn't gain speed",           "taxi rolls: 0@60 60@50", "90@70",    "taxi rolls: 0@60 60@50 90@50"},
        {"unless it taxies already",            "taxi rolls: 0@60 60@30", "90@40",    "taxi rolls: 0@60 60@30 90@40"},
        {"the same place during the roll",      "taxi rolls: 0@60 60@50", "60@50",    "taxi rolls: 0@60 60@50"},
        {"on approach from behind",             "flying lands: 0^900@140", "-900^900@140", "flying lands: 0^900@140"},
        {"on approach from ahead", "flying lands: 0^900@140", "900^900@140", "flying lands: 0^900@140 900^900@140"},
        {"back behind an extended one", "flying extended: 0^9000@300", "-900^9000@300", "flying extended: 0^9000@300"},
        {"back ahead of it: its lag is over",   "flying extended: 0^900", "900^900",  "flying: 0^900 900^900"},
        {"on the ground any side will do",      "taxi extended holds: 0s",      "-90",           "taxi: 0s -90"},
        {"held, and 249 m off",                 "taxi holds: 0s",             "249",          "taxi holds: 0s 249"},
        {"held, and 251 m off: it comes anew",  "taxi holds: 0s",               "251",           "taxi goes: 0s"},
        {"pushed back, and too near",           "pushed_back: 0s",        "46@8",     "pushed_back holds: 0s"},
        {"far enough, but it came nearer",      "pushed_back: 0s",        "60@8 48@8", "pushed_back holds: 0s"},
        {"far enough and farther",              "pushed_back known extended: 0s", "46@8 48@8",    "taxi: 0s 48@8+10"},
        {"very far off",                        "pushed_back: 0s",              "103@8",         "taxi: 0s 103@8"},
        {"nearly",                              "pushed_back: 0s",        "101@8",    "pushed_back holds: 0s"},
        {"while it is pushed",                  "pushing_back: 0s",             "-40@4 -90@4",   "pushing_back: 0s"},
        {"shown without a phase, it finds one", "birth: 0s",                    "40",            "taxi: 0s 40"},
        {"the same in the air", "birth: 0^900 90^900", "180^900", "flying: 0^900 90^900 180^900"},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        LiveAc& ac = add(c.before);
        ac.pushedBackDist = 900;  // as a push-back ends
        hear(ac, c.reports);
        EXPECT_EQ(c.after, look(ac)) << c.what;
        EXPECT_LE(tick, ac.stream.front().time) << c.what;
        EXPECT_TRUE(std::ranges::adjacent_find(ac.stream, std::greater_equal{}, &PosSample::time) ==
                    ac.stream.end())
            << c.what;
    }
}

TEST_F(Stream, atAStandItIsNoiseUntilItLeadsAway)
{
    // Believed are three reports, each 3 m farther out, of half a wing in all, or one a whole wing farther
    // out than the first. It has parked for 33 minutes. `before` says parking where it has just arrived.
    // clang-format off
    const struct { const char *what, *before, *reports, *after; } cases[] = {
        {"farther out, but two only",        "parked extended",  "-1@2 -6@2 -10@2",        "parked extended: 0s"},
        {"three of them",                    "parked extended",  "-1@2 -6@2 -10@2 -13@2",  "parked leaves: 0s -13@2"},
        {"one of them nearer",               "parked extended",  "-1@2 -6@2 -2@2 -10@2 -14@2", "parked extended: 0s"},
        {"three, half a wing isn't reached", "parked extended",  "-1@2 -4@2 -7@2 -9@2",    "parked extended: 0s"},
        {"within the wing",                  "parked extended",  "-1@2 -17@2",             "parked extended: 0s"},
        {"beyond it",                        "parked extended",  "-1@2 -22@2",             "parked leaves: 0s -22@2"},
        {"84 m off at first",                "parked extended",  "-84",                    "parked extended: 0s"},
        {"86 m off at first",                "parked extended",  "-86",                    "parked leaves: 0s -86"},
        {"169 m off, on its way to it",      "parking extended", "-169",                   "parking extended: 0s"},
        {"171 m off, on its way to it",      "parking extended", "-171",                   "taxi extended: 0s -171"},
        {"landed half an hour ago",           "parked landed extended", "-86",              "parked leaves: 0s -86"},
        {"a heavy one: it is towed", "parked landed Heavy extended", "-86",        "parked leaves towed: 0s -86"},
        {"199 m off",                        "parked extended",  "-199",                   "parked leaves: 0s -199"},
        {"201 m off: it isn't that one",     "parked extended",  "-201",         "parked extended goes: 0s"},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        LiveAc& ac = parked(std::string(c.before) + ": 0s");
        ac.prevSt = ac.st == StState::Parking ? StState::Parking : StState::Taxi;
        gf_claimStand(ac);
        for (const PosSample& sample : samples(c.reports, tick)) {
            decodeExisting(ac, sample);
        }
        EXPECT_TRUE(ac.liveAtStand) << c.what;
        if (ac.stream.size() > 1) {  // the clock of the reports goes on
            EXPECT_GE(ac.stream[0].time, tick + 1) << c.what;
            ac.stream[1].time = ac.stream[0].time + 500;
        }
        EXPECT_EQ(c.after, look(ac)) << c.what;
        EXPECT_EQ(ac.pullOutPending || goes(ac), parkApf.stands[0].occupiedByLive == kNobody) << c.what;
    }
}

TEST_F(Stream, aStreamThatGrowsWithoutEndGoes)
{
    LiveAc& ac = add("flying: 0^900@140");
    for (size_t i = 1; i <= kLongestStream + 1; ++i) {
        EXPECT_FALSE(goes(ac)) << i;
        hear(ac, format("{}^900@140", i * 360));
    }
    EXPECT_TRUE(goes(ac));
}

TEST_F(Stream, howReportsThatEndAreContinued)
{
    // A taxiing aircraft stands for 3 s, one on the runway rolls or runs on for 3 s, one in the air flies on
    // for 8 s: 1 kt for 1 s are 0.5144 m. Samples still to be invented are told, 0: none was yet, before and
    // after. The range is 40 nm around a user who is 39.49 nm, half a mile less, south of 47 N.
    // clang-format off
    const struct { const char *what, *before; int32_t count; const char* after; int32_t left; } cases[] = {
        {"taxiing: it stands", "taxi: 0",          0, "taxi holds extended: 0 0+3s",                     1},
        {"a run has just begun", "taxi runs: 0@30", 0, "taxi runs extended: 0@30 62@40+3",               10},
        {"a run",              "taxi runs: 0@60",  0, "taxi runs extended: 0@60 123@80+3",               10},
        {"a fast run",         "taxi runs: 0@140", 0, "taxi runs extended: 0@140 231v600@150+3",         10},
        {"faster",             "taxi runs: 0@160", 0, "taxi runs extended: 0@160 262v1200@170+3",        10},
        {"beyond all",         "taxi runs: 0@171", 0, "taxi runs extended: 0@171 278v2400@180+3",        10},
        {"a fast roll",        "taxi rolls: 0@140", 0, "taxi rolls extended: 0@140 154@100+3",           10},
        {"a roll",             "taxi rolls: 0v-90@100", 0, "taxi rolls extended: 0v-90@100 123@80+3",    10},
        {"a slow roll",        "taxi rolls: 0@60", 0, "taxi rolls extended: 0@60 46@30+3",               10},
        {"slower",             "taxi rolls: 0@59", 0, "taxi rolls extended: 0@59 31@20+3",               10},
        {"stood already",      "taxi rolls: 0s",   0, "taxi rolls extended: 0s 0+3s",                    10},
        {"slower by a 20th", "flying: 0^9000@300", 0, "flying extended: 0^9000@300 1173^9000@285+8",     8},
        {"on approach: by a 10th", "flying lands: 0^900@150", 5,
         "flying lands extended: 0^900@150 556^820v-667@135+8", 4},
        {"the last three not", "flying lands: 0^900@150", 4,
         "flying lands extended: 0^900@150 617^820v-667@150+8", 3},
        {"after the rotation", "take_off: 0^100@150", 0, "take_off extended: 0^100@150 586^300v1500@143+8", 8},
        {"all are invented",   "flying: 0^9000@300", 1, "flying: 0^9000@300",                            -1},
        {"and it gets no more", "flying: 0^9000@300", -1, "flying: 0^9000@300",                          -1},
        {"not wanted",         "flying Light: 0^9000@100", 0, "flying: 0^9000@100",                      0},
        {"out of the range",   "flying: 0,40^9000@300", 0, "flying: 0,40^9000@300",                      0},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        LIGHT_AIRCRAFT.value = false;
        userNow.lat = 47 - 39.49 / 60;
        userNow.lon = 8;
        LiveAc& ac = add(c.before);
        ac.extendCount = c.count;
        EXPECT_EQ(c.left > 0, extendStream(ac)) << c.what;
        EXPECT_EQ(c.after, look(ac)) << c.what;
        EXPECT_EQ(c.left, ac.extendCount) << c.what;
    }
}

TEST_F(Stream, aTaxiingAircraftHoldsUnlessItIsInTheWay)
{
    add("taxi: 40", 20002, "DLH1");
    EXPECT_FALSE(extendStream(add("taxi: 0")));
    liveAcs[0].lon = gf_groundSample(41, 0, 0, 0).lon;  // (17.05 + 17.05) * 1.2 = 40.9 m
    EXPECT_TRUE(extendStream(liveAcs[1]));
}

TEST_F(Stream, aParkedAircraftWaitsForAWeekAndNoLongerCountsAsReporting)
{
    LiveAc& ac = parked("parked: 0s");
    ac.liveAtStand = true;
    gf_claimStand(ac);
    ac.stream.front().time = tick;
    ASSERT_TRUE(extendStream(ac));
    EXPECT_EQ(tick + kParkedAheadTicks, ac.stream.back().time);
    EXPECT_FALSE(ac.liveAtStand || parkApf.stands[0].occupiedByLive);
}

TEST_F(Stream, ofTwoOnTheirWayToStandsWhereTheyWouldTouchTheFirstHasItsWay)
{
    addStandsSideBySide(36);
    add("parking: 0s");
    add("taxi: 36s", 20002, "BAW4AK");
    gf_takeStand(liveAcs[0], parkApf.stands[0]);
    for (const StState first : {StState::Parking, StState::Parked}) {
        liveAcs[0].st = first;
        try2Park(liveAcs[1], true);
        EXPECT_EQ(first == StState::Parked, liveAcs[1].st == StState::Parking);
        EXPECT_EQ(first == StState::Parked, goes(liveAcs[0]));
    }
}

TEST_F(Stream, aStandThatGrowsReachesItsNeighbour)
{
    addStandsSideBySide(45);
    EXPECT_TRUE(parkApf.stands[0].neighbours.empty());
    LiveAc& ac = add("taxi: 0s");
    ac.radius = 32 / kMetresPerNm;
    EXPECT_EQ(1U, standAtPosition(gf_placeOf(ac), ac, kStandReach, true));
    EXPECT_EQ(std::vector<uint32_t>{2}, parkApf.stands[0].neighbours);
}

}  // namespace vlt
