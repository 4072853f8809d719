#include "link/qnh_reader.h"

#include "core/base/log.h"
#include "core/base/text.h"
#include "traffic/traffic.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <string>

namespace vlt {

using nlohmann::json;

static constexpr int32_t kLowest = 930;    // hectopascal
static constexpr int32_t kHighest = 1080;  // above: the number is in hundredths of an inch of mercury

QnhReader qnhReader;

// To whole, and into the range of the type: the feed may send any number.
static int32_t lf_whole(double value)
{
    constexpr double kAbsurd = 1e9;
    return static_cast<int32_t>(std::lround(std::clamp(value, -kAbsurd, kAbsurd)));
}

static std::optional<int32_t> lf_fromText(const std::string& text)
{
    try {
        return std::stoi(text);
    } catch (const std::invalid_argument&) {
        logLine(format("QNH string invalid arg: {}", text));
    } catch (const std::out_of_range&) {
        logLine(format("QNH string out of range: {}", text));
    }
    return std::nullopt;
}

// The number that the report gives, whatever its unit; none is logged.
static std::optional<int32_t> lf_reported(const json& value, std::string_view datagram)
{
    if (value.is_number()) {
        return lf_whole(value.get<double>());
    }
    if (value.is_string()) {
        return lf_fromText(value.get_ref<const std::string&>());
    }
    logLine(format("no QNH {}", datagram));
    return std::nullopt;
}

// In hectopascal; none, and logged, if there is no such pressure on earth.
static std::optional<int32_t> lf_hectopascal(int32_t reported, std::string_view datagram)
{
    constexpr double kPerInchHundredth = 0.33865307;
    const int32_t qnh = reported > kHighest ? lf_whole(reported * kPerInchHundredth) : reported;
    if (qnh < kLowest || qnh > kHighest) {
        logLine(format("? Strange QNH {} found in {}", qnh, datagram));
        return std::nullopt;
    }
    return qnh;
}

void QnhReader::processDatagram()
{
    try {
        json report = json::parse(datagram);
        const std::optional<int32_t> reported = lf_reported(report["QNH"], datagram);
        const std::optional<int32_t> qnh = reported ? lf_hectopascal(*reported, datagram) : std::nullopt;
        // The standard pressure counts as news each time: it is what stands there before any report.
        if (!qnh || (*qnh == currentQnh && *qnh != kStandardQnh)) {
            return;
        }
        currentQnh = *qnh;
        if (state == FeedState::Silent) {
            state = FeedState::Receiving;
        }
    } catch (const std::exception& e) {
        logLine(format("Exception {}, in {}", e.what(), datagram));
    }
}

void QnhReader::onStarted()
{
    state = FeedState::Silent;
}

void QnhReader::onStopped()
{
    state = FeedState::Stopped;
    logLine(format("{} has stopped", name));
}

void QnhReader::forget()
{
    UdpReader::forget();
    currentQnh = kStandardQnh;
}

std::jthread startQnhReader(uint16_t port)
{
    return gf_startReader(qnhReader, port);
}

}  // namespace vlt
