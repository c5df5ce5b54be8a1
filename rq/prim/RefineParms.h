#pragma once

#include <span>

#include <host/bas/Options.h>
#include <host/bas/WorkBuffer.h>
#include <rq/data/DataArray.h>
#include <rq/prim/detail/refineOptions.h>

/// One refinement option, as a command line or a dialog shows it.
struct RQ_RefineOption
{
    const char *key;                  ///< what it is set by, for example "cuspangle"
    const char *name;                 ///< the stem of its getter and setter, for example "CuspAngle"
    BAS_Options::Value defaultValue;  ///< of the type that the option is kept as
    const char *meaning;              ///< one line
};

/// The options of a refinement.  A null pointer to them always means all defaults.
///
/// Every option of the two lists in detail/refineOptions.h has a getter and a setter of its name, `getLOD()` and
/// `setLOD(double)` for the option `LOD`.  The options of the first list are entries of a store of typed values; they also
/// have a static getter, `RQ_RefineParms::getLOD(parms)`, that answers the default for a null pointer.  Those of the second
/// are bits. `GeoRefineGroup` is the one text: its getters copy it to a buffer and answer null when there is none, as
/// setting null makes it.
///
/// Failure    getters answer the default when a key is absent or holds another type; `import` converts, answers whether it
///            could and leaves the output alone when not
/// Ownership  shares the material arrays; the attribute filter belongs to the caller and must outlive the options
/// Threads    set up by one thread, then safe to read from many
class RQ_API RQ_RefineParms
{
public:
    RQ_RefineParms();
    RQ_RefineParms(const RQ_RefineParms &other);
    RQ_RefineParms &operator=(const RQ_RefineParms &other);
    ~RQ_RefineParms();

    RQ_STORED_REFINE_OPTIONS(RQ_DECLARE_STORED_ACCESS)
    RQ_FLAG_REFINE_OPTIONS(RQ_DECLARE_FLAG_ACCESS)

    /// The level of detail, -16 to 15, that packed geometry is shown at instead of its own; -1 for none.
    int64_t getOverridePackedViewportLOD() const;
    void setOverridePackedViewportLOD(int64_t level);

    // By key; the store alone.

    double get(const BAS_StringHolder &key, double fallback) const { return store_.get(key, fallback); }
    int64_t get(const BAS_StringHolder &key, int64_t fallback) const { return store_.get(key, fallback); }
    int64_t get(const BAS_StringHolder &key, int fallback) const { return store_.get(key, int64_t(fallback)); }
    bool get(const BAS_StringHolder &key, bool fallback) const { return store_.get(key, fallback); }

    /// The text lives in `buffer`; a null fallback is answered as null.
    const char *get(const BAS_StringHolder &key, const char *fallback, BAS_WorkBuffer &buffer) const;

    static bool getBool(const RQ_RefineParms *parms, const BAS_StringHolder &key, bool fallback);
    static int64_t getInt(const RQ_RefineParms *parms, const BAS_StringHolder &key, int64_t fallback);
    static double getFloat(const RQ_RefineParms *parms, const BAS_StringHolder &key, double fallback);
    static const char *getString(const RQ_RefineParms *parms, const BAS_StringHolder &key, const char *fallback,
                                 BAS_WorkBuffer &buffer);

    bool import(const BAS_StringHolder &key, bool &value) const;
    bool import(const BAS_StringHolder &key, int &value) const;
    bool import(const BAS_StringHolder &key, int64_t &value) const;
    bool import(const BAS_StringHolder &key, float &value) const;
    bool import(const BAS_StringHolder &key, double &value) const;
    bool import(const BAS_StringHolder &key, BAS_StringHolder &value) const;
    bool import(const BAS_StringHolder &key, BAS_WorkBuffer &value) const;
    bool import(const BAS_StringHolder &key, BAS_Array<int64_t> &value) const;
    bool import(const BAS_StringHolder &key, BAS_Array<double> &value) const;

    // Sets the store alone: a flag's key takes effect through `load` or the flag's own setter.
    void set(const BAS_StringHolder &key, bool value) { store_.set(key, value); }
    void set(const BAS_StringHolder &key, int value) { store_.set(key, int64_t(value)); }
    void set(const BAS_StringHolder &key, int64_t value) { store_.set(key, value); }
    void set(const BAS_StringHolder &key, double value) { store_.set(key, value); }
    void set(const BAS_StringHolder &key, const char *value) { store_.set(key, BAS_StringHolder(value)); }
    void set(const BAS_StringHolder &key, const BAS_Array<int64_t> &value) { store_.set(key, value); }
    void set(const BAS_StringHolder &key, const BAS_Array<double> &value) { store_.set(key, value); }

    /// All options that have a key, in the order of the lists: what a command line offers.
    static std::span<const RQ_RefineOption> options();

    /// The option of a key, null when there is none.
    static const RQ_RefineOption *findOption(const BAS_StringHolder &key);

    /// The material of every primitive, and the table that maps it to what the consumer knows.
    void setViewportMaterialAttrib(const RQ_DataArrayHandle &material, const RQ_DataArrayHandle &remap);
    RQ_DataArrayHandle getViewportMaterialAttrib() const { return material_; }
    RQ_DataArrayHandle getViewportMaterialRemapAttrib() const { return materialRemap_; }

    /// Which host attributes become attributes of primitives; null for the standard choice.
    void setAttributeFilter(const RQ_MSHAttributeFilter *filter) { filter_ = filter; }
    const RQ_MSHAttributeFilter *getAttributeFilter() const { return filter_; }

    /// All flags as bits.  Combine them with `hash` where a cache depends on them.
    uint32_t getFlags() const { return flags_; }

    // The store alone: flags, material arrays and the filter do not count.
    uint32_t hash() const { return store_.hash(); }
    bool isEqual(const RQ_RefineParms &other) const { return store_.isEqual(other.store_, 0.0); }

    /// Take over every entry of `options`; the keys of flags set the flags as well, and whole numbers become floats where the
    /// option is one.  Always true.
    bool load(const BAS_Options &options);

    /// Append one JSON object with the stored options and the flags that have keys, which `load` takes back.
    bool dump(BAS_WorkBuffer &text) const;

    /// Print to standard output.
    void dump() const;

private:
    RQ_STORED_REFINE_OPTIONS(RQ_DECLARE_STORED_NAME)

    void setFlag(int bit, bool on) { flags_ = (flags_ & ~(1u << bit)) | uint32_t(on) << bit; }

    BAS_Options store_;
    uint32_t flags_;
    RQ_DataArrayHandle material_;
    RQ_DataArrayHandle materialRemap_;
    const RQ_MSHAttributeFilter *filter_ = nullptr;
};
