#include <io/detail/GLTFAccessor.h>

namespace rq::io
{
namespace
{
// Rows that no buffer holds take memory, but no place in the file.
constexpr int64_t kMostUnseenRows = int64_t(1) << 26;

constexpr size_t kLargestStride = 252;

struct Bytes
{
    const unsigned char *first = nullptr;
    size_t size = 0;
};

bool findView(const tinygltf::Model &model, int number, Bytes &bytes, std::string &error)
{
    if (number < 0 || size_t(number) >= model.bufferViews.size())
        return error = fmt::format("expected one of {} buffer views, found {}", model.bufferViews.size(), number), false;
    const tinygltf::BufferView &view = model.bufferViews[size_t(number)];
    if (view.buffer < 0 || size_t(view.buffer) >= model.buffers.size())
        return error = fmt::format("expected buffer view {} to refer to one of {} buffers, found {}", number,
                                   model.buffers.size(), view.buffer),
               false;
    const std::vector<unsigned char> &data = model.buffers[size_t(view.buffer)].data;
    if (view.byteOffset > data.size() || view.byteLength > data.size() - view.byteOffset)
        return error = fmt::format("expected buffer view {} within the {} bytes of buffer {}, found {} bytes at {}", number,
                                   data.size(), view.buffer, view.byteLength, view.byteOffset),
               false;
    bytes = {data.data() + view.byteOffset, view.byteLength};
    return true;
}

// Whether `count` rows, `stride` bytes apart, lie in these bytes.
bool holds(const Bytes &bytes, size_t offset, int64_t count, int64_t stride, int64_t rowBytes)
{
    if (count == 0)
        return true;
    const uint64_t most = bytes.size;
    return offset <= most && uint64_t(rowBytes) <= most - offset &&
           uint64_t(count - 1) <= (most - offset - uint64_t(rowBytes)) / uint64_t(stride);
}

int componentsOf(int type)
{
    switch (type)
    {
    case TINYGLTF_TYPE_SCALAR:
        return 1;
    case TINYGLTF_TYPE_MAT2:
        return 4;
    case TINYGLTF_TYPE_MAT3:
        return 9;
    case TINYGLTF_TYPE_MAT4:
        return 16;
    default:
        return type;
    }
}

bool isKnown(int componentType)
{
    return componentType >= TINYGLTF_COMPONENT_TYPE_BYTE && componentType <= TINYGLTF_COMPONENT_TYPE_FLOAT &&
           componentType != TINYGLTF_COMPONENT_TYPE_INT;
}

int64_t sizeOf(int componentType)
{
    return visitGLTFComponent(componentType, [](auto value) { return int64_t(sizeof(value)); });
}
}  // namespace

bool GLTFAccessor::open(const tinygltf::Model &model, int number, std::string &error)
{
    if (number < 0 || size_t(number) >= model.accessors.size())
        return error = fmt::format("expected one of {} accessors, found {}", model.accessors.size(), number), false;
    const tinygltf::Accessor &accessor = model.accessors[size_t(number)];
    type_ = accessor.componentType;
    components_ = componentsOf(accessor.type);
    normalized_ = accessor.normalized;
    if (!isKnown(type_))
        return error = fmt::format("expected a type of components of accessor {}, found {}", number, type_), false;
    if (accessor.type > TINYGLTF_TYPE_VEC4 && components_ > 1 && type_ != TINYGLTF_COMPONENT_TYPE_FLOAT)
        return error = fmt::format("expected matrices of floats in accessor {}, found others", number), false;
    if (accessor.count > size_t(std::numeric_limits<int32_t>::max()))
        return error = fmt::format("expected less than 2^31 rows of accessor {}, found {}", number, accessor.count), false;
    count_ = int64_t(accessor.count);
    const int64_t rowBytes = components_ * sizeOf(type_);
    if (accessor.bufferView < 0)
    {
        if (count_ > kMostUnseenRows)
            return error = fmt::format("expected at most {} rows of accessor {}, which has no buffer view, found {}",
                                       kMostUnseenRows, number, count_),
                   false;
    }
    else
    {
        Bytes bytes;
        if (!findView(model, accessor.bufferView, bytes, error))
            return false;
        const size_t stride = model.bufferViews[size_t(accessor.bufferView)].byteStride;
        stride_ = stride == 0 ? rowBytes : int64_t(std::min(stride, kLargestStride + 1));
        if (stride > kLargestStride || stride_ < rowBytes)
            return error = fmt::format("expected rows of accessor {} from {} to {} bytes apart, found {}", number, rowBytes,
                                       kLargestStride, stride),
                   false;
        if (!holds(bytes, accessor.byteOffset, count_, stride_, rowBytes))
            return error = fmt::format("expected {} rows of {} bytes of accessor {}, found {} bytes in its buffer view",
                                       count_, rowBytes, number, bytes.size),
                   false;
        first_ = count_ > 0 ? bytes.first + accessor.byteOffset : nullptr;
    }
    return !accessor.sparse.isSparse || openSparse(model, accessor, rowBytes, error);
}

bool GLTFAccessor::openSparse(const tinygltf::Model &model, const tinygltf::Accessor &accessor, int64_t rowBytes,
                              std::string &error)
{
    const auto &sparse = accessor.sparse;
    sparseRowType_ = sparse.indices.componentType;
    Bytes rows, values;
    if (!isKnown(sparseRowType_) || sparseRowType_ == TINYGLTF_COMPONENT_TYPE_FLOAT)
        return error = fmt::format("expected a type of whole numbers for sparse rows, found {}", sparseRowType_), false;
    if (!findView(model, sparse.indices.bufferView, rows, error) ||
        !findView(model, sparse.values.bufferView, values, error))
        return false;
    const int64_t indexBytes = sizeOf(sparseRowType_);
    if (sparse.count < 0 || sparse.indices.byteOffset < 0 || sparse.values.byteOffset < 0 ||
        !holds(rows, size_t(sparse.indices.byteOffset), sparse.count, indexBytes, indexBytes) ||
        !holds(values, size_t(sparse.values.byteOffset), sparse.count, rowBytes, rowBytes))
        return error = fmt::format("expected {} sparse rows in their buffer views, found fewer", sparse.count), false;
    sparse_ = sparse.count;
    sparseRows_ = rows.first + sparse.indices.byteOffset;
    sparseValues_ = values.first + sparse.values.byteOffset;
    for (int64_t i = 0; i < sparse_; ++i)
        if (const int64_t row = sparseRow(i); row < 0 || row >= count_)
            return error = fmt::format("expected the number of one of {} sparse rows, found {}", count_, row), false;
    return true;
}

int64_t GLTFAccessor::sparseRow(int64_t i) const
{
    return visitGLTFComponent(sparseRowType_, [&](auto value) {
        std::memcpy(&value, sparseRows_ + i * int64_t(sizeof(value)), sizeof(value));
        return int64_t(value);
    });
}
}  // namespace rq::io
