// Any stream of reports, any answers of the simulator: three aircraft at an airport are driven by them. All
// numbers must stay finite, every aircraft on earth, and a parked one where it is.
#include "airports/airports.h"
#include "core/run.h"
#include "traffic/cycle.h"
#include "traffic/geodesy.h"
#include "traffic/performance.h"
#include "traffic/sim_answers.h"
#include "traffic/stream.h"
#include "traffic/traffic.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

using namespace vlt;

static constexpr uint32_t kFirstHexid = 20000;
static constexpr uint32_t kFirstObject = 100;

static void lf_require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

static void lf_buildAirport()
{
    parkApf.code = "XFUZ";
    parkAirport = ParkAirportPlace{47, 8, 1000};
    for (uint32_t i = 0; i < 3; ++i) {
        ParkPos stand;
        stand.id = std::string(1, static_cast<char>('A' + i));
        stand.lat = 47;
        stand.lon = 8 + i * 0.0006;
        stand.heading = i;
        stand.radius = 20 / kMetresPerNm;
        stand.index = i + 1;
        stand.heli = i == 2;
        stand.neighbours = {i == 0 ? 2U : 1U};
        parkApf.stands.push_back(stand);
    }
}

static PosSample lf_sample(FuzzedDataProvider& input, const PosSample& last)
{
    PosSample s = last;
    const bool far = input.ConsumeProbability<float>() < 0.02F;
    s.lat = far ? input.ConsumeFloatingPointInRange(-90.0, 90.0)
                : std::clamp(last.lat + input.ConsumeFloatingPointInRange(-0.01, 0.01), -90.0, 90.0);
    s.lon = far ? input.ConsumeFloatingPointInRange(-180.0, 180.0)
                : std::remainder(last.lon + input.ConsumeFloatingPointInRange(-0.01, 0.01), 360.0);
    if (input.ConsumeBool()) {
        s.lat = last.lat;
        s.lon = last.lon;
    }
    s.airborne = input.ConsumeBool();
    s.altitude = s.airborne ? input.ConsumeFloatingPointInRange(1.0, 60000.0) : 0;
    s.speed = input.ConsumeFloatingPointInRange(0.0, 700.0);
    s.vs = input.ConsumeFloatingPointInRange(-9000.0, 9000.0);
    s.track = input.ConsumeFloatingPointInRange(0.0, 360.0);
    s.heading = input.ConsumeFloatingPointInRange(0.0, 6.28);
    s.headingValid = s.attitudeGiven = input.ConsumeBool();
    s.rollValid = input.ConsumeBool();
    s.roll = s.rollValid ? input.ConsumeFloatingPointInRange(-1.5, 1.5) : 0;
    s.time = tick + kReplayDelayTicks - input.ConsumeIntegralInRange(0, 100);
    return s;
}

static void lf_addAircraft(FuzzedDataProvider& input)
{
    for (uint32_t i = 0; i < 3; ++i) {
        LiveAc& ac = liveAcs.emplace_back();
        ac.hexid = kFirstHexid + i;
        ac.objectid = kFirstObject + i;
        ac.callsign = std::string(1, static_cast<char>('X' + i)) + "1";
        ac.airline = "XXX";
        ac.category = static_cast<AcCategory>(input.ConsumeIntegralInRange(0, 5));
        gf_applyPerformance(ac);
        ac.radius = 17 / kMetresPerNm;
        ac.fs = FsState::Active;
        ac.st = static_cast<StState>(input.ConsumeIntegralInRange(0, 7));
        ac.onGround = ac.st != StState::Flying;
        ac.standId = input.ConsumeIntegralInRange(0U, 4U);
        PosSample front;
        front.lat = 47 + i * 0.001;
        front.lon = 8;
        front.time = tick;
        front.speed = input.ConsumeFloatingPointInRange(0.0, 200.0);
        front.airborne = !ac.onGround;
        front.altitude = ac.onGround ? 0 : 1500;
        ac.stream = {front};
        ac.lat = front.lat;
        ac.lon = front.lon;
        ac.alt = 1500;
    }
}

static void lf_check(const LiveAc& ac, const LiveAc& before)
{
    for (const double x : {ac.lat, ac.lon, ac.alt, ac.hdg, ac.pitch, ac.bank, ac.altRate, ac.hdgRate,
                           ac.velocity.real(), ac.velocity.imag(), ac.speedOut, ac.vsOut, ac.tasOut}) {
        lf_require(std::isfinite(x));
    }
    lf_require(std::abs(ac.lon) <= 180.001 && ac.hdg >= 0 && ac.hdg < kTwoPi + 1e-9);
    for (size_t i = 1; i < ac.stream.size(); ++i) {
        lf_require(ac.stream[i].time >= 0);
    }
    if (ac.st == StState::Parked && before.st == StState::Parked && !before.pullOutPending) {
        lf_require(ac.lat == before.lat && ac.lon == before.lon);
    }
}

static void lf_letTimePass(int32_t ticks)
{
    for (int32_t i = 0; i < ticks; ++i) {
        for (LiveAc& ac : liveAcs) {
            if (ac.fs != FsState::Active) {
                continue;
            }
            const LiveAc before = ac;
            updateLiveAc(ac);
            lf_check(ac, before);
        }
        fillBuffer.clear();
        ++tick;
    }
}

static void lf_answer(FuzzedDataProvider& input)
{
    SimMessage message;
    message.kind = input.ConsumeBool() ? SimMessageKind::ObjectData : SimMessageKind::StaticData;
    message.objectid = kFirstObject + input.ConsumeIntegralInRange(0U, 3U);
    message.a = input.ConsumeBool() ? 1 : 0;
    message.x = input.ConsumeFloatingPointInRange(-100.0, 3000.0);
    message.y = input.ConsumeFloatingPointInRange(-5.0, 3000.0);
    handleSimMessage(message);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    lf_require(gf_resetRun());
    tick = 100'000;
    userNow.lat = 47.1;
    userNow.lon = 8;
    lf_buildAirport();
    lf_addAircraft(input);
    for (int steps = 0; steps < 200 && input.remaining_bytes() > 0; ++steps) {
        LiveAc& ac = liveAcs[input.ConsumeIntegralInRange<size_t>(0, liveAcs.size() - 1)];
        switch (input.ConsumeIntegralInRange(0, 3)) {
        case 0:
        case 1:
            if (!ac.stream.empty()) {
                decodeExisting(ac, lf_sample(input, ac.stream.back()));
            }
            break;
        case 2:
            lf_answer(input);
            break;
        default:
            lf_letTimePass(input.ConsumeIntegralInRange(1, 600));
        }
    }
    return 0;
}
