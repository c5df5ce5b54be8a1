#include <io/detail/GLTFBuffer.h>

namespace rq::io
{
namespace
{
constexpr size_t kAlignment = 4;

const char *nameOf(int components)
{
    switch (components)
    {
    case 1:
        return "SCALAR";
    case 2:
        return "VEC2";
    case 3:
        return "VEC3";
    case 4:
        return "VEC4";
    case 9:
        return "MAT3";
    default:
        return "MAT4";
    }
}

std::string inBase64(const std::string &bytes)
{
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3)
    {
        uint32_t three = 0;
        for (size_t c = 0; c < 3; ++c)
            three = three << 8 | (i + c < bytes.size() ? uint8_t(bytes[i + c]) : 0);
        for (size_t c = 0; c < 4; ++c)
            text += i + c > bytes.size() ? '=' : kDigits[three >> (18 - 6 * c) & 63];
    }
    return text;
}
}  // namespace

void GLTFBuffer::beginView(Use use, int stride)
{
    bytes.resize((bytes.size() + kAlignment - 1) / kAlignment * kAlignment);
    views_.push_back({bytes.size(), use, stride});
}

int GLTFBuffer::add(Rows rows)
{
    accessors_.push_back({std::move(rows), views_.size() - 1});
    return int(accessors_.size()) - 1;
}

void GLTFBuffer::write(BAS_JSONWriter &json, bool inText) const
{
    if (accessors_.empty())
        return;
    json.key("buffers");
    json.beginArray();
    json.beginMap();
    json.writeKeyInt("byteLength", std::ssize(bytes));
    if (inText)
        json.writeKeyString("uri", "data:application/octet-stream;base64," + inBase64(bytes));
    json.endMap();
    json.endArray();

    json.key("bufferViews");
    json.beginArray();
    for (size_t i = 0; i < views_.size(); ++i)
    {
        const size_t end = i + 1 < views_.size() ? views_[i + 1].begin : bytes.size();
        json.beginMap();
        json.writeKeyInt("buffer", 0);
        json.writeKeyInt("byteOffset", int64_t(views_[i].begin));
        json.writeKeyInt("byteLength", int64_t(end - views_[i].begin));
        if (views_[i].stride > 0)
            json.writeKeyInt("byteStride", views_[i].stride);
        json.writeKeyInt("target", int(views_[i].use));
        json.endMap();
    }
    json.endArray();

    json.key("accessors");
    json.beginArray();
    for (const auto &[rows, view] : accessors_)
    {
        json.beginMap();
        json.writeKeyInt("bufferView", int64_t(view));
        json.writeKeyInt("byteOffset", int64_t(rows.begin - views_[view].begin));
        json.writeKeyInt("componentType", int(rows.type));
        json.writeKeyInt("count", rows.count);
        json.writeKeyString("type", nameOf(rows.components));
        if (!rows.least.empty())
        {
            json.key("min");
            json.uniformArray(rows.least.data(), std::ssize(rows.least));
            json.key("max");
            json.uniformArray(rows.most.data(), std::ssize(rows.most));
        }
        json.endMap();
    }
    json.endArray();
}
}  // namespace rq::io
