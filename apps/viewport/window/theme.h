#pragma once

namespace rq::viewport
{
/// Colours and measures of the panels: quiet greys, one accent.
void applyTheme();
}  // namespace rq::viewport
