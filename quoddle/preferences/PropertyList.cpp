#include "quoddle/preferences/PropertyList.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "quoddle/base/Precondition.h"
#include "quoddle/base/Utf.h"
#include "quoddle/strings/Utf8Scan.h"

namespace quod {

bool operator==(const PlistDate& a, const PlistDate& b) {
    return std::bit_cast<uint64_t>(a.secondsSinceReferenceDate) ==
           std::bit_cast<uint64_t>(b.secondsSinceReferenceDate);
}

namespace {

// Reals compare bit for bit under exact equality, so a round trip is checked to the last bit.
struct ExactEqual {
    bool operator()(double a, double b) const {
        return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b);
    }
    template <typename T>
    bool operator()(const T& a, const T& b) const {
        return a == b;
    }
    template <typename T, typename U>
    bool operator()(const T&, const U&) const {
        return false;
    }
};

std::optional<double> numericValue(const PlistValue& value) {
    if (const bool* flag = value.as<bool>()) return *flag ? 1.0 : 0.0;
    if (const int64_t* integer = value.as<int64_t>()) return static_cast<double>(*integer);
    if (const double* real = value.as<double>()) return *real;
    return std::nullopt;
}

}  // namespace

bool operator==(const PlistValue& a, const PlistValue& b) {
    return std::visit(ExactEqual{}, a.storage(), b.storage());
}

bool isEqualTo(const PlistValue& a, const PlistValue& b) {
    const auto numberA = numericValue(a);
    const auto numberB = numericValue(b);
    if (numberA || numberB) {
        if (!numberA || !numberB) return false;
        // Integers compare exactly; mixed kinds by value. NaN equals nothing.
        const int64_t* integerA = a.as<int64_t>();
        const int64_t* integerB = b.as<int64_t>();
        if (integerA && integerB) return *integerA == *integerB;
        return *numberA == *numberB;
    }
    if (const PlistArray* arrayA = a.as<PlistArray>()) {
        const PlistArray* arrayB = b.as<PlistArray>();
        if (!arrayB || arrayA->size() != arrayB->size()) return false;
        for (std::size_t i = 0; i < arrayA->size(); ++i) {
            if (!isEqualTo((*arrayA)[i], (*arrayB)[i])) return false;
        }
        return true;
    }
    if (const PlistDictionary* dictionaryA = a.as<PlistDictionary>()) {
        const PlistDictionary* dictionaryB = b.as<PlistDictionary>();
        if (!dictionaryB || dictionaryA->size() != dictionaryB->size()) return false;
        for (auto itA = dictionaryA->begin(), itB = dictionaryB->begin(); itA != dictionaryA->end();
             ++itA, ++itB) {
            if (itA->first != itB->first || !isEqualTo(itA->second, itB->second)) return false;
        }
        return true;
    }
    if (const PlistDate* dateA = a.as<PlistDate>()) {
        const PlistDate* dateB = b.as<PlistDate>();
        return dateB && dateA->secondsSinceReferenceDate == dateB->secondsSinceReferenceDate;
    }
    return a == b;
}

