#include "quoddle/base/Range.h"

#include <ostream>

namespace quod {

std::ostream& operator<<(std::ostream& stream, const Range& range) {
    return stream << '{' << range.location << ", " << range.length << '}';
}

}  // namespace quod
