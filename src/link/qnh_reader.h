// The QNH Reader: takes the pressure at sea level out of the weather feed, one JSON object a datagram.
//
// Runs on its own thread and takes no lock. What it hears stands in `currentQnh`, for the engine and for the
// window.
#pragma once

#include "link/udp_reader.h"

#include <cstdint>
#include <thread>

namespace vlt {

inline constexpr uint16_t kQnhPort = 49004;

class QnhReader : public UdpReader
{
public:
    QnhReader() : UdpReader("QNH Reader") {}
    void processDatagram() override;
    // The weather is rare, so its lamp says nothing before some has come: it begins silent.
    void onStarted() override;
    void onStopped() override;
    void forget() override;
};

extern QnhReader qnhReader;

// Starts the QNH Reader's thread.
std::jthread startQnhReader(uint16_t port);

}  // namespace vlt