namespace {

// ---------------------------------------------------------------------------------------------
// Dates: property lists count seconds from 2001-01-01T00:00:00Z; XML spells them in ISO 8601.

constexpr int64_t secondsPerDay = 86400;
constexpr int64_t daysFrom1970To2001 = 11323;

// Days since 1970-01-01 of a proleptic Gregorian date, and back (H. Hinnant's algorithms).
int64_t daysFromCivil(int64_t year, int64_t month, int64_t day) {
    year -= month <= 2;
    const int64_t era = (year >= 0 ? year : year - 399) / 400;
    const int64_t yearOfEra = year - era * 400;
    const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

void civilFromDays(int64_t days, int64_t& year, int64_t& month, int64_t& day) {
    days += 719468;
    const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const int64_t dayOfEra = days - era * 146097;
    const int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t monthIndex = (5 * dayOfYear + 2) / 153;
    day = dayOfYear - (153 * monthIndex + 2) / 5 + 1;
    month = monthIndex < 10 ? monthIndex + 3 : monthIndex - 9;
    year = yearOfEra + era * 400 + (month <= 2);
}

std::string isoDate(PlistDate date) {
    const double seconds = std::floor(date.secondsSinceReferenceDate);
    if (!std::isfinite(seconds) || std::fabs(seconds) > 1e14) return "2001-01-01T00:00:00Z";
    const auto total = static_cast<int64_t>(seconds) + daysFrom1970To2001 * secondsPerDay;
    int64_t days = total / secondsPerDay;
    int64_t rest = total % secondsPerDay;
    if (rest < 0) {
        rest += secondsPerDay;
        --days;
    }
    int64_t year = 0, month = 0, day = 0;
    civilFromDays(days, year, month, day);
    char text[64];
    std::snprintf(text, sizeof text, "%04lld-%02lld-%02lldT%02lld:%02lld:%02lldZ",
                  static_cast<long long>(year), static_cast<long long>(month),
                  static_cast<long long>(day), static_cast<long long>(rest / 3600),
                  static_cast<long long>(rest / 60 % 60), static_cast<long long>(rest % 60));
    return text;
}

std::optional<PlistDate> parseIsoDate(std::string_view text) {
    long long year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    char zone = 0;
    const std::string copy(text);
    if (std::sscanf(copy.c_str(), "%lld-%lld-%lldT%lld:%lld:%lld%c", &year, &month, &day, &hour,
                    &minute, &second, &zone) != 7 ||
        zone != 'Z' || month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 ||
        second > 60 || hour < 0 || minute < 0 || second < 0 || year < -100000 || year > 100000) {
        return std::nullopt;
    }
    const int64_t days = daysFromCivil(year, month, day) - daysFrom1970To2001;
    return PlistDate{
        static_cast<double>(days * secondsPerDay + hour * 3600 + minute * 60 + second)};
}

// ---------------------------------------------------------------------------------------------
// Base-64 for <data>: whitespace between groups is allowed, as writers wrap long blobs.

constexpr char base64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string base64(const Data& bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const uint32_t group = (uint32_t{bytes[i]} << 16) |
                               (i + 1 < bytes.size() ? uint32_t{bytes[i + 1]} << 8 : 0) |
                               (i + 2 < bytes.size() ? uint32_t{bytes[i + 2]} : 0);
        text += base64Alphabet[(group >> 18) & 63];
        text += base64Alphabet[(group >> 12) & 63];
        text += i + 1 < bytes.size() ? base64Alphabet[(group >> 6) & 63] : '=';
        text += i + 2 < bytes.size() ? base64Alphabet[group & 63] : '=';
    }
    return text;
}

std::optional<Data> fromBase64(std::string_view text) {
    Data bytes;
    uint32_t group = 0;
    int count = 0;
    int padding = 0;
    for (const char c : text) {
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r') continue;
        int value;
        if (c == '=') {
            ++padding;
            value = 0;
        } else {
            if (padding > 0) return std::nullopt;  // data after padding
            const char* found = std::strchr(base64Alphabet, c);
            if (found == nullptr || c == '\0') return std::nullopt;
            value = static_cast<int>(found - base64Alphabet);
        }
        group = (group << 6) | static_cast<uint32_t>(value);
        if (++count == 4) {
            bytes.push_back(static_cast<uint8_t>(group >> 16));
            if (padding < 2) bytes.push_back(static_cast<uint8_t>(group >> 8));
            if (padding < 1) bytes.push_back(static_cast<uint8_t>(group));
            group = 0;
            count = 0;
        }
    }
    if (count != 0 || padding > 2) return std::nullopt;
    return bytes;
}

// ---------------------------------------------------------------------------------------------
// XML writing.

std::string realText(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "+infinity" : "-infinity";
    char text[64];
    const auto result = std::to_chars(text, text + sizeof text, value);  // shortest exact form
    return std::string(text, result.ptr);
}

void appendEscaped(std::string& xml, std::string_view text) {
    for (const char c : text) {
        switch (c) {
            case '&':
                xml += "&amp;";
                break;
            case '<':
                xml += "&lt;";
                break;
            case '>':
                xml += "&gt;";
                break;
            default:
                // Control characters have no literal form in XML; a reference keeps them exact.
                if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r') {
                    char reference[8];
                    std::snprintf(reference, sizeof reference, "&#x%X;", static_cast<unsigned>(c));
                    xml += reference;
                } else {
                    xml += c;
                }
        }
    }
}

