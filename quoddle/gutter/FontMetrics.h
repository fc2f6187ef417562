// How much room a text takes in a font: the one font question the gutter asks, answered by the
// toolkit.
//
// The core cannot measure glyphs, so the process holds one installed `FontMetrics`, which the
// toolkit layer replaces with a real measurement at start-up (before the first gutter draws, or
// followed by a "LineNumberFontChanged" notification). Until then `installed()` is an estimate
// with the proportions of a typical monospaced font: 0.6 em wide per character and 1.2 em high,
// where an em is the font's point size. Installing and reading are thread-safe.
#pragma once

#include <memory>
#include <string_view>

#include "quoddle/Export.h"
#include "quoddle/base/Geometry.h"
#include "quoddle/preferences/Font.h"

namespace quod {

class QUODDLE_EXPORT FontMetrics {
  public:
    virtual ~FontMetrics() = default;

    // The size of `text` (UTF-8) set on one line in `font`: its advance and its line height.
    [[nodiscard]] virtual Size sizeOfString(std::string_view text, const Font& font) const = 0;

    [[nodiscard]] static std::shared_ptr<const FontMetrics> installed();
    // Null reinstalls the estimate.
    static void install(std::shared_ptr<const FontMetrics> metrics);
};

}  // namespace quod
