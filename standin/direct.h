// The simulator's operations served in process: the other half of the choice that is made when a
// program is linked, beside the transport over the wire.
//
// Packets are composed by the same operations as for the wire and handed to one VirtualSimulator; its
// messages come back in SimConnect_CallDispatch, on the caller's thread and with no lock held. One
// connection at a time; a lock inside lets any thread call.
#pragma once

namespace vlt {

class VirtualSimulator;

// The simulator that SimConnect_Open finds from now on, nullptr for none. It must outlive every
// connection to it; an open connection is broken by the change.
void gf_setDirectSimulator(VirtualSimulator* simulator);

}  // namespace vlt
