#include <rq/bridge/detail/FaceLists.h>

#include <algorithm>

RQ_CountArray rq::FaceLists::counts() const
{
    RQ_CountArray counts;
    if (counts_)
        counts.init(counts_, least_, most_);
    else
        counts.init(faces_, most_);
    return counts;
}

// Take note of faces that are about to be appended: from the first difference on, each face has a count of its own.
void rq::FaceLists::noteCounts(int64_t faces, int64_t least, int64_t most)
{
    const bool differs = least != most || (faces_ > 0 && (least != least_ || most != most_));
    if (differs && !counts_)
    {
        counts_ = new RQ_DANumeric<int32_t>(faces_, 1, RQ_TYPE_NONE);
        std::fill_n(counts_->data(), faces_, int32_t(most_));
    }
    least_ = faces_ > 0 ? std::min(least_, least) : least;
    most_ = faces_ > 0 ? std::max(most_, most) : most;
    faces_ += faces;
}

void rq::FaceLists::append(ELM_Offset primitive, int64_t faces, ELM_Offset vertex, int64_t corners)
{
    noteCounts(faces, corners, corners);
    if (counts_)
        for (int64_t i = 0; i < faces; ++i)
            counts_->append(int32_t(corners));
    primitives_.concat(RQ_MSHOffsetList(ELM_OffsetList(primitive, faces)));
    vertices_.concat(RQ_MSHOffsetList(ELM_OffsetList(vertex, faces * corners)));
}

void rq::FaceLists::append(const FaceLists &following)
{
    if (following.faces_ == 0)
        return;
    if (faces_ == 0)
    {
        *this = following;
        return;
    }
    noteCounts(following.faces_, following.least_, following.most_);
    if (counts_ && following.counts_)
        counts_->concat(*following.counts_);
    else if (counts_)
        for (int64_t i = 0; i < following.faces_; ++i)
            counts_->append(int32_t(following.most_));
    primitives_.concat(following.primitives_);
    vertices_.concat(following.vertices_);
}
