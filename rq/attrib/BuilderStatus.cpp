#include <rq/attrib/BuilderStatus.h>

#include <cstdarg>
#include <cstdio>

namespace
{
std::string formatted(const char *format, va_list arguments)
{
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    std::string text(size_t(length > 0 ? length : 0), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}
}  // namespace

void RQ_BuilderStatus::addError(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    errors_.push_back(formatted(format, arguments));
    va_end(arguments);
}

void RQ_BuilderStatus::addWarning(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    warnings_.push_back(formatted(format, arguments));
    va_end(arguments);
}

void RQ_BuilderStatus::clear()
{
    errors_.clear();
    warnings_.clear();
}