void appendXml(std::string& xml, const PlistValue& value, int depth) {
    QUOD_PRECONDITION(depth <= maximumPropertyListDepth, "property list nested too deeply");
    const std::string indent(static_cast<std::size_t>(depth), '\t');
    xml += indent;
    if (const bool* flag = value.as<bool>()) {
        xml += *flag ? "<true/>\n" : "<false/>\n";
    } else if (const int64_t* integer = value.as<int64_t>()) {
        xml += "<integer>" + std::to_string(*integer) + "</integer>\n";
    } else if (const double* real = value.as<double>()) {
        xml += "<real>" + realText(*real) + "</real>\n";
    } else if (const std::string* text = value.as<std::string>()) {
        xml += "<string>";
        appendEscaped(xml, *text);
        xml += "</string>\n";
    } else if (const Data* bytes = value.as<Data>()) {
        xml += "<data>" + base64(*bytes) + "</data>\n";
    } else if (const PlistDate* date = value.as<PlistDate>()) {
        xml += "<date>" + isoDate(*date) + "</date>\n";
    } else if (const PlistArray* array = value.as<PlistArray>()) {
        if (array->empty()) {
            xml += "<array/>\n";
            return;
        }
        xml += "<array>\n";
        for (const PlistValue& element : *array)
            appendXml(xml, element, depth + 1);
        xml += indent + "</array>\n";
    } else if (const PlistDictionary* dictionary = value.as<PlistDictionary>()) {
        if (dictionary->empty()) {
            xml += "<dict/>\n";
            return;
        }
        xml += "<dict>\n";
        for (const auto& [key, element] : *dictionary) {
            xml += indent + "\t<key>";
            appendEscaped(xml, key);
            xml += "</key>\n";
            appendXml(xml, element, depth + 1);
        }
        xml += indent + "</dict>\n";
    }
}

// ---------------------------------------------------------------------------------------------
// XML reading: the property-list subset of XML, strictly bounded.

class XmlReader {
  public:
    explicit XmlReader(std::string_view text) : text_(text) {}

    std::optional<PlistValue> document() {
        // Strings are UTF-8 everywhere in the store; text that is not is damage, not data.
        const auto* bytes = reinterpret_cast<const uint8_t*>(text_.data());
        if (!internal::scanUtf8({bytes, text_.size()}).wellFormed) return std::nullopt;
        if (text_.starts_with("\xEF\xBB\xBF")) position_ = 3;
        skipMisc();
        if (!peekTag("plist")) {
            auto value = readValue(0);
            skipMisc();
            return value && position_ == text_.size() ? value : std::nullopt;
        }
        Tag plist;
        if (!readTag(plist) || plist.closing || plist.selfClosing) return std::nullopt;
        auto value = readValue(0);
        if (!value || !expectClosing("plist")) return std::nullopt;
        skipMisc();
        return position_ == text_.size() ? value : std::nullopt;
    }

  private:
    struct Tag {
        std::string_view name;
        bool closing = false;
        bool selfClosing = false;
    };

    bool atEnd() const { return position_ >= text_.size(); }
    bool startsWith(std::string_view prefix) const {
        return text_.substr(position_).starts_with(prefix);
    }

    void skipWhitespace() {
        while (!atEnd() && (text_[position_] == ' ' || text_[position_] == '\t' ||
                            text_[position_] == '\n' || text_[position_] == '\r')) {
            ++position_;
        }
    }

    bool skipPast(std::string_view terminator) {
        const std::size_t found = text_.find(terminator, position_);
        if (found == std::string_view::npos) {
            position_ = text_.size();
            return false;
        }
        position_ = found + terminator.size();
        return true;
    }

    // Whitespace, comments, processing instructions and the document type declaration.
    void skipMisc() {
        for (;;) {
            skipWhitespace();
            if (startsWith("<!--")) {
                skipPast("-->");
            } else if (startsWith("<?")) {
                skipPast("?>");
            } else if (startsWith("<!DOCTYPE")) {
                int brackets = 0;
                for (; !atEnd(); ++position_) {
                    const char c = text_[position_];
                    if (c == '[') ++brackets;
                    if (c == ']') --brackets;
                    if (c == '>' && brackets <= 0) {
                        ++position_;
                        break;
                    }
                }
            } else {
                return;
            }
        }
    }

