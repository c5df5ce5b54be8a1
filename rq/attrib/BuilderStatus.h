#pragma once

#include <string>

#include <host/bas/Array.h>
#include <rq/api.h>

/// What went wrong while something was built: errors that stopped it, and warnings about what was left out.
///
/// Shape    texts in the order in which they were added
/// Threads  belongs to one thread
class RQ_API RQ_BuilderStatus
{
public:
    /// Add a text in the manner of `printf`.
    void addError(const char *format, ...) __attribute__((format(printf, 2, 3)));
    void addWarning(const char *format, ...) __attribute__((format(printf, 2, 3)));

    bool hasErrors() const { return !errors_.empty(); }
    bool hasWarnings() const { return !warnings_.empty(); }
    const BAS_Array<std::string> &errors() const { return errors_; }
    const BAS_Array<std::string> &warnings() const { return warnings_; }

    void clear();

private:
    BAS_Array<std::string> errors_;
    BAS_Array<std::string> warnings_;
};
