#pragma once

#include <host/bas/JSONWriter.h>
#include <rq/prim/Primitive.h>

/// Write the array [name, ...] of a saved primitive: begun with the object, ended by its destruction.
class RQ_API RQ_Primitive::jsonWriter
{
public:
    jsonWriter(BAS_JSONWriter &writer, const char *name);
    ~jsonWriter();
    jsonWriter(const jsonWriter &) = delete;
    jsonWriter &operator=(const jsonWriter &) = delete;

    BAS_JSONWriter &operator*() const { return writer_; }
    BAS_JSONWriter *operator->() const { return &writer_; }

private:
    BAS_JSONWriter &writer_;
};
