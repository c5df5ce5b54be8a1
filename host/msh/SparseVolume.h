#pragma once

#include <host/msh/Placed.h>

/// What a sparse volume's payload holds: a grid of some library behind a pointer, and the name of its field.
struct HOST_API MSH_SparseVolumeData
{
    BAS_StringHolder name;
    MSH_OpaqueHandle grid;

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("name", self.name);
        visit("grid", self.grid);
    }
    bool check(const MSH_PayloadUse &use, std::string &why) const;
};

/// A primitive seen as a sparse volume.
class MSH_SparseVolume : public MSH_Placed
{
public:
    explicit MSH_SparseVolume(const MSH_Primitive &primitive) : MSH_Placed(primitive) {}
    MSH_SparseVolume(const MSH_Detail &detail, ELM_Offset offset) : MSH_Placed(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() == ELM_PRIMITIVE_SPARSE_VOLUME; }

    const BAS_StringHolder &name() const { return payload<MSH_SparseVolumeData>().name; }

    /// The grid; its `kind` tells what to cast it to.
    const MSH_Opaque &grid() const { return *payload<MSH_SparseVolumeData>().grid; }
};