    bool peekTag(std::string_view name) const {
        return startsWith("<") && text_.substr(position_ + 1).starts_with(name);
    }

    bool readTag(Tag& tag) {
        skipMisc();
        if (!startsWith("<")) return false;
        const std::size_t end = text_.find('>', position_);
        if (end == std::string_view::npos) return false;
        std::string_view inside = text_.substr(position_ + 1, end - position_ - 1);
        position_ = end + 1;
        tag = Tag{};
        if (inside.starts_with("/")) {
            tag.closing = true;
            inside.remove_prefix(1);
        }
        if (inside.ends_with("/")) {
            tag.selfClosing = true;
            inside.remove_suffix(1);
        }
        const std::size_t nameEnd = inside.find_first_of(" \t\r\n");
        tag.name = inside.substr(0, nameEnd);
        return !tag.name.empty();
    }

    bool expectClosing(std::string_view name) {
        Tag tag;
        return readTag(tag) && tag.closing && tag.name == name;
    }

    // Character data up to the next tag, with references and CDATA sections resolved.
    std::optional<std::string> readText() {
        std::string text;
        while (!atEnd()) {
            if (startsWith("<![CDATA[")) {
                position_ += 9;
                const std::size_t end = text_.find("]]>", position_);
                if (end == std::string_view::npos) return std::nullopt;
                text.append(text_.substr(position_, end - position_));
                position_ = end + 3;
                continue;
            }
            if (startsWith("<!--")) {
                skipPast("-->");
                continue;
            }
            const char c = text_[position_];
            if (c == '<') break;
            if (c != '&') {
                text += c;
                ++position_;
                continue;
            }
            const std::size_t end = text_.find(';', position_);
            if (end == std::string_view::npos || end - position_ > 12) return std::nullopt;
            const std::string_view entity = text_.substr(position_ + 1, end - position_ - 1);
            position_ = end + 1;
            if (entity == "amp")
                text += '&';
            else if (entity == "lt")
                text += '<';
            else if (entity == "gt")
                text += '>';
            else if (entity == "quot")
                text += '"';
            else if (entity == "apos")
                text += '\'';
            else if (entity.starts_with("#")) {
                const bool hex = entity.size() > 1 && (entity[1] == 'x' || entity[1] == 'X');
                const std::string_view digits = entity.substr(hex ? 2 : 1);
                uint32_t codePoint = 0;
                const auto result = std::from_chars(digits.data(), digits.data() + digits.size(),
                                                    codePoint, hex ? 16 : 10);
                if (digits.empty() || result.ptr != digits.data() + digits.size() ||
                    codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
                    return std::nullopt;
                }
                text += toUtf8(
                    codePoint <= 0xFFFF
                        ? std::u16string(1, static_cast<char16_t>(codePoint))
                        : std::u16string{
                              static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10)),
                              static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF))});
            } else {
                return std::nullopt;
            }
        }
        return text;
    }

    // The text of an element whose opening tag was just read.
    std::optional<std::string> elementText(const Tag& tag) {
        if (tag.selfClosing) return std::string();
        auto text = readText();
        if (!text || !expectClosing(tag.name)) return std::nullopt;
        return text;
    }

    std::optional<PlistValue> readValue(int depth) {
        if (depth > maximumPropertyListDepth) return std::nullopt;
        Tag tag;
        if (!readTag(tag) || tag.closing) return std::nullopt;
        const std::string_view name = tag.name;
        if (name == "true" || name == "false") {
            if (!tag.selfClosing && !expectClosing(name)) return std::nullopt;
            return PlistValue(name == "true");
        }
        if (name == "dict") return readDictionary(tag, depth);
        if (name == "array") return readArray(tag, depth);
        auto text = elementText(tag);
        if (!text) return std::nullopt;
        if (name == "string") return PlistValue(std::move(*text));
        if (name == "integer") return parseInteger(trimmed(*text));
        if (name == "real") return parseReal(trimmed(*text));
        if (name == "data") {
            auto bytes = fromBase64(*text);
            return bytes ? std::optional<PlistValue>(PlistValue(std::move(*bytes))) : std::nullopt;
        }
        if (name == "date") {
            auto date = parseIsoDate(trimmed(*text));
            return date ? std::optional<PlistValue>(PlistValue(*date)) : std::nullopt;
        }
        return std::nullopt;
    }

    std::optional<PlistValue> readArray(const Tag& tag, int depth) {
        PlistArray array;
        if (tag.selfClosing) return PlistValue(std::move(array));
        for (;;) {
            skipMisc();
            if (startsWith("</")) {
                if (!expectClosing("array")) return std::nullopt;
                return PlistValue(std::move(array));
            }
            auto element = readValue(depth + 1);
            if (!element) return std::nullopt;
            array.push_back(std::move(*element));
        }
    }

    std::optional<PlistValue> readDictionary(const Tag& tag, int depth) {
        PlistDictionary dictionary;
        if (tag.selfClosing) return PlistValue(std::move(dictionary));
        for (;;) {
            skipMisc();
            if (startsWith("</")) {
                if (!expectClosing("dict")) return std::nullopt;
                return PlistValue(std::move(dictionary));
            }
            Tag keyTag;
            if (!readTag(keyTag) || keyTag.closing || keyTag.name != "key") return std::nullopt;
            auto key = elementText(keyTag);
            if (!key) return std::nullopt;
            auto element = readValue(depth + 1);
            if (!element) return std::nullopt;
            dictionary.insert_or_assign(std::move(*key), std::move(*element));
        }
    }

    static std::string_view trimmed(std::string_view text) {
        const std::size_t start = text.find_first_not_of(" \t\r\n");
        if (start == std::string_view::npos) return {};
        return text.substr(start, text.find_last_not_of(" \t\r\n") - start + 1);
    }

    static std::optional<PlistValue> parseInteger(std::string_view text) {
        if (text.starts_with("+")) text.remove_prefix(1);
        int64_t value = 0;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
        if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size()) {
            return std::nullopt;
        }
        return PlistValue(value);
    }

    static std::optional<PlistValue> parseReal(std::string_view text) {
        if (text.starts_with("+")) text.remove_prefix(1);
        double value = 0;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
        if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size()) {
            return std::nullopt;
        }
        return PlistValue(value);
    }

    std::string_view text_;
    std::size_t position_ = 0;
};

