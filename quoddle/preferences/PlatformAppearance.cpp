#include "quoddle/preferences/PlatformAppearance.h"

#include <array>
#include <mutex>
#include <utility>

namespace quod {
namespace {

enum class Family { light, dark };

std::optional<Family> familyOf(std::string_view name) {
    using A = PlatformAppearance;
    static constexpr std::array<std::pair<std::string_view, Family>, 8> families{{
        {A::aquaName, Family::light},
        {A::vibrantLightName, Family::light},
        {A::accessibilityHighContrastAquaName, Family::light},
        {A::accessibilityHighContrastVibrantLightName, Family::light},
        {A::darkAquaName, Family::dark},
        {A::vibrantDarkName, Family::dark},
        {A::accessibilityHighContrastDarkAquaName, Family::dark},
        {A::accessibilityHighContrastVibrantDarkName, Family::dark},
    }};
    for (const auto& [known, family] : families) {
        if (known == name) return family;
    }
    return std::nullopt;
}

std::mutex currentMutex;
PlatformAppearance& currentAppearance() {
    static PlatformAppearance appearance{std::string(PlatformAppearance::aquaName)};
    return appearance;
}

}  // namespace

std::optional<std::string_view> PlatformAppearance::bestMatch(
    std::span<const std::string_view> fromAppearancesWithNames) const {
    for (std::string_view offered : fromAppearancesWithNames) {
        if (offered == name_) return offered;
    }
    const auto family = familyOf(name_);
    if (!family) return std::nullopt;
    for (std::string_view offered : fromAppearancesWithNames) {
        if (familyOf(offered) == family) return offered;
    }
    return std::nullopt;
}

PlatformAppearance PlatformAppearance::current() {
    const std::lock_guard lock(currentMutex);
    return currentAppearance();
}

void PlatformAppearance::setCurrent(PlatformAppearance appearance) {
    const std::lock_guard lock(currentMutex);
    currentAppearance() = std::move(appearance);
}

}  // namespace quod
