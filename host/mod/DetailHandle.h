#pragma once

#include <host/msh/Detail.h>

/// A read handle: one snapshot of a detail, kept alive and readable for as long as the handle lives.
///
/// Ownership  shares the snapshot; holding one for hours blocks nobody
/// Threads    handles may be copied and dropped on any thread; one handle must not be assigned while it is read
class HOST_API MOD_ConstDetailHandle
{
public:
    /// A handle of nothing.
    MOD_ConstDetailHandle() = default;
    explicit MOD_ConstDetailHandle(const MSH_Detail *detail) : detail_(detail) {}

    /// The snapshot, valid as long as the handle; null only for a handle of nothing.
    const MSH_Detail *readLock() const { return detail_.get(); }

    explicit operator bool() const { return bool(detail_); }
    bool operator==(const MOD_ConstDetailHandle &) const = default;

private:
    BAS_IntrusivePtr<const MSH_Detail> detail_;
};

/// A detail that changes: its current snapshot, and the right to edit it (see `MOD_Edit`).
///
/// Ownership  copies of the handle mean the same detail
/// Threads    safe from any thread: reading copies a pointer and never waits for an edit; one edit runs at a time
class HOST_API MOD_DetailHandle
{
public:
    /// A new detail without elements.
    MOD_DetailHandle();

    /// A new detail that begins as a snapshot, which stays as it is.  A handle of nothing counts as no elements.
    explicit MOD_DetailHandle(const MOD_ConstDetailHandle &start);
    MOD_DetailHandle(const MOD_DetailHandle &other);
    MOD_DetailHandle &operator=(const MOD_DetailHandle &other);
    ~MOD_DetailHandle();

    /// The snapshot that is current now.
    MOD_ConstDetailHandle read() const;

    bool operator==(const MOD_DetailHandle &) const = default;

private:
    friend class MOD_Edit;
    struct Control;

    BAS_IntrusivePtr<Control> control_;
};
