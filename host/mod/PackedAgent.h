#pragma once

#include <host/mod/PackedImpl.h>

/// What a character is made of, before it is written down as a detail that all its agents share.
struct MOD_AgentDefinition
{
    struct Joint
    {
        BAS_StringHolder name;
        int32_t parent = -1;  ///< an earlier joint, or none
        BAS_Mat4d rest;       ///< from the joint's space to the character's, in the pose that the shapes were made in
    };

    /// A shape follows one joint as a whole, or is bent by several: the points of its detail then have the attributes
    /// "joint" (int32) and "weight" (real32), of one tuple size; joints of -1 count for nothing.
    struct Shape
    {
        BAS_StringHolder name;
        MOD_ConstDetailHandle detail;
        int32_t joint = -1;  ///< -1: bent by its weights
    };

    std::vector<Joint> joints;
    std::vector<Shape> shapes;

    /// Write it down: a point for each joint with "name", "parent" and "rest" (real64, 16), and packed geometry for each
    /// shape with "name" and "joint".  An empty handle and a reason when a number is out of range or a shape is missing.
    HOST_API MOD_ConstDetailHandle make(std::string &why) const;
};

/// "PackedAgent": a character in a pose.  It unpacks to packed geometry, one for each shape: those that follow a joint place
/// the definition's own detail, so all agents share it; of the others only the positions are new.
struct HOST_API MOD_PackedAgentData
{
    MSH_DetailList definition;  ///< one, as `MOD_AgentDefinition::make` writes it
    std::vector<double> pose;   ///< 16 for each joint: from its space to the character's; none: as at rest

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("definition", self.definition);
        visit("pose", self.pose);
    }
    static ELM_PrimitiveTypeId type() { return ELM_PRIMITIVE_PACKED_AGENT; }
    bool check(std::string &why) const;

    /// An agent as a whole is not shared; the shapes that it unpacks to are.
    bool instanceKey(BAS_Options &) const { return false; }
    MOD_PackedContent load(std::string &why) const;
};

using MOD_PackedAgent = MOD_PackedImplOf<MOD_PackedAgentData>;
