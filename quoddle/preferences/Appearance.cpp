#include "quoddle/preferences/Appearance.h"

#include <array>
#include <string_view>

namespace quod {

Appearance Appearance::match(const PlatformAppearance& appearance) {
    constexpr std::array<std::string_view, 2> names{PlatformAppearance::aquaName,
                                                    PlatformAppearance::darkAquaName};
    const auto best = appearance.bestMatch(names);
    return best == PlatformAppearance::darkAquaName ? dark : aqua;
}

}  // namespace quod