// ---------------------------------------------------------------------------------------------
// Binary reading: every offset, length and reference is checked against the input before use.

class BinaryReader {
  public:
    explicit BinaryReader(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    std::optional<PlistValue> document() {
        constexpr std::size_t trailerSize = 32;
        if (bytes_.size() < 8 + trailerSize || std::memcmp(bytes_.data(), "bplist00", 8) != 0) {
            return std::nullopt;
        }
        const uint8_t* trailer = bytes_.data() + bytes_.size() - trailerSize;
        offsetSize_ = trailer[6];
        referenceSize_ = trailer[7];
        const uint64_t objectCount = bigEndian(trailer + 8, 8);
        const uint64_t topObject = bigEndian(trailer + 16, 8);
        const uint64_t offsetTable = bigEndian(trailer + 24, 8);
        const uint64_t objectsEnd = bytes_.size() - trailerSize;
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8 ||
            objectCount == 0 || topObject >= objectCount || offsetTable < 8 ||
            offsetTable > objectsEnd || objectCount > (objectsEnd - offsetTable) / offsetSize_) {
            return std::nullopt;
        }
        objectCount_ = objectCount;
        offsetTable_ = offsetTable;
        // Shared references can make a small file expand into a huge tree; more decoded objects
        // than the file could describe one by one means such a file.
        budget_ = bytes_.size() * 2 + 1024;
        return readObject(topObject, 0);
    }

