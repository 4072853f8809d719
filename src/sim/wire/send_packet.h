// Where the library over the wire and the one in process part: both put a composed packet on its way.
#pragma once

#include "sim/wire/packets.h"
#include "sim/wire/simconnect.h"

#include <functional>

namespace vlt {

// Composes one packet with the given send id into the space.
using ComposePacket = std::function<SimStatus(PacketSpace& space, uint32_t sendId)>;

// Has the next packet composed and sends it. A packet that turns out not to fit has used its send id up
// all the same and gives the composer's status; a dead handle and null give kSimFail, a broken
// connection its own status. Any thread; defined by velatra_transport and by velatra_direct.
SimStatus gf_sendPacket(SimHandle handle, const ComposePacket& compose);

}  // namespace vlt
