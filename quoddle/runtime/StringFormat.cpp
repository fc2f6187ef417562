#include "quoddle/runtime/StringFormat.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>

namespace quod {
namespace {

struct Placeholder {
    bool leftAlign = false;
    bool plus = false;
    bool space = false;
    bool zeroPad = false;
    bool alternate = false;
    std::size_t width = 0;
    std::optional<std::size_t> precision;
    char conversion = 0;
};

// The parts of a formatted field, so that zero padding can go between sign and digits.
struct Field {
    std::string sign;  // "-", "+", " ", or a prefix such as "0x"
    std::string body;
    bool numeric = false;
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Reads a run of decimal digits; saturates instead of overflowing on absurd widths.
std::size_t readNumber(std::string_view format, std::size_t& at) {
    std::size_t value = 0;
    while (at < format.size() && isDigit(format[at])) {
        value =
            std::min<std::size_t>(value * 10 + static_cast<std::size_t>(format[at] - '0'), 1 << 20);
        ++at;
    }
    return value;
}

std::size_t codePointCount(std::string_view text) {
    std::size_t count = 0;
    for (char c : text) {
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++count;
    }
    return count;
}

// The first `count` code points of `text`.
std::string_view prefixOfCodePoints(std::string_view text, std::size_t count) {
    std::size_t seen = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80 && seen++ == count) {
            return text.substr(0, i);
        }
    }
    return text;
}

std::string toDecimal(std::uint64_t value, unsigned base = 10, bool upper = false) {
    char digits[72];
    auto [end, error] =
        std::to_chars(std::begin(digits), std::end(digits), value, static_cast<int>(base));
    std::string text(digits, end);
    if (upper) {
        for (char& c : text) {
            if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        }
    }
    return text;
}

std::string shortestDecimal(double value) {
    char digits[64];
    auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), value);
    return std::string(digits, end);
}

std::string describe(const FormatArgument::Value& value) {
    struct Describe {
        std::string operator()(std::int64_t v) const {
            return v < 0 ? "-" + toDecimal(0 - static_cast<std::uint64_t>(v))
                         : toDecimal(static_cast<std::uint64_t>(v));
        }
        std::string operator()(std::uint64_t v) const { return toDecimal(v); }
        std::string operator()(double v) const { return shortestDecimal(v); }
        std::string operator()(std::string_view v) const { return std::string(v); }
    };
    return std::visit(Describe{}, value);
}

