#pragma once

#include <span>
#include <string>

#include "TessaraReplay/ReplayPlot.h"

namespace tessara {

/// The SVG document that shows `panels` one below the other.
[[nodiscard]] std::string plotDocument(std::span<const ReplayPlot::Panel> panels);

}  // namespace tessara
