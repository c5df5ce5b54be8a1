#pragma once

#include <host/msh/Primitive.h>

/// How a channel runs from a key to the next.
enum MSH_ChannelSegment : int32_t
{
    MSH_CHANNEL_CONSTANT,
    MSH_CHANNEL_LINEAR,
    MSH_CHANNEL_CUBIC,  ///< with the slopes of both keys
    MSH_CHANNEL_SEGMENTS
};

/// What a channel's payload holds: the keys of a function of time.
///
/// Shape  a value, a slope on either side, and the kind of the segment behind it for each key; times rise
/// Units  times in seconds, slopes in values a second
struct HOST_API MSH_ChannelData
{
    std::vector<double> times;
    std::vector<double> values;
    std::vector<double> slopesBefore;
    std::vector<double> slopesBehind;
    std::vector<int32_t> segments;

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("times", self.times);
        visit("values", self.values);
        visit("slopes_before", self.slopesBefore);
        visit("slopes_behind", self.slopesBehind);
        visit("segments", self.segments);
    }
    bool check(const MSH_PayloadUse &use, std::string &why) const;
};

/// A primitive seen as a channel.  It has no vertices, or one for each key.
class MSH_Channel : public MSH_Primitive
{
public:
    explicit MSH_Channel(const MSH_Primitive &primitive) : MSH_Primitive(primitive) {}
    MSH_Channel(const MSH_Detail &detail, ELM_Offset offset) : MSH_Primitive(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() == ELM_PRIMITIVE_CHANNEL; }

    int64_t keys() const { return int64_t(data().times.size()); }
    const MSH_ChannelData &data() const { return payload<MSH_ChannelData>(); }
};
