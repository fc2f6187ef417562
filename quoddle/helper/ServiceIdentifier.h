// The D-Bus names of the applications' helper tools and inter-process services, which an
// application and its helpers reach each other by.
//
// Helper tools (`ServiceIdentifier::Helper`) do for an application what the user's own process
// may not, after the user has authenticated: Quillmere's saves a file only an administrator may
// change, Tessiva's writes the service manager's system jobs. They run as root and are reached
// on the system bus. Services run as the user on the session bus: each application's own name,
// at which a second instance or a command-line tool hands it documents.
//
//   member                          name                              bus
//   Helper::quillmere()             com.fernholt.Quillmere.Helper     system
//   Helper::tessiva()               com.fernholt.Tessiva.Helper       system
//   quillmere()                     com.fernholt.Quillmere            session
//   tessiva()                       com.fernholt.Tessiva              session
//   pebblin()                       com.fernholt.Pebblin              session
//
// Every name is a valid well-known bus name, and by the D-Bus convention it also names the
// service's interface; its object path is the name with "/" for "." and a leading "/":
//
//     ServiceIdentifier::Helper::tessiva().objectPath()   // "/com/fernholt/Tessiva/Helper"
//
// A call's outcome is an XPCResult (XPCResult.h). Values are made on first use (thread-safe) and
// never change; `entries()` walks the catalogue, helpers first ("Helper::quillmere").
#pragma once

#include <span>
#include <string>
#include <utility>

#include "quoddle/Export.h"
#include "quoddle/interface/Identifier.h"

// clang-format off
#define QUOD_HELPER_TOOL_IDENTIFIERS(X) \
    X(quillmere, "com.fernholt.Quillmere.Helper") \
    X(tessiva, "com.fernholt.Tessiva.Helper")

#define QUOD_SERVICE_IDENTIFIERS(X) \
    X(quillmere, "com.fernholt.Quillmere") \
    X(tessiva, "com.fernholt.Tessiva") \
    X(pebblin, "com.fernholt.Pebblin")
// clang-format on

namespace quod {

enum class BusType { session, system };

class QUODDLE_EXPORT ServiceIdentifier : public Identifier<ServiceIdentifier> {
  public:
    ServiceIdentifier(std::string name, BusType bus) : Identifier(std::move(name)), bus_(bus) {}

    // The bus the service is reached on.
    [[nodiscard]] BusType bus() const { return bus_; }
    // The name of the service's interface: the bus name itself.
    [[nodiscard]] const std::string& interfaceName() const { return rawValue(); }
    [[nodiscard]] std::string objectPath() const;

#define QUOD_DECLARE_IDENTIFIER(member, value) \
    [[nodiscard]] static const ServiceIdentifier& member();
    QUOD_SERVICE_IDENTIFIERS(QUOD_DECLARE_IDENTIFIER)

    struct Helper {
        QUOD_HELPER_TOOL_IDENTIFIERS(QUOD_DECLARE_IDENTIFIER)
    };
#undef QUOD_DECLARE_IDENTIFIER

    [[nodiscard]] static std::span<const Entry> entries();

  private:
    BusType bus_;
};

}  // namespace quod
