#include <host/msh/Grid.h>

#include <fmt/format.h>

bool MSH_GridData::check(const MSH_PayloadUse &use, std::string &why) const
{
    if (rows > 0 && columns > 0 && int64_t(rows) * columns == use.vertices)
        return true;
    why = fmt::format("{} vertices do not fill a grid of {} rows and {} columns", use.vertices, rows, columns);
    return false;
}
