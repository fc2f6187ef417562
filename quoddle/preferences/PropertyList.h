// Property-list values: the data model of the defaults store and of stored preferences.
//
// A value is a boolean, a 64-bit integer, a real, a UTF-8 string, a byte blob (`Data`), a date, an
// array or a dictionary with string keys. Two equalities:
//   - `operator==` is exact: same kind, same contents (reals compared bit for bit, so -0.0 and 0.0
//     differ and a NaN equals the same NaN), for round-trip checks;
//   - `isEqualTo` is the platform's deep equality for stored values: numbers of any kind compare
//     by value (true equals 1, 2 equals 2.0, a NaN equals nothing), everything else as `==` but
//     recursively with `isEqualTo`.
//
// Reading accepts the XML and the binary ("bplist00") format; writing produces XML (what the
// store keeps) or binary. Both are this file's own code, bounded everywhere: input larger than
// `maximumPropertyListBytes`, nested deeper than `maximumPropertyListDepth`, or with any offset,
// length or reference outside the input is refused as not a property list. Round trips are exact
// in both formats: reals keep every bit (NaN, infinities, -0.0), strings may hold NUL (written as
// a character reference in XML), integers cover the whole int64 range. XML dates are written in
// whole seconds, as the format has always held them.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "quoddle/Export.h"
#include "quoddle/strings/Data.h"

namespace quod {

// Seconds since 2001-01-01 00:00:00 UTC, as property lists count time.
struct PlistDate {
    double secondsSinceReferenceDate = 0;
    friend QUODDLE_EXPORT bool operator==(const PlistDate& a, const PlistDate& b);
};

class PlistValue;
using PlistArray = std::vector<PlistValue>;
using PlistDictionary = std::map<std::string, PlistValue, std::less<>>;

class PlistValue {
  public:
    using Storage = std::variant<bool, int64_t, double, std::string, Data, PlistDate, PlistArray,
                                 PlistDictionary>;

    PlistValue() : storage_(false) {}
    PlistValue(bool value) : storage_(value) {}
    PlistValue(int value) : storage_(int64_t{value}) {}
    PlistValue(int64_t value) : storage_(value) {}
    PlistValue(double value) : storage_(value) {}
    PlistValue(std::string value) : storage_(std::move(value)) {}
    PlistValue(const char* value) : storage_(std::string(value)) {}
    PlistValue(Data value) : storage_(std::move(value)) {}
    PlistValue(PlistDate value) : storage_(value) {}
    PlistValue(PlistArray value) : storage_(std::move(value)) {}
    PlistValue(PlistDictionary value) : storage_(std::move(value)) {}

    // The contents if the value is of kind T, else null: `value.as<std::string>()`.
    template <typename T>
    [[nodiscard]] const T* as() const {
        return std::get_if<T>(&storage_);
    }
    [[nodiscard]] const Storage& storage() const { return storage_; }

    friend QUODDLE_EXPORT bool operator==(const PlistValue& a, const PlistValue& b);

  private:
    Storage storage_;
};

[[nodiscard]] QUODDLE_EXPORT bool isEqualTo(const PlistValue& a, const PlistValue& b);

inline constexpr std::size_t maximumPropertyListBytes = 256u << 20;
inline constexpr int maximumPropertyListDepth = 512;

// The value in XML or binary property-list bytes; no value when they are not a well-formed
// property list or exceed the limits above.
[[nodiscard]] QUODDLE_EXPORT std::optional<PlistValue> parsePropertyList(
    std::span<const uint8_t> bytes);
[[nodiscard]] QUODDLE_EXPORT std::optional<PlistValue> parsePropertyList(std::string_view bytes);

// Serialisations. Values nested deeper than maximumPropertyListDepth are a programming error.
[[nodiscard]] QUODDLE_EXPORT std::string xmlPropertyList(const PlistValue& value);
[[nodiscard]] QUODDLE_EXPORT Data binaryPropertyList(const PlistValue& value);

}  // namespace quod