  private:
    static uint64_t bigEndian(const uint8_t* at, std::size_t size) {
        uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i)
            value = (value << 8) | at[i];
        return value;
    }

    // [offset, offset + size) lies inside the object area.
    bool inObjects(uint64_t offset, uint64_t size) const {
        return offset <= offsetTable_ && size <= offsetTable_ - offset;
    }

    std::optional<uint64_t> objectOffset(uint64_t reference) const {
        if (reference >= objectCount_) return std::nullopt;
        const uint64_t offset =
            bigEndian(bytes_.data() + offsetTable_ + reference * offsetSize_, offsetSize_);
        if (offset < 8 || offset >= offsetTable_) return std::nullopt;
        return offset;
    }

    // The length of a variable-size object: the marker's low nibble, or an integer that follows.
    std::optional<uint64_t> readLength(uint64_t& cursor, uint8_t info) const {
        if (info != 0x0F) return info;
        if (!inObjects(cursor, 1)) return std::nullopt;
        const uint8_t marker = bytes_[cursor];
        if ((marker >> 4) != 0x1 || (marker & 0x0F) > 3) return std::nullopt;
        const uint64_t size = uint64_t{1} << (marker & 0x0F);
        if (!inObjects(cursor + 1, size)) return std::nullopt;
        const uint64_t length = bigEndian(bytes_.data() + cursor + 1, size);
        cursor += 1 + size;
        return length;
    }

    std::optional<PlistValue> readObject(uint64_t reference, int depth) {
        if (depth > maximumPropertyListDepth || budget_ == 0) return std::nullopt;
        --budget_;
        const auto offset = objectOffset(reference);
        if (!offset) return std::nullopt;
        const uint8_t marker = bytes_[*offset];
        const uint8_t type = marker >> 4;
        const uint8_t info = marker & 0x0F;
        uint64_t cursor = *offset + 1;
        switch (type) {
            case 0x0:
                if (marker == 0x08) return PlistValue(false);
                if (marker == 0x09) return PlistValue(true);
                return std::nullopt;
            case 0x1: {
                if (info > 4) return std::nullopt;
                const uint64_t size = uint64_t{1} << info;
                if (!inObjects(cursor, size)) return std::nullopt;
                if (size == 16) {
                    // 128-bit: only values that fit 64 bits, i.e. a sign extension in the high
                    // half.
                    const uint64_t high = bigEndian(bytes_.data() + cursor, 8);
                    const uint64_t low = bigEndian(bytes_.data() + cursor + 8, 8);
                    const bool fits = (high == 0 && low <= uint64_t(INT64_MAX)) ||
                                      (high == UINT64_MAX && low > uint64_t(INT64_MAX));
                    if (!fits) return std::nullopt;
                    return PlistValue(static_cast<int64_t>(low));
                }
                const uint64_t raw = bigEndian(bytes_.data() + cursor, size);
                // 1-, 2- and 4-byte integers are unsigned, 8-byte ones signed.
                return PlistValue(static_cast<int64_t>(raw));
            }
            case 0x2: {
                if (info != 2 && info != 3) return std::nullopt;
                const uint64_t size = uint64_t{1} << info;
                if (!inObjects(cursor, size)) return std::nullopt;
                const uint64_t raw = bigEndian(bytes_.data() + cursor, size);
                if (size == 4)
                    return PlistValue(double{std::bit_cast<float>(static_cast<uint32_t>(raw))});
                return PlistValue(std::bit_cast<double>(raw));
            }
            case 0x3: {
                if (info != 3 || !inObjects(cursor, 8)) return std::nullopt;
                return PlistValue(
                    PlistDate{std::bit_cast<double>(bigEndian(bytes_.data() + cursor, 8))});
            }
            case 0x4:
            case 0x5:
            case 0x6: {
                const auto length = readLength(cursor, info);
                const uint64_t unit = type == 0x6 ? 2 : 1;
                if (!length || *length > offsetTable_ / unit ||
                    !inObjects(cursor, *length * unit)) {
                    return std::nullopt;
                }
                const uint8_t* start = bytes_.data() + cursor;
                if (type == 0x4) return PlistValue(Data(start, start + *length));
                if (type == 0x5) {
                    // Seven-bit text only: anything else would not be the string it claims to be.
                    if (std::any_of(start, start + *length, [](uint8_t b) { return b >= 0x80; })) {
                        return std::nullopt;
                    }
                    return PlistValue(std::string(reinterpret_cast<const char*>(start), *length));
                }
                std::u16string units(*length, u'\0');
                for (uint64_t i = 0; i < *length; ++i) {
                    units[i] = static_cast<char16_t>(bigEndian(start + 2 * i, 2));
                }
                return PlistValue(toUtf8(units));
            }
            case 0xA:
            case 0xD: {
                const auto count = readLength(cursor, info);
                const uint64_t references = type == 0xD ? 2 : 1;
                if (!count || *count > offsetTable_ / (referenceSize_ * references) ||
                    !inObjects(cursor, *count * references * referenceSize_)) {
                    return std::nullopt;
                }
                const auto referenceAt = [&](uint64_t index) {
                    return bigEndian(bytes_.data() + cursor + index * referenceSize_,
                                     referenceSize_);
                };
                if (type == 0xA) {
                    PlistArray array;
                    array.reserve(*count);
                    for (uint64_t i = 0; i < *count; ++i) {
                        auto element = readObject(referenceAt(i), depth + 1);
                        if (!element) return std::nullopt;
                        array.push_back(std::move(*element));
                    }
                    return PlistValue(std::move(array));
                }
                PlistDictionary dictionary;
                for (uint64_t i = 0; i < *count; ++i) {
                    auto key = readObject(referenceAt(i), depth + 1);
                    if (!key || !key->as<std::string>()) return std::nullopt;
                    auto element = readObject(referenceAt(*count + i), depth + 1);
                    if (!element) return std::nullopt;
                    dictionary.insert_or_assign(*key->as<std::string>(), std::move(*element));
                }
                return PlistValue(std::move(dictionary));
            }
            default:
                return std::nullopt;
        }
    }

    std::span<const uint8_t> bytes_;
    uint8_t offsetSize_ = 0;
    uint8_t referenceSize_ = 0;
    uint64_t objectCount_ = 0;
    uint64_t offsetTable_ = 0;
    uint64_t budget_ = 0;
};

