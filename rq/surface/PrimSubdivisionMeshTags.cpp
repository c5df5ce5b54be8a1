#include <algorithm>

#include <host/bas/JSONWriter.h>
#include <rq/surface/PrimSubdivisionMesh.h>

void RQ_PrimSubdivisionMesh::Tag::append(Arrays &arrays, const RQ_DataArrayHandle &array)
{
    if (array)
        arrays.push_back(array);
}

RQ_DataArrayHandle RQ_PrimSubdivisionMesh::Tag::at(const Arrays &arrays, int64_t i)
{
    return i >= 0 && i < int64_t(arrays.size()) ? arrays[size_t(i)] : nullptr;
}

void RQ_PrimSubdivisionMesh::Tag::clear()
{
    ints_.clear();
    reals_.clear();
    strings_.clear();
}

void RQ_PrimSubdivisionMesh::Tag::harden()
{
    for (Arrays *arrays : {&ints_, &reals_, &strings_})
        for (RQ_DataArrayHandle &array : *arrays)
            if (const RQ_DataArrayHandle hard = array->harden())
                array = hard;
}

int64_t RQ_PrimSubdivisionMesh::Tag::getMemoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this)) + name_.getMemoryUsage();
    for (const Arrays *arrays : {&ints_, &reals_, &strings_})
    {
        bytes += int64_t(arrays->capacity() * sizeof(RQ_DataArrayHandle));
        for (const RQ_DataArrayHandle &array : *arrays)
            bytes += array->getMemoryUsage();
    }
    return bytes;
}

bool RQ_PrimSubdivisionMesh::Tag::save(BAS_JSONWriter &writer) const
{
    bool done = writer.beginArray();
    for (const Arrays *arrays : {&ints_, &reals_, &strings_})
    {
        done = done && writer.beginArray();
        for (const RQ_DataArrayHandle &array : *arrays)
            done = done && array->save(writer, false);
        done = done && writer.endArray();
    }
    return done && writer.endArray();
}

RQ_PrimSubdivisionMesh::Tag &RQ_PrimSubdivisionMesh::findOrCreateTag(const BAS_StringHolder &name, bool replace)
{
    const auto at = std::find_if(tags_.begin(), tags_.end(), [&](const Tag &tag) { return tag.match(name); });
    if (at == tags_.end())
        return tags_.emplace_back(name);
    if (replace)
        at->clear();
    return *at;
}

void RQ_PrimSubdivisionMesh::appendIntTag(const BAS_StringHolder &name, const RQ_DataArrayHandle &array, bool replace)
{
    findOrCreateTag(name, replace).appendInt(array);
}

void RQ_PrimSubdivisionMesh::appendRealTag(const BAS_StringHolder &name, const RQ_DataArrayHandle &array, bool replace)
{
    findOrCreateTag(name, replace).appendReal(array);
}

void RQ_PrimSubdivisionMesh::appendStringTag(const BAS_StringHolder &name, const RQ_DataArrayHandle &array, bool replace)
{
    findOrCreateTag(name, replace).appendString(array);
}

const RQ_PrimSubdivisionMesh::Tag *RQ_PrimSubdivisionMesh::findTag(const BAS_StringHolder &name) const
{
    const auto at = std::find_if(tags_.begin(), tags_.end(), [&](const Tag &tag) { return tag.match(name); });
    return at == tags_.end() ? nullptr : &*at;
}

bool RQ_PrimSubdivisionMesh::delTag(const BAS_StringHolder &name)
{
    const auto at = std::find_if(tags_.begin(), tags_.end(), [&](const Tag &tag) { return tag.match(name); });
    if (at == tags_.end())
        return false;
    tags_.erase(at);
    return true;
}
