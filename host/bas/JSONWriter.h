#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include <host/bas/Options.h>

/// Write JSON text piece by piece.
///
/// Units    numbers take their own shortest form that reads back to the same bits; non-finite numbers are the strings
///          "nan", "inf" and "-inf"
/// Failure  every call answers whether it was legal at this place and could be written; after a failure all answer false
/// Threads  one thread at a time
class HOST_API BAS_JSONWriter
{
public:
    /// Append to `text`, which must outlive the writer.  The option "int json:indentstep" sets the blanks per level
    /// (0 writes everything on one line).
    explicit BAS_JSONWriter(std::string &text, const BAS_Options &options = {});

    /// Write to a C stream, for example stdout; flushed by `flush` and the destructor.
    explicit BAS_JSONWriter(FILE *stream, const BAS_Options &options = {});
    ~BAS_JSONWriter();

    BAS_JSONWriter(const BAS_JSONWriter &) = delete;
    BAS_JSONWriter &operator=(const BAS_JSONWriter &) = delete;

    bool beginArray();
    bool endArray();
    bool beginMap();
    bool endMap();
    bool key(std::string_view name);

    bool writeNull();
    bool writeBool(bool value);
    bool writeInt(int64_t value);
    bool writeUInt(uint64_t value);
    bool writeReal32(float value);
    bool writeReal64(double value);
    bool writeString(std::string_view text);

    /// Write `count` values as one array.
    bool uniformArray(const int32_t *values, int64_t count);
    bool uniformArray(const int64_t *values, int64_t count);
    bool uniformArray(const float *values, int64_t count);
    bool uniformArray(const double *values, int64_t count);
    bool stringArray(const BAS_StringHolder *values, int64_t count);

    /// `key` followed by the value.
    bool writeKeyString(std::string_view name, std::string_view text) { return key(name) && writeString(text); }
    bool writeKeyInt(std::string_view name, int64_t value) { return key(name) && writeInt(value); }
    bool writeKeyReal(std::string_view name, double value) { return key(name) && writeReal64(value); }
    bool writeKeyBool(std::string_view name, bool value) { return key(name) && writeBool(value); }

    bool flush();

private:
    struct Sink;
    std::unique_ptr<Sink> sink_;
};
