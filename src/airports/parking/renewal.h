// The renewal of static parking every 20 minutes: who has stood for too long goes, who leaves next gets its
// next call sign, and stands that history fills by now are filled.
//
// Worker thread. State: whether a renewal is due.
#pragma once

#include <atomic>

namespace vlt {

extern std::atomic<bool>
    renewalWanted;  // [atomic] the user has changed what is planned by; the worker clears
// There is no airport any more whose parking could be renewed.
void gf_forgetRenewal();

// The 20 minutes have passed: the flights in the air are noted from now on.
void gf_requestRenewal();
// Every 15 s: renews the parking if that was requested a period ago; else requests what the user wants.
void gf_renewIfRequested();

// The renewal itself.
void parkingAdjustments();

}  // namespace vlt
