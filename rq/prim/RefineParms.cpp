#include <rq/prim/RefineParms.h>

#include <limits>

namespace
{
// The bits that are on by default, and the level -1 of five bits.
#define RQ_DEFAULT_FLAG(bit, stem, key, fallback, meaning) | uint32_t(fallback) << bit
constexpr uint32_t kLevelMask = 0x1Fu << RQ_OVERRIDE_LOD_SHIFT;
constexpr uint32_t kDefaultFlags = kLevelMask RQ_FLAG_REFINE_OPTIONS(RQ_DEFAULT_FLAG);
#undef RQ_DEFAULT_FLAG

const char *textIn(BAS_WorkBuffer &buffer, std::string_view text)
{
    buffer.clear();
    buffer.append(text);
    // Ended for C, though the end is no part of the text.
    buffer.push_back('\0');
    buffer.resize(text.size());
    return buffer.data();
}
}  // namespace

RQ_RefineParms::RQ_RefineParms() : flags_(kDefaultFlags) {}
RQ_RefineParms::RQ_RefineParms(const RQ_RefineParms &other) = default;
RQ_RefineParms &RQ_RefineParms::operator=(const RQ_RefineParms &other) = default;
RQ_RefineParms::~RQ_RefineParms() = default;

// The bodies of the stored options: `kept` is the type in the store, `type` the one outside.
#define RQ_DEFINE_VALUE(type, kept, stem, fallback)                                                                         \
    type RQ_RefineParms::get##stem() const                                                                                  \
    {                                                                                                                       \
        return type(store_.get(BAS_StringHolder::literal(get##stem##Name()), kept(fallback)));                              \
    }                                                                                                                       \
    type RQ_RefineParms::get##stem(const RQ_RefineParms *parms) { return parms ? parms->get##stem() : type(fallback); }     \
    void RQ_RefineParms::set##stem(type value) { store_.set(BAS_StringHolder::literal(get##stem##Name()), kept(value)); }
#define RQ_DEFINE_Bool(stem, fallback) RQ_DEFINE_VALUE(bool, bool, stem, fallback)
#define RQ_DEFINE_Int(stem, fallback) RQ_DEFINE_VALUE(int64_t, int64_t, stem, fallback)
#define RQ_DEFINE_Float(stem, fallback) RQ_DEFINE_VALUE(double, double, stem, fallback)
#define RQ_DEFINE_Angle(stem, fallback) RQ_DEFINE_VALUE(float, double, stem, fallback)
#define RQ_DEFINE_Text(stem, fallback)                                                                                      \
    const char *RQ_RefineParms::get##stem(BAS_WorkBuffer &buffer) const                                                     \
    {                                                                                                                       \
        return get(BAS_StringHolder::literal(get##stem##Name()), fallback, buffer);                                         \
    }                                                                                                                       \
    const char *RQ_RefineParms::get##stem(const RQ_RefineParms *parms, BAS_WorkBuffer &buffer)                              \
    {                                                                                                                       \
        return parms ? parms->get##stem(buffer) : fallback;                                                                 \
    }                                                                                                                       \
    void RQ_RefineParms::set##stem(const char *value)                                                                       \
    {                                                                                                                       \
        const BAS_StringHolder key = BAS_StringHolder::literal(get##stem##Name());                                          \
        if (value)                                                                                                          \
            store_.set(key, BAS_StringHolder(value));                                                                       \
        else                                                                                                                \
            store_.remove(key);                                                                                             \
    }
#define RQ_DEFINE_OPTION(kind, stem, key, fallback, meaning)                                                                \
    const char *RQ_RefineParms::get##stem##Name() { return key; }                                                           \
    RQ_DEFINE_##kind(stem, fallback)

RQ_STORED_REFINE_OPTIONS(RQ_DEFINE_OPTION)

int64_t RQ_RefineParms::getOverridePackedViewportLOD() const
{
    // Shifting the field to the top and down again extends its sign.
    constexpr int kAbove = 32 - 5 - RQ_OVERRIDE_LOD_SHIFT;
    return int32_t(flags_ << kAbove) >> (32 - 5);
}

void RQ_RefineParms::setOverridePackedViewportLOD(int64_t level)
{
    flags_ = (flags_ & ~kLevelMask) | (uint32_t(level) << RQ_OVERRIDE_LOD_SHIFT & kLevelMask);
}

const char *RQ_RefineParms::get(const BAS_StringHolder &key, const char *fallback, BAS_WorkBuffer &buffer) const
{
    const BAS_Options::Value *value = store_.find(key);
    const auto *text = value ? std::get_if<BAS_StringHolder>(value) : nullptr;
    if (!text && !fallback)
        return nullptr;
    return textIn(buffer, text ? text->view() : std::string_view(fallback));
}

bool RQ_RefineParms::getBool(const RQ_RefineParms *parms, const BAS_StringHolder &key, bool fallback)
{
    return parms ? parms->get(key, fallback) : fallback;
}

int64_t RQ_RefineParms::getInt(const RQ_RefineParms *parms, const BAS_StringHolder &key, int64_t fallback)
{
    return parms ? parms->get(key, fallback) : fallback;
}

double RQ_RefineParms::getFloat(const RQ_RefineParms *parms, const BAS_StringHolder &key, double fallback)
{
    return parms ? parms->get(key, fallback) : fallback;
}

const char *RQ_RefineParms::getString(const RQ_RefineParms *parms, const BAS_StringHolder &key, const char *fallback,
                                      BAS_WorkBuffer &buffer)
{
    return parms ? parms->get(key, fallback, buffer) : fallback ? textIn(buffer, fallback) : nullptr;
}

bool RQ_RefineParms::import(const BAS_StringHolder &key, bool &value) const { return store_.import(key, value); }

bool RQ_RefineParms::import(const BAS_StringHolder &key, int &value) const
{
    int64_t wide;
    if (!store_.import(key, wide) || wide < std::numeric_limits<int>::min() || wide > std::numeric_limits<int>::max())
        return false;
    value = int(wide);
    return true;
}

bool RQ_RefineParms::import(const BAS_StringHolder &key, int64_t &value) const { return store_.import(key, value); }

bool RQ_RefineParms::import(const BAS_StringHolder &key, float &value) const
{
    double wide;
    if (!store_.import(key, wide))
        return false;
    value = float(wide);
    return true;
}

bool RQ_RefineParms::import(const BAS_StringHolder &key, double &value) const { return store_.import(key, value); }

bool RQ_RefineParms::import(const BAS_StringHolder &key, BAS_StringHolder &value) const { return store_.import(key, value); }

bool RQ_RefineParms::import(const BAS_StringHolder &key, BAS_WorkBuffer &value) const
{
    BAS_StringHolder text;
    if (!store_.import(key, text))
        return false;
    textIn(value, text.view());
    return true;
}

bool RQ_RefineParms::import(const BAS_StringHolder &key, BAS_Array<int64_t> &value) const
{
    return store_.import(key, value);
}

bool RQ_RefineParms::import(const BAS_StringHolder &key, BAS_Array<double> &value) const
{
    return store_.import(key, value);
}

void RQ_RefineParms::setViewportMaterialAttrib(const RQ_DataArrayHandle &material, const RQ_DataArrayHandle &remap)
{
    material_ = material;
    materialRemap_ = remap;
}
