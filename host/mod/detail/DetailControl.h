#pragma once

#include <mutex>

#include <host/mod/DetailHandle.h>

/// What all handles of a detail share.
struct MOD_DetailHandle::Control : BAS_IntrusiveRefCounter<Control>
{
    std::mutex editing;  // held by the edit in progress

    // Held only while the pointer is copied and counted, or exchanged: an atomic pointer alone could be counted after its
    // owner is gone.
    mutable std::mutex pointer;
    BAS_IntrusivePtr<const MSH_Detail> current;
};
