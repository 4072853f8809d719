#include "traffic/stays.h"

#include "airports/apron.h"
#include "core/base/parameters.h"

#include <map>

namespace vlt {

using Hexids = std::set<uint32_t>;

// Aprons full of live and static aircraft in every state: who has to go.
class StaysTest : public Apron
{
protected:
    static void fill()
    {
        liveAcs.clear();
        staticAcs.clear();
        build();
        const auto place = [](StaticAc& ac) {
            ac.fs = one({FsState::Active, FsState::Active, FsState::Adding2Sim, FsState::RemovingFromSim});
            ac.standId = draw(static_cast<uint32_t>(parkApf.stands.size()) + 1);
        };
        for (uint32_t i = draw(6); i > 0; --i) {
            LiveAc& ac =
                gf_addOnGround(20000 + i, "BAW1", one({StState::Parked, StState::Parking, StState::Parked}));
            ac.parkedSince = tick - static_cast<int32_t>(draw(9));
            place(ac);
        }
        for (uint32_t i = draw(5); i > 0; --i) {
            StaticAc& ac = staticAcs.emplace_back();
            ac.hexid = ac.objectid = i;
            ac.stamp = stamp();
            place(ac);
        }
    }
    static bool parked(const LiveAc& ac)
    {
        return ac.fs == FsState::Active && ac.st == StState::Parked;
    }
    static Hexids longestParked(int64_t count)
    {
        std::multimap<int32_t, uint32_t> bySince;
        for (const LiveAc& ac : liveAcs) {
            if (parked(ac)) {
                bySince.emplace(ac.parkedSince, ac.hexid);
            }
        }
        Hexids longest;
        for (auto it = bySince.begin(); it != bySince.end() && count > 0; ++it, --count) {
            longest.insert(it->second);
        }
        return longest;
    }
    static Hexids gone()
    {
        Hexids hexids;
        const auto look = [&hexids](const StaticAc& ac) {
            if (!ac.goesBecause.empty()) {
                hexids.insert(ac.hexid);
            }
        };
        std::ranges::for_each(liveAcs, look);
        std::ranges::for_each(staticAcs, look);
        return hexids;
    }
};

TEST_F(StaysTest, theReservedStandIsClearedOfAStaticAircraftElseOfAParkedOne)
{
    for (int round = 0; round < 1000; ++round) {
        fill();
        reservedStand = one({"", "A1", "A1", "B1"});  // A1 is the last of the apron
        const uint32_t there =
            reservedStand == "A1" ? static_cast<uint32_t>(parkApf.stands.size()) : kNoStand;
        const auto held = [there](const StaticAc& ac) {
            return there != kNoStand && ac.standId == there && ac.fs == FsState::Active;
        };
        const auto still = std::ranges::find_if(staticAcs, held);
        const auto live =
            std::ranges::find_if(liveAcs, [held](const LiveAc& ac) { return held(ac) && parked(ac); });
        Hexids expected;
        if (still != staticAcs.end()) {
            expected = {still->hexid};
        } else if (live != liveAcs.end()) {
            expected = {live->hexid};
        }
        clearReservedStand();
        ASSERT_EQ(expected, gone()) << round;
    }
}

TEST_F(StaysTest, theLongestParkedMakeRoom)
{
    hourNow = {2, 10};
    const auto age = [](const StaticAc& ac) {
        return (2 * 48 + 10 - static_cast<int>(ac.stamp.day * 48 + ac.stamp.slot) + 7 * 48) % (7 * 48);
    };
    for (int round = 0; round < 2000; ++round) {
        fill();
        maxPark = one({0, 1, 2, 4});
        INITIAL_LOAD_ONLY.value = draw(4) == 0;
        const int32_t extra = one({0, 1});
        const auto all = extra + std::ranges::count_if(liveAcs, parked);
        Hexids expected = longestParked(!INITIAL_LOAD_ONLY.value && maxPark > 0 && all > maxPark ? 1 : 0);
        const auto asked = std::ranges::count(staticAcs, FsState::Adding2Sim, &StaticAc::fs);
        const auto oldest = std::ranges::max_element(staticAcs, {}, age);
        if (oldest != staticAcs.end() && oldest->fs == FsState::Active &&
            all + std::ssize(staticAcs) - asked > maxPark) {
            expected.insert(oldest->hexid);
        }
        maxParkCheck(extra);
        ASSERT_EQ(expected, gone()) << round;
        fill();
        expected = longestParked(extra + maxPark);
        removeOldestParked(extra + maxPark);
        ASSERT_EQ(expected, gone()) << round;
    }
}

}  // namespace vlt
