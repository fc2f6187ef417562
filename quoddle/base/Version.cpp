#include "quoddle/Version.h"

namespace quod {

std::string_view version() {
    return QUODDLE_VERSION_STRING;
}

}  // namespace quod
