// Which end of a string an edit or trim applies to: the start, the end, or both (start first).
#pragma once

namespace quod {

enum class StringEdge { start, end, both };

}  // namespace quod
