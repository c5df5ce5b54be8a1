#pragma once

#include <host/msh/Placed.h>

/// What a tube's payload holds.
struct HOST_API MSH_TubeData
{
    double taper = 1.0;  ///< the radius at z = 0.5; it is 1 at z = -0.5
    bool hasCaps = false;

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("taper", self.taper);
        visit("caps", self.hasCaps);
    }
    bool check(const MSH_PayloadUse &use, std::string &why) const;
};

/// A primitive seen as a placed circle (the unit disc in the xy plane), unit sphere, or tube along z.
class MSH_Quadric : public MSH_Placed
{
public:
    explicit MSH_Quadric(const MSH_Primitive &primitive) : MSH_Placed(primitive) {}
    MSH_Quadric(const MSH_Detail &detail, ELM_Offset offset) : MSH_Placed(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() == ELM_PRIMITIVE_CIRCLE || type() == ELM_PRIMITIVE_SPHERE || isTube(); }

    bool isTube() const { return type() == ELM_PRIMITIVE_TUBE; }

    /// Of tubes only.
    double taper() const { return payload<MSH_TubeData>().taper; }
    bool hasCaps() const { return payload<MSH_TubeData>().hasCaps; }
};