// ---------------------------------------------------------------------------------------------
// Binary writing: one object per value, in depth-first order.

class BinaryWriter {
  public:
    Data write(const PlistValue& root) {
        count(root, 0);
        referenceSize_ = byteCount(objectCount_);
        output_.assign({'b', 'p', 'l', 'i', 's', 't', '0', '0'});
        writeObject(root);
        const uint64_t offsetTable = output_.size();
        const uint8_t offsetSize = byteCount(offsetTable);
        for (const uint64_t offset : offsets_)
            appendBigEndian(offset, offsetSize);
        output_.insert(output_.end(), 6, 0);
        output_.push_back(offsetSize);
        output_.push_back(referenceSize_);
        appendBigEndian(objectCount_, 8);
        appendBigEndian(0, 8);
        appendBigEndian(offsetTable, 8);
        return std::move(output_);
    }

  private:
    static uint8_t byteCount(uint64_t value) {
        if (value <= 0xFF) return 1;
        if (value <= 0xFFFF) return 2;
        if (value <= 0xFFFFFFFF) return 4;
        return 8;
    }

    void count(const PlistValue& value, int depth) {
        QUOD_PRECONDITION(depth <= maximumPropertyListDepth, "property list nested too deeply");
        ++objectCount_;
        if (const PlistArray* array = value.as<PlistArray>()) {
            for (const PlistValue& element : *array)
                count(element, depth + 1);
        } else if (const PlistDictionary* dictionary = value.as<PlistDictionary>()) {
            objectCount_ += dictionary->size();
            for (const auto& entry : *dictionary)
                count(entry.second, depth + 1);
        }
    }

    void appendBigEndian(uint64_t value, std::size_t size) {
        for (std::size_t i = size; i-- > 0;)
            output_.push_back(static_cast<uint8_t>(value >> (8 * i)));
    }

    void appendMarker(uint8_t type, uint64_t length) {
        if (length < 15) {
            output_.push_back(static_cast<uint8_t>((type << 4) | length));
            return;
        }
        output_.push_back(static_cast<uint8_t>((type << 4) | 0x0F));
        const uint8_t size = byteCount(length);
        output_.push_back(static_cast<uint8_t>(0x10 | std::countr_zero(size)));
        appendBigEndian(length, size);
    }

