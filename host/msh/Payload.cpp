#include <host/msh/Payload.h>

#include <typeinfo>

#include <host/bas/hashBytes.h>
#include <host/msh/Detail.h>

namespace
{
using host::hashWord;

// Equality, hash and size of one field's value, by its kind.

template <class T> bool isSame(const T &a, const T &b) { return a == b; }
bool isSame(float a, float b) { return a == b || (a != a && b != b); }
bool isSame(double a, double b) { return a == b || (a != a && b != b); }
template <class T> bool isSame(const std::vector<T> &a, const std::vector<T> &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const T &x, const T &y) { return isSame(x, y); });
}
bool isSame(const BAS_OptionsHolder &a, const BAS_OptionsHolder &b) { return a.options().isEqual(b.options()); }
bool isSame(const MSH_OpaqueHandle &a, const MSH_OpaqueHandle &b) { return a == b || (a && b && a->isEqual(*b)); }

uint64_t hashOf(double value) { return std::hash<double>()(value); }
uint64_t hashOf(const BAS_StringHolder &text) { return host::hashBytes(text.view()); }
uint64_t hashOf(const BAS_Vec3d &v) { return hashWord(hashWord(hashOf(v.x), hashOf(v.y)), hashOf(v.z)); }
uint64_t hashOf(const BAS_OptionsHolder &options) { return options.hash(); }
uint64_t hashOf(const MSH_OpaqueHandle &object) { return object ? host::hashBytes(object->kind()) : 0; }
uint64_t hashOf(const BAS_IntrusivePtr<const MSH_Detail> &detail) { return detail ? uint64_t(detail->uniqueId()) : 0; }
template <class T>
requires std::is_integral_v<T> uint64_t hashOf(T value) { return uint64_t(value); }
template <class T> uint64_t hashOf(const std::vector<T> &row)
{
    uint64_t hash = row.size();
    for (const T &value : row)
        hash = hashWord(hash, hashOf(value));
    return hash;
}
uint64_t hashOf(const MSH_ElementRefs &refs) { return hashWord(uint64_t(refs.owner), hashOf(refs.offsets)); }
uint64_t hashOf(const ELM_PackedIndices &indices)
{
    return std::visit([](const auto &row) { return hashOf(row); }, indices.rows());
}

template <class T> int64_t allocated(const T &) { return 0; }
template <class T> int64_t allocated(const std::vector<T> &row) { return int64_t(row.capacity() * sizeof(T)); }
int64_t allocated(const BAS_StringHolder &text) { return text.getMemoryUsage(); }
int64_t allocated(const BAS_OptionsHolder &options) { return options.getMemoryUsage(); }
int64_t allocated(const MSH_ElementRefs &refs) { return allocated(refs.offsets); }
int64_t allocated(const ELM_PackedIndices &indices) { return indices.memoryUsage(); }
int64_t allocated(const MSH_OpaqueHandle &object) { return object ? object->memoryUsage() : 0; }
int64_t allocated(const std::vector<BAS_StringHolder> &texts)
{
    int64_t bytes = int64_t(texts.capacity() * sizeof(BAS_StringHolder));
    for (const BAS_StringHolder &text : texts)
        bytes += text.getMemoryUsage();
    return bytes;
}

// What an object of a few members takes before its fields allocate anything.
constexpr int64_t kObjectBytes = 64;
}  // namespace

MSH_Payload::~MSH_Payload() = default;

bool MSH_Payload::isEqual(const MSH_Payload &other) const
{
    if (this == &other)
        return true;
    if (typeid(*this) != typeid(other))
        return false;
    const std::vector<MSH_ConstField> mine = fields(), theirs = other.fields();
    return std::equal(mine.begin(), mine.end(), theirs.begin(), theirs.end(), [](const auto &a, const auto &b) {
        return std::visit(
            [&b](const auto *value) {
                const auto *twin = std::get_if<decltype(value)>(&b.value);
                return twin && isSame(*value, **twin);
            },
            a.value);
    });
}

uint64_t MSH_Payload::hash() const
{
    uint64_t hash = 0;
    for (const MSH_ConstField &field : fields())
        hash = std::visit([hash](const auto *value) { return hashWord(hash, hashOf(*value)); }, field.value);
    return hash;
}

int64_t MSH_Payload::memoryUsage() const
{
    int64_t bytes = kObjectBytes;
    for (const MSH_ConstField &field : fields())
        bytes += std::visit([](const auto *value) { return int64_t(sizeof(*value)) + allocated(*value); }, field.value);
    return bytes;
}
