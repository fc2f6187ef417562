// The two looks the framework distinguishes: `Appearance::aqua` (light) and `Appearance::dark`.
//
// `match` reduces any system appearance to one of them: it asks the appearance for its best match
// among "NSAppearanceNameAqua" and "NSAppearanceNameDarkAqua", in that order, and answers `dark`
// only for the dark name; no match (a look the framework does not know) and anything else answer
// `aqua`. So the vibrant and high-contrast variants follow their family, and unknown looks are
// treated as light.
#pragma once

#include <cstddef>
#include <functional>

#include "quoddle/Export.h"
#include "quoddle/preferences/PlatformAppearance.h"

namespace quod {

class QUODDLE_EXPORT Appearance {
  public:
    static const Appearance aqua;
    static const Appearance dark;

    [[nodiscard]] static Appearance match(const PlatformAppearance& appearance);

    friend constexpr bool operator==(Appearance, Appearance) = default;

  private:
    friend struct std::hash<Appearance>;
    constexpr explicit Appearance(bool isDark) : isDark_(isDark) {}
    bool isDark_;
};

inline constexpr Appearance Appearance::aqua{false};
inline constexpr Appearance Appearance::dark{true};

}  // namespace quod

template <>
struct std::hash<quod::Appearance> {
    std::size_t operator()(quod::Appearance appearance) const noexcept {
        return std::hash<bool>{}(appearance.isDark_);
    }
};
