// Which generation of the desktop look views draw in.
//
// Some views drew extra decoration (a gradient, a grid-coloured rule) on the platform's older,
// classic look and nothing or something lighter on its flat look. Linux has no system version to
// tell them apart, so the host chooses: `flat` (the default) or `classic`. Any thread may ask or
// set; views read it when they draw.
//
//     Interface::setLook(InterfaceLook::classic);   // gradients back in GradientBackgroundView
#pragma once

#include "quoddle/Export.h"

namespace quod {

enum class InterfaceLook { classic, flat };

namespace Interface {

[[nodiscard]] QUODDLE_EXPORT InterfaceLook look();
QUODDLE_EXPORT void setLook(InterfaceLook look);

}  // namespace Interface
}  // namespace quod
