#include <apps/viewport/Buffers.h>

#include <algorithm>
#include <bit>

#include <fmt/format.h>

#include <host/bas/Parallel.h>
#include <host/bas/hashBytes.h>
#include <rq/data/DANumeric.h>

namespace rq::viewport
{
namespace
{
// The call for a text's number costs about 20 ns.
constexpr int64_t kTextsPerTask = 4096;

template <class T> const void *valuesOf(const RQ_DataArray &array, RQ_DataArrayHandle &keep, bool &copied)
{
    copied = array.getStorage() != RQstorageOf<T> || !array.getBackingData();
    return array.getArray<T>(keep);
}

// A text has the same number in every array; the empty one has none.
float numberOf(const BAS_StringHolder &text)
{
    constexpr uint64_t kNumbers = 1021;
    return text.view().empty() ? -1.0f : float(host::hashBytes(text.view()) % kNumbers);
}

RQ_DataArrayHandle textNumbers(const RQ_DataArray &array)
{
    BAS_Array<BAS_StringHolder> strings;
    array.getStrings(strings);
    std::vector<float> known;
    for (const BAS_StringHolder &text : strings)
        known.push_back(numberOf(text));
    const BAS_IntrusivePtr<RQ_DANumeric<float>> numbers(new RQ_DANumeric<float>(array.entries()));
    host::parallelFor(array.entries(), kTextsPerTask, [&](int64_t i) {
        const int64_t index = array.getStringIndex(i);
        const bool isKnown = index >= 0 && size_t(index) < known.size();
        numbers->data()[i] = isKnown ? known[size_t(index)] : numberOf(array.getS(i));
    });
    return numbers;
}
}  // namespace

Buffer::~Buffer()
{
    glDeleteTextures(1, &texture);
    glDeleteBuffers(1, &buffer);
}

// What is uploaded of an array.
struct Buffers::Source
{
    const void *values = nullptr;
    int64_t count = 0;
    int64_t size = 4;
    GLenum format = GL_R32F;
    float scale = 1.0f;
    bool copied = false;

    int64_t bytes() const { return count * size; }
};

Buffers::Buffers()
{
    GLint most = 0;
    glGetIntegerv(GL_MAX_TEXTURE_BUFFER_SIZE, &most);
    mostNumbers_ = most;
}

Buffers::Source Buffers::readSource(const RQ_DataArray &array, Seen seen, RQ_DataArrayHandle &keep) const
{
    Source source;
    source.count = array.entries() * std::max<int64_t>(1, array.getTupleSize());
    if (source.count > mostNumbers_)
        return source;
    if (seen == Seen::Texts)
    {
        RQ_DataArrayHandle numbers = textNumbers(array);
        source.count = numbers->entries();
        source.values = numbers->getArray<float>(keep);
        source.copied = true;
    }
    else if (seen == Seen::Indices)
    {
        source.format = GL_R32I;
        source.values = valuesOf<int32_t>(array, keep, source.copied);
    }
    else if (seen == Seen::Bits || (seen == Seen::Numbers && array.getStorage() == RQ_STORAGE_UINT8))
    {
        // A shader that asks for floats sees a byte as a part of 255.
        source.size = 1;
        source.format = seen == Seen::Bits ? GL_R8UI : GL_R8;
        source.scale = 255.0f;
        source.values = valuesOf<uint8_t>(array, keep, source.copied);
    }
    else if (array.getStorage() == RQ_STORAGE_REAL16)
    {
        source.size = 2;
        source.format = GL_R16F;
        source.values = valuesOf<PLT_Half>(array, keep, source.copied);
    }
    else
    {
        source.format = seen == Seen::Rows ? GL_RGBA32F : GL_R32F;
        source.values = valuesOf<float>(array, keep, source.copied);
    }
    return source;
}

// Memory that an array of the same size had: fresh pages cost more than what is written to them.
std::shared_ptr<Buffer> Buffers::spare(const Source &source)
{
    const auto fits = std::find_if(retired_.begin(), retired_.end(), [&](const std::shared_ptr<Buffer> &buffer) {
        return buffer->bytes == source.bytes() && buffer->format == source.format;
    });
    if (fits == retired_.end())
        return nullptr;
    std::shared_ptr<Buffer> buffer = *fits;
    retired_.erase(fits);
    return buffer;
}

const Buffer *Buffers::find(const RQ_DataArrayHandle &array, Seen seen, DisplayStatistics &statistics, std::string &error)
{
    if (!array)
        return nullptr;
    if (seen == Seen::Floats && array->getStorage() != RQ_STORAGE_UINT8)
        seen = Seen::Numbers;
    // What has no id is known by its place, as long as the scene holds it.
    const int64_t id = array->getDataId();
    const Key key(id >= 0 ? id : -int64_t(std::bit_cast<uintptr_t>(array.get())), seen);
    if (const auto found = known_.find(key); found != known_.end())
        return found->second.get();

    RQ_DataArrayHandle keep;
    const Source source = readSource(*array, seen, keep);
    if (!source.values || source.count == 0)
    {
        if (source.count > 0)
            error = fmt::format("an array of {} numbers is more than the graphics driver takes ({})", source.count,
                                mostNumbers_);
        return nullptr;
    }
    std::shared_ptr<Buffer> buffer = spare(source);
    if (buffer)
        glNamedBufferSubData(buffer->buffer, 0, GLsizeiptr(source.bytes()), source.values);
    else
    {
        while (glGetError() != GL_NO_ERROR)
            ;
        buffer = std::make_shared<Buffer>();
        glCreateBuffers(1, &buffer->buffer);
        glNamedBufferStorage(buffer->buffer, GLsizeiptr(source.bytes()), source.values, GL_DYNAMIC_STORAGE_BIT);
        if (glGetError() != GL_NO_ERROR)
        {
            error = fmt::format("the graphics card has no room for {} MB more", source.bytes() >> 20);
            return nullptr;
        }
        glCreateTextures(GL_TEXTURE_BUFFER, 1, &buffer->texture);
        glTextureBuffer(buffer->texture, source.format, buffer->buffer);
        buffer->format = source.format;
        buffer->bytes = source.bytes();
        statistics.gpuBytes += source.bytes();
    }
    buffer->scale = source.scale;
    ++statistics.buffersRefreshed;
    statistics.uploadedBytes += source.bytes();
    statistics.copiedBytes += source.copied ? source.bytes() : 0;
    return known_.emplace(key, std::move(buffer)).first->second.get();
}

void Buffers::retain(const std::unordered_set<int64_t> &ids, DisplayStatistics &statistics)
{
    for (auto at = known_.begin(); at != known_.end();)
    {
        const bool stays = ids.count(at->first.first) > 0;
        statistics.buffersKept += stays;
        if (!stays)
            retired_.push_back(std::move(at->second));
        at = stays ? std::next(at) : known_.erase(at);
    }
}

void Buffers::release(DisplayStatistics &statistics)
{
    for (const std::shared_ptr<Buffer> &buffer : retired_)
        statistics.gpuBytes -= buffer->bytes;
    retired_.clear();
}
}  // namespace rq::viewport
