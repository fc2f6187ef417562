// The application's controller factories, by identifier: what a storyboard is to the windows.
//
// An application registers one factory per identifier and asks for a new controller by that
// identifier; the window kinds of Singleton.h name their entries ("Preferences", "Compare",
// "Find"). A factory returns any QObject, so a caller that wants a particular class checks what
// it got (qobject_cast / dynamic_cast) and treats anything else as a failure.
//
// The main storyboard is process-wide and optional: until the application installs one with
// `setMain`, and again after `setMain(nullptr)`, `main()` is null and window kinds cannot be built.
//
//     auto storyboard = std::make_unique<Storyboard>();
//     storyboard->registerController("Preferences", [] { return makePreferences(); });
//     Storyboard::setMain(std::move(storyboard));
//
// Main thread only, like everything that makes widgets.
#pragma once

#include <QObject>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "quoddle/Export.h"

namespace quod {

class QUODDLE_EXPORT Storyboard {
  public:
    using Factory = std::function<std::unique_ptr<QObject>()>;

    // Replaces any factory registered under the same identifier.
    void registerController(std::string identifier, Factory factory);

    // A new controller from the factory for `identifier`; null when there is none (or the
    // factory made nothing).
    [[nodiscard]] std::unique_ptr<QObject> instantiateController(std::string_view identifier) const;

    // The application's main storyboard, or null when it has none.
    [[nodiscard]] static Storyboard* main();
    static void setMain(std::unique_ptr<Storyboard> storyboard);

  private:
    std::map<std::string, Factory, std::less<>> factories_;
};

}  // namespace quod