std::int64_t truncated(double value) {
    if (std::isnan(value)) return 0;
    if (value >= 9.2233720368547758e18) return std::numeric_limits<std::int64_t>::max();
    if (value <= -9.2233720368547758e18) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

std::string signFor(bool negative, const Placeholder& placeholder) {
    if (negative) return "-";
    if (placeholder.plus) return "+";
    if (placeholder.space) return " ";
    return "";
}

Field signedField(const FormatArgument::Value& value, const Placeholder& placeholder) {
    bool negative = false;
    std::uint64_t magnitude = 0;
    if (auto* integer = std::get_if<std::int64_t>(&value)) {
        negative = *integer < 0;
        magnitude = negative ? 0 - static_cast<std::uint64_t>(*integer)
                             : static_cast<std::uint64_t>(*integer);
    } else if (auto* unsignedInteger = std::get_if<std::uint64_t>(&value)) {
        magnitude = *unsignedInteger;
    } else if (auto* real = std::get_if<double>(&value)) {
        const std::int64_t whole = truncated(*real);
        negative = whole < 0;
        magnitude =
            negative ? 0 - static_cast<std::uint64_t>(whole) : static_cast<std::uint64_t>(whole);
    }
    std::string digits = toDecimal(magnitude);
    if (placeholder.precision) {
        if (*placeholder.precision == 0 && magnitude == 0) digits.clear();
        if (digits.size() < *placeholder.precision)
            digits.insert(0, *placeholder.precision - digits.size(), '0');
    }
    return {signFor(negative, placeholder), std::move(digits), true};
}

Field unsignedField(const FormatArgument::Value& value, const Placeholder& placeholder) {
    std::uint64_t bits = 0;
    if (auto* integer = std::get_if<std::int64_t>(&value)) {
        bits = static_cast<std::uint64_t>(*integer);  // printf's reading of a negative number
    } else if (auto* unsignedInteger = std::get_if<std::uint64_t>(&value)) {
        bits = *unsignedInteger;
    } else if (auto* real = std::get_if<double>(&value)) {
        bits = static_cast<std::uint64_t>(truncated(*real));
    }
    const char conversion = placeholder.conversion;
    const unsigned base = conversion == 'o'                          ? 8
                          : (conversion == 'x' || conversion == 'X') ? 16
                                                                     : 10;
    std::string digits = toDecimal(bits, base, conversion == 'X');
    if (placeholder.precision) {
        if (*placeholder.precision == 0 && bits == 0) digits.clear();
        if (digits.size() < *placeholder.precision)
            digits.insert(0, *placeholder.precision - digits.size(), '0');
    }
    std::string prefix;
    if (placeholder.alternate && bits != 0 && base == 16) prefix = conversion == 'X' ? "0X" : "0x";
    if (placeholder.alternate && base == 8 && (digits.empty() || digits.front() != '0'))
        digits.insert(0, "0");
    return {std::move(prefix), std::move(digits), true};
}

Field floatingField(const FormatArgument::Value& value, const Placeholder& placeholder) {
    double number = 0;
    if (auto* integer = std::get_if<std::int64_t>(&value)) number = static_cast<double>(*integer);
    if (auto* unsignedInteger = std::get_if<std::uint64_t>(&value))
        number = static_cast<double>(*unsignedInteger);
    if (auto* real = std::get_if<double>(&value)) number = *real;

    const char conversion = placeholder.conversion;
    const bool upper = conversion == 'F' || conversion == 'E' || conversion == 'G';
    const char lower = static_cast<char>(upper ? conversion - 'A' + 'a' : conversion);
    const std::chars_format style = lower == 'f'   ? std::chars_format::fixed
                                    : lower == 'e' ? std::chars_format::scientific
                                                   : std::chars_format::general;
    const int precision =
        static_cast<int>(std::min<std::size_t>(placeholder.precision.value_or(6), 400));
    char digits[512];
    auto [end, error] =
        std::to_chars(std::begin(digits), std::end(digits), std::fabs(number), style, precision);
    std::string body =
        error == std::errc() ? std::string(digits, end) : shortestDecimal(std::fabs(number));
    if (upper) {
        for (char& c : body) {
            if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        }
    }
    return {signFor(std::signbit(number) && !std::isnan(number), placeholder), std::move(body),
            std::isfinite(number)};
}

void appendCodePoint(std::string& text, std::uint64_t codePoint) {
    if (codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) codePoint = 0xFFFD;
    const auto c = static_cast<std::uint32_t>(codePoint);
    if (c < 0x80) {
        text += static_cast<char>(c);
    } else if (c < 0x800) {
        text += static_cast<char>(0xC0 | (c >> 6));
        text += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        text += static_cast<char>(0xE0 | (c >> 12));
        text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        text += static_cast<char>(0xF0 | (c >> 18));
        text += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        text += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (c & 0x3F));
    }
}

