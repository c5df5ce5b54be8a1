#include <host/mod/DetailHandle.h>

#include <host/mod/detail/DetailControl.h>

MOD_DetailHandle::MOD_DetailHandle() : control_(new Control) { control_->current = new MSH_Detail(MSH_DetailData()); }

MOD_DetailHandle::MOD_DetailHandle(const MOD_ConstDetailHandle &start) : control_(new Control)
{
    control_->current = start ? start.readLock() : new MSH_Detail(MSH_DetailData());
}

MOD_DetailHandle::MOD_DetailHandle(const MOD_DetailHandle &) = default;
MOD_DetailHandle &MOD_DetailHandle::operator=(const MOD_DetailHandle &) = default;
MOD_DetailHandle::~MOD_DetailHandle() = default;

MOD_ConstDetailHandle MOD_DetailHandle::read() const
{
    const std::lock_guard lock(control_->pointer);
    return MOD_ConstDetailHandle(control_->current.get());
}
