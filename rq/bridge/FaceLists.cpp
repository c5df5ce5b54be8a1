#include <rq/bridge/detail/FaceLists.h>

#include <algorithm>

rq::FaceLists::FaceLists(const RQ_MSHOffsetList &primitives, const RQ_MSHOffsetList &vertices, const Counts &counts,
                         int64_t least, int64_t most)
    : counts_(counts), faces_(primitives.entries()), least_(least), most_(most)
{
    primitives_.append(primitives);
    vertices_.append(vertices);
}

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

// Give the last `faces` faces this count.
void rq::FaceLists::storeCounts(int64_t faces, int64_t corners)
{
    if (faces_ > counts_->capacity())
        counts_->grow(2 * faces_);
    counts_->resize(faces_);
    std::fill_n(counts_->data() + faces_ - faces, faces, int32_t(corners));
}

void rq::FaceLists::finish()
{
    primitives_.flush();
    vertices_.flush();
}

void rq::FaceLists::append(ELM_Offset primitive, ELM_Offset vertex, int64_t corners)
{
    primitives_.append(primitive, 1);
    vertices_.append(vertex, corners);
    noteCounts(1, corners, corners);
    if (counts_)
        storeCounts(1, corners);
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
    if (counts_)
        storeCounts(following.faces_, following.most_);
    if (following.counts_)
        std::copy_n(following.counts_->data(), following.faces_, counts_->data() + faces_ - following.faces_);
    primitives_.append(following.primitives());
    vertices_.append(following.vertices());
}
