// What the user asked of the interface for accessibility: less transparency, more contrast, less
// motion; and the opacity a view should draw with because of it.
//
// Each question is answered afresh at every call, so a changed setting shows at the next drawing.
// Sources, first that has an answer wins:
//   1. a boolean in the standard defaults store (UserDefaults::standard()) under
//      "ReduceTransparency", "IncreaseContrast" or "ReduceMotion": a host or the user can decide
//      for the application alone, and it is the only source for transparency, which the Linux
//      desktops have no setting for;
//   2. the desktop's setting, read with GSettings: "high-contrast" of
//      "org.gnome.desktop.a11y.interface" for contrast, "enable-animations" of
//      "org.gnome.desktop.interface" (off means reduce motion). A desktop without these schemas
//      or keys (another desktop, a minimal container) simply has no answer;
//   3. false.
//
//     UserDefaults::standard()->setBool("IncreaseContrast", true);
//     Interface::alpha(0.8);   // 1.0: a see-through background would lower the contrast
#pragma once

#include <optional>
#include <string_view>

#include "quoddle/Export.h"

namespace quod::Interface {

inline constexpr std::string_view reduceTransparencyKey = "ReduceTransparency";
inline constexpr std::string_view increaseContrastKey = "IncreaseContrast";
inline constexpr std::string_view reduceMotionKey = "ReduceMotion";

[[nodiscard]] QUODDLE_EXPORT bool reduceTransparency();
// Increased contrast asked for.
[[nodiscard]] QUODDLE_EXPORT bool contrast();
[[nodiscard]] QUODDLE_EXPORT bool reduceMotion();

// 1.0 when the user asked for reduced transparency or increased contrast, else `value` as given.
[[nodiscard]] QUODDLE_EXPORT double alpha(double value);

namespace internal {

// A boolean GSettings key, or no value when its schema is not installed, the schema has no such
// key or the key is not boolean. Never aborts, as GSettings itself would for an unknown schema.
[[nodiscard]] std::optional<bool> desktopSetting(const char* schemaId, const char* key);

}  // namespace internal
}  // namespace quod::Interface
