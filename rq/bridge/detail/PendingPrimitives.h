#pragma once

#include <utility>

#include <host/elm/Group.h>

class MSH_Detail;

namespace rq
{
/// Primitives of a detail that come one by one, to be read together: a run of them costs hardly more than one.
///
/// Ownership  none: valid while the detail lives
/// Cost       a run that goes on is counted, one that ends takes a bit for each primitive
class PendingPrimitives
{
public:
    bool isEmpty() const { return !detail_; }

    /// Take a primitive.  False, and it is not taken, when it is another detail's or not behind all others.
    bool add(const MSH_Detail &detail, ELM_Offset primitive)
    {
        if (primitive != end_ || &detail != detail_)
            return addRun(detail, primitive, primitive + 1);
        ++end_;
        return true;
    }

    /// Take those of another.  False, and they stay there, when they are another detail's or not behind all others.
    bool add(PendingPrimitives &following)
    {
        if (following.isEmpty() || isEmpty())
        {
            if (isEmpty())
                *this = std::exchange(following, {});
            return true;
        }
        if (detail_ != following.detail_ || following.first() < end_)
            return false;
        const MSH_Detail &detail = *detail_;
        following.take([&](const MSH_Detail &, const ELM_Range &range) {
            for (const auto [begin, end] : range.blocks())
                addRun(detail, begin, end);
        });
        return true;
    }

    /// Give all that there are to `visit(detail, range)`, and forget them.
    template <class Visit> void take(Visit &&visit)
    {
        if (isEmpty())
            return;
        if (earlier_)
            storeRun();
        PendingPrimitives taken = std::exchange(*this, {});
        visit(*taken.detail_,
              taken.earlier_ ? taken.earlier_->range() : ELM_Range(ELM_OWNER_PRIMITIVE, taken.begin_, taken.end_));
    }

private:
    bool addRun(const MSH_Detail &detail, ELM_Offset begin, ELM_Offset end)
    {
        if (!isEmpty() && (&detail != detail_ || begin < end_))
            return false;
        if (!isEmpty() && begin > end_)
            storeRun();
        if (isEmpty() || begin > end_)
            begin_ = begin;
        end_ = end;
        detail_ = &detail;
        return true;
    }

    void storeRun()
    {
        if (!earlier_)
            earlier_ = new ELM_Group(ELM_OWNER_PRIMITIVE, BAS_StringHolder());
        earlier_->setRange(begin_, end_ - begin_);
    }

    ELM_Offset first() const { return earlier_ ? earlier_->range().begin() : begin_; }

    const MSH_Detail *detail_ = nullptr;  // null while there are none
    ELM_Offset begin_ = 0, end_ = 0;      // the last run
    ELM_GroupHandle earlier_;             // null while that is all
};
}  // namespace rq
