#pragma once

/// What a viewport should know about a primitive's refinement.
class RQ_ViewportRefineOptions
{
public:
    /// True when the primitive refines to something else under another level of detail, so that a viewport refines it again
    /// when the level changes.  False by default.
    bool changesWithLOD() const { return changesWithLOD_; }
    void setChangesWithLOD(bool changes) { changesWithLOD_ = changes; }

private:
    bool changesWithLOD_ = false;
};
