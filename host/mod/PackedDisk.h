#pragma once

#include <host/mod/PackedImpl.h>

/// "PackedDisk": what a file holds, read when it is first wanted (see `MOD_DetailFiles`).
struct HOST_API MOD_PackedDiskData
{
    BAS_StringHolder path;

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit) { visit("path", self.path); }
    static ELM_PrimitiveTypeId type() { return ELM_PRIMITIVE_PACKED_DISK; }
    bool check(std::string &why) const;
    bool instanceKey(BAS_Options &key) const;
    MOD_PackedContent load(std::string &why) const;
};

/// Which file a sequence shows before its first frame and behind its last.
enum MOD_SequenceRule : int32_t
{
    MOD_SEQUENCE_HOLD,    ///< the nearest
    MOD_SEQUENCE_CYCLE,   ///< starts again
    MOD_SEQUENCE_MIRROR,  ///< runs back and forth
    MOD_SEQUENCE_NONE,    ///< nothing
    MOD_SEQUENCE_RULES
};

/// "PackedDiskSequence": one of many files, by its index.
struct HOST_API MOD_PackedDiskSequenceData
{
    std::vector<BAS_StringHolder> paths;
    double index = 0.0;
    bool blends = false;  ///< between two frames, points of equal number lie between those of both files
    int32_t rule = MOD_SEQUENCE_HOLD;

    /// The file of a frame; -1 for none.
    int64_t fileOf(double frame) const;

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("paths", self.paths);
        visit("index", self.index);
        visit("blends", self.blends);
        visit("rule", self.rule);
    }
    static ELM_PrimitiveTypeId type() { return ELM_PRIMITIVE_PACKED_DISK_SEQUENCE; }
    bool check(std::string &why) const;
    bool instanceKey(BAS_Options &key) const;
    MOD_PackedContent load(std::string &why) const;
};

using MOD_PackedDisk = MOD_PackedImplOf<MOD_PackedDiskData>;
using MOD_PackedDiskSequence = MOD_PackedImplOf<MOD_PackedDiskSequenceData>;
