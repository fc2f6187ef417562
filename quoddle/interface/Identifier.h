// The shape shared by the framework's string identifiers (notification names, toolbar item and
// interface item identifiers): a string compared as a string, distinct types so that a toolbar
// item identifier is never passed where a notification name is wanted.
//
// Each identifier type names its catalogue as static accessors, `NotificationName::themeChanged()`;
// an accessor makes its value on first use (thread-safe) and returns the same object every time.
// `entries()` walks a catalogue: member name (as written in C++; nested groups as "Column::name")
// and accessor. Hosts make their own identifiers with the explicit constructor.
#pragma once

#include <compare>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace quod {

template <typename Derived>
class Identifier {
  public:
    explicit Identifier(std::string rawValue) : rawValue_(std::move(rawValue)) {}

    [[nodiscard]] const std::string& rawValue() const { return rawValue_; }

    // Identifiers go wherever a string view is taken, NotificationCenter names included.
    operator std::string_view() const noexcept { return rawValue_; }  // NOLINT: implicit

    friend bool operator==(const Identifier&, const Identifier&) = default;
    friend auto operator<=>(const Identifier&, const Identifier&) = default;

    struct Hash {
        std::size_t operator()(const Identifier& identifier) const {
            return std::hash<std::string>{}(identifier.rawValue_);
        }
    };

    struct Entry {
        std::string_view member;
        const Derived& (*value)();
    };

  private:
    std::string rawValue_;
};

}  // namespace quod

// Defines the accessor `Type::member()`; used by the catalogues' .cpp files.
#define QUOD_DEFINE_IDENTIFIER(Type, Qualifier, member, value) \
    const Type& Qualifier member() {                           \
        static const Type* const identifier = new Type(value); \
        return *identifier;                                    \
    }