    // Writes the value and everything in it; answers its object reference.
    uint64_t writeObject(const PlistValue& value) {
        const uint64_t reference = offsets_.size();
        offsets_.push_back(output_.size());
        if (const bool* flag = value.as<bool>()) {
            output_.push_back(*flag ? 0x09 : 0x08);
        } else if (const int64_t* integer = value.as<int64_t>()) {
            const uint8_t size = *integer < 0 ? 8 : byteCount(static_cast<uint64_t>(*integer));
            // Unsigned 8-byte values above INT64_MAX cannot occur; 8 bytes read back signed.
            output_.push_back(static_cast<uint8_t>(0x10 | std::countr_zero(size)));
            appendBigEndian(static_cast<uint64_t>(*integer), size);
        } else if (const double* real = value.as<double>()) {
            output_.push_back(0x23);
            appendBigEndian(std::bit_cast<uint64_t>(*real), 8);
        } else if (const PlistDate* date = value.as<PlistDate>()) {
            output_.push_back(0x33);
            appendBigEndian(std::bit_cast<uint64_t>(date->secondsSinceReferenceDate), 8);
        } else if (const Data* bytes = value.as<Data>()) {
            appendMarker(0x4, bytes->size());
            output_.insert(output_.end(), bytes->begin(), bytes->end());
        } else if (const std::string* text = value.as<std::string>()) {
            writeString(*text);
        } else if (const PlistArray* array = value.as<PlistArray>()) {
            writeContainer(0xA, array->size(), [&](auto&& writeChild) {
                for (const PlistValue& element : *array)
                    writeChild(element);
            });
        } else if (const PlistDictionary* dictionary = value.as<PlistDictionary>()) {
            writeContainer(0xD, dictionary->size(), [&](auto&& writeChild) {
                for (const auto& entry : *dictionary)
                    writeChild(PlistValue(entry.first));
                for (const auto& entry : *dictionary)
                    writeChild(entry.second);
            });
        }
        return reference;
    }

    void writeString(const std::string& text) {
        const bool ascii = std::all_of(text.begin(), text.end(),
                                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        if (ascii) {
            appendMarker(0x5, text.size());
            output_.insert(output_.end(), text.begin(), text.end());
            return;
        }
        const std::u16string units = toUtf16(text);
        appendMarker(0x6, units.size());
        for (const char16_t unit : units)
            appendBigEndian(unit, 2);
    }

    // Children are written after the container's reference list, so the list is patched in.
    template <typename EachChild>
    void writeContainer(uint8_t type, std::size_t count, EachChild eachChild) {
        appendMarker(type, count);
        const std::size_t references = output_.size();
        const std::size_t slots = type == 0xD ? count * 2 : count;
        output_.insert(output_.end(), slots * referenceSize_, 0);
        std::size_t slot = 0;
        eachChild([&](const PlistValue& child) {
            const uint64_t reference = writeObject(child);
            for (std::size_t i = 0; i < referenceSize_; ++i) {
                output_[references + slot * referenceSize_ + i] =
                    static_cast<uint8_t>(reference >> (8 * (referenceSize_ - 1 - i)));
            }
            ++slot;
        });
    }

    Data output_;
    std::vector<uint64_t> offsets_;
    uint64_t objectCount_ = 0;
    uint8_t referenceSize_ = 1;
};

}  // namespace

std::optional<PlistValue> parsePropertyList(std::span<const uint8_t> bytes) {
    if (bytes.size() > maximumPropertyListBytes) return std::nullopt;
    if (bytes.size() >= 8 && std::memcmp(bytes.data(), "bplist", 6) == 0) {
        return BinaryReader(bytes).document();
    }
    return XmlReader({reinterpret_cast<const char*>(bytes.data()), bytes.size()}).document();
}

std::optional<PlistValue> parsePropertyList(std::string_view bytes) {
    return parsePropertyList(
        std::span<const uint8_t>(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()));
}

std::string xmlPropertyList(const PlistValue& value) {
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
    appendXml(xml, value, 0);
    xml += "</plist>\n";
    return xml;
}

Data binaryPropertyList(const PlistValue& value) {
    return BinaryWriter().write(value);
}

}  // namespace quod