Field fieldFor(const FormatArgument::Value& value, const Placeholder& placeholder) {
    if (auto* text = std::get_if<std::string_view>(&value)) {
        // Text never becomes a number; it is written as it is.
        std::string_view shown = *text;
        if (placeholder.precision &&
            (placeholder.conversion == 's' || placeholder.conversion == '@')) {
            shown = prefixOfCodePoints(shown, *placeholder.precision);
        }
        return {"", std::string(shown), false};
    }
    switch (placeholder.conversion) {
        case 'd':
        case 'i':
            return signedField(value, placeholder);
        case 'u':
        case 'x':
        case 'X':
        case 'o':
            return unsignedField(value, placeholder);
        case 'f':
        case 'F':
        case 'e':
        case 'E':
        case 'g':
        case 'G':
            return floatingField(value, placeholder);
        case 'c': {
            std::string text;
            if (auto* real = std::get_if<double>(&value)) {
                appendCodePoint(
                    text, static_cast<std::uint64_t>(std::max<std::int64_t>(truncated(*real), 0)));
            } else {
                appendCodePoint(text,
                                std::holds_alternative<std::int64_t>(value)
                                    ? static_cast<std::uint64_t>(std::get<std::int64_t>(value))
                                    : std::get<std::uint64_t>(value));
            }
            return {"", std::move(text), false};
        }
        default:  // '@' and 's'
            return {"", describe(value), false};
    }
}

void appendPadded(std::string& out, const Field& field, const Placeholder& placeholder) {
    const std::size_t length = codePointCount(field.sign) + codePointCount(field.body);
    const std::size_t padding = placeholder.width > length ? placeholder.width - length : 0;
    const bool integerWithPrecision =
        placeholder.precision &&
        std::string_view("diuxXo").find(placeholder.conversion) != std::string_view::npos;
    if (placeholder.leftAlign) {
        out += field.sign;
        out += field.body;
        out.append(padding, ' ');
    } else if (placeholder.zeroPad && field.numeric && !integerWithPrecision) {
        out += field.sign;
        out.append(padding, '0');
        out += field.body;
    } else {
        out.append(padding, ' ');
        out += field.sign;
        out += field.body;
    }
}

bool isConversion(char c) {
    return std::string_view("@diuxXofFeEgGcs").find(c) != std::string_view::npos;
}

}  // namespace

std::string formatString(std::string_view format, std::span<const FormatArgument> arguments) {
    std::string out;
    out.reserve(format.size() + 16 * arguments.size());
    std::size_t nextArgument = 0;
    std::size_t at = 0;
    while (at < format.size()) {
        const std::size_t percent = format.find('%', at);
        if (percent == std::string_view::npos) {
            out.append(format.substr(at));
            break;
        }
        out.append(format.substr(at, percent - at));
        at = percent + 1;
        if (at < format.size() && format[at] == '%') {
            out += '%';
            ++at;
            continue;
        }

        Placeholder placeholder;
        std::optional<std::size_t> position;
        {
            std::size_t probe = at;
            const std::size_t number = readNumber(format, probe);
            if (probe > at && probe < format.size() && format[probe] == '$' && number > 0) {
                position = number - 1;
                at = probe + 1;
            }
        }
        for (; at < format.size(); ++at) {
            const char flag = format[at];
            if (flag == '-') {
                placeholder.leftAlign = true;
            } else if (flag == '+') {
                placeholder.plus = true;
            } else if (flag == ' ') {
                placeholder.space = true;
            } else if (flag == '0') {
                placeholder.zeroPad = true;
            } else if (flag == '#') {
                placeholder.alternate = true;
            } else if (flag != '\'') {
                break;
            }
        }
        placeholder.width = readNumber(format, at);
        if (at < format.size() && format[at] == '.') {
            ++at;
            placeholder.precision = readNumber(format, at);
        }
        while (at < format.size() &&
               std::string_view("hlqLztj").find(format[at]) != std::string_view::npos) {
            ++at;
        }
        const bool known = at < format.size() && isConversion(format[at]);
        const std::size_t end = std::min(at + 1, format.size());
        const std::size_t index = position.value_or(nextArgument);
        if (!known || index >= arguments.size()) {
            out.append(format.substr(percent, end - percent));  // left as written
            at = end;
            if (known && !position) ++nextArgument;
            continue;
        }
        placeholder.conversion = format[at];
        at = end;
        if (!position) ++nextArgument;
        appendPadded(out, fieldFor(arguments[index].value(), placeholder), placeholder);
    }
    return out;
}

}  // namespace quod
