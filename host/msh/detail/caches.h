#pragma once

#include <host/msh/Detail.h>

// What a detail builds on first use.

struct MSH_Detail::PointUse : BAS_IntrusiveRefCounter<PointUse>
{
    BAS_BitArray used;
    int64_t usedCount = 0;
};

struct MSH_Detail::VertexOwners : BAS_IntrusiveRefCounter<VertexOwners>
{
    ELM_IndexColumn primitive;
};

struct MSH_Detail::LiveOffsets : BAS_IntrusiveRefCounter<LiveOffsets>
{
    ELM_OffsetList list;
};
