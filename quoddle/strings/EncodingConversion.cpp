#include "quoddle/strings/EncodingConversion.h"

#include <unicode/ucnv.h>

#include <bit>
#include <memory>

#include "quoddle/base/Utf.h"
#include "quoddle/strings/EncodingTables.h"

namespace quod {
namespace {

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using ConverterHandle = std::unique_ptr<UConverter, ConverterCloser>;

constexpr char16_t byteOrderMark = 0xFEFF;
constexpr bool littleEndianMachine = std::endian::native == std::endian::little;

std::string_view converterName(EncodingNumber encoding) {
    const auto* row = internal::findNamedEncoding(encoding);
    return row != nullptr ? row->icuConverter : std::string_view{};
}

// A converter that stops at the first byte sequence or character it cannot convert, instead of
// substituting; or null when ICU has no such converter.
ConverterHandle openConverter(std::string_view name) {
    if (name.empty()) return nullptr;
    UErrorCode status = U_ZERO_ERROR;
    ConverterHandle converter(ucnv_open(std::string(name).c_str(), &status));
    if (U_FAILURE(status)) return nullptr;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &status);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                          &status);
    if (U_FAILURE(status)) return nullptr;
    return converter;
}

// Whether decoding leaves a leading mark in the text that the caller must drop. The converters of
// the byte-order-neutral forms read the mark themselves.
bool keepsByteOrderMark(EncodingNumber encoding) {
    return encoding == Encodings::utf8 || encoding == Encodings::utf16BigEndian ||
           encoding == Encodings::utf16LittleEndian || encoding == Encodings::utf32BigEndian ||
           encoding == Encodings::utf32LittleEndian;
}

std::optional<std::u16string> decodeWith(UConverter* converter,
                                         std::span<const std::uint8_t> bytes) {
    // One unit per byte is enough for all but a few encodings; those grow the buffer.
    std::u16string text(bytes.size() + 16, u'\0');
    const char* source = reinterpret_cast<const char*>(bytes.data());
    const char* const sourceLimit = source + bytes.size();
    std::size_t written = 0;
    while (true) {
        UChar* target = text.data() + written;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_toUnicode(converter, &target, text.data() + text.size(), &source, sourceLimit, nullptr,
                       true, &status);
        written = static_cast<std::size_t>(target - text.data());
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            text.resize(text.size() * 2);
            continue;
        }
        if (U_FAILURE(status)) return std::nullopt;
        break;
    }
    text.resize(written);
    return text;
}

std::optional<Data> encodeWith(UConverter* converter, std::u16string_view text, Data bytes) {
    std::size_t written = bytes.size();
    bytes.resize(written + text.size() + 16);
    const UChar* source = text.data();
    const UChar* const sourceLimit = source + text.size();
    while (true) {
        char* const start = reinterpret_cast<char*>(bytes.data());
        char* target = start + written;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_fromUnicode(converter, &target, start + bytes.size(), &source, sourceLimit, nullptr,
                         true, &status);
        written = static_cast<std::size_t>(target - start);
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            bytes.resize(bytes.size() * 2);
            continue;
        }
        if (U_FAILURE(status)) return std::nullopt;
        break;
    }
    bytes.resize(written);
    return bytes;
}

}  // namespace

bool isConvertible(EncodingNumber encoding) {
    return encoding == Encodings::utf8 || openConverter(converterName(encoding)) != nullptr;
}

std::optional<std::u16string> decodeText(std::span<const std::uint8_t> bytes,
                                         EncodingNumber encoding) {
    std::optional<std::u16string> text;
    if (encoding == Encodings::utf8) {
        // The framework's own decoder is several times faster than a converter.
        const std::string_view utf8(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        text = toUtf16IfValid(utf8);
    } else if (const ConverterHandle converter = openConverter(converterName(encoding))) {
        text = decodeWith(converter.get(), bytes);
    }
    if (text && keepsByteOrderMark(encoding) && text->starts_with(byteOrderMark)) {
        text->erase(0, 1);
    }
    return text;
}

std::optional<Data> encodeText(std::u16string_view text, EncodingNumber encoding) {
    // The byte-order-neutral forms are written the way the platform writes them: a mark, then this
    // machine's byte order. ICU's own converters for them would write big-endian.
    Data mark;
    std::string_view name = converterName(encoding);
    if (encoding == Encodings::utf16) {
        name = littleEndianMachine ? "UTF-16LE" : "UTF-16BE";
        mark = littleEndianMachine ? Data{0xFF, 0xFE} : Data{0xFE, 0xFF};
    } else if (encoding == Encodings::utf32) {
        name = littleEndianMachine ? "UTF-32LE" : "UTF-32BE";
        mark = littleEndianMachine ? Data{0xFF, 0xFE, 0, 0} : Data{0, 0, 0xFE, 0xFF};
    }
    const ConverterHandle converter = openConverter(name);
    if (converter == nullptr) return std::nullopt;
    return encodeWith(converter.get(), text, std::move(mark));
}

}  // namespace quod
