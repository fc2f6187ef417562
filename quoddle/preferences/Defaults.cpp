#include "quoddle/preferences/Defaults.h"

#include "quoddle/preferences/UserDefaults.h"

namespace quod::Defaults {

void negate(Key key) {
    const auto store = UserDefaults::standard();
    store->setBool(key.rawValue(), !store->boolForKey(key.rawValue()));
}

}  // namespace quod::Defaults
