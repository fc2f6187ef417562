#include "Streaming.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <span>

#include "quoddle/text/DecodedText.h"

namespace quod::tool {
namespace {

// Large enough that per-window costs vanish, small enough that a window, its UTF-16 form and its
// result stay a small part of a large file. QUOD_TEST_WINDOW_BYTES sets it for the tests that cut
// the text everywhere; 0 there turns streaming off, for comparing with the whole-text way.
std::size_t windowBytes() {
    static const std::size_t bytes = [] {
        const char* set = std::getenv("QUOD_TEST_WINDOW_BYTES");
        return set != nullptr ? static_cast<std::size_t>(std::strtoull(set, nullptr, 10))
                              : std::size_t{2} << 20;
    }();
    return bytes;
}

bool isContinuation(std::uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

// Where a window that would end at `end` ends: at or before it when a cut fits there, else at the
// first place after it.
std::size_t cutAt(std::span<const std::uint8_t> bytes, std::size_t start, std::size_t end,
                  PieceRewrite::Cut cut) {
    if (end >= bytes.size()) return bytes.size();
    switch (cut) {
        case PieceRewrite::Cut::anywhere:
            return end;
        case PieceRewrite::Cut::characterStart: {
            std::size_t at = end;
            while (at > start && isContinuation(bytes[at]))
                --at;
            if (at > start) return at;
            while (end < bytes.size() && isContinuation(bytes[end]))
                ++end;
            return end;
        }
        case PieceRewrite::Cut::afterLineFeed: {
            const auto* first = bytes.data() + start;
            if (const void* found = ::memrchr(first, '\n', end - start)) {
                return static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) -
                                                bytes.data()) +
                       1;
            }
            const void* next = std::memchr(bytes.data() + end, '\n', bytes.size() - end);
            return next == nullptr ? bytes.size()
                                   : static_cast<std::size_t>(
                                         static_cast<const std::uint8_t*>(next) - bytes.data()) +
                                         1;
        }
    }
    return end;
}

// Calls visit(window) for consecutive windows of bytes[start, end), then lets each one's memory
// go; reports how far it got to `progress`.
void forEachWindow(const InputBytes& input, std::size_t start, PieceRewrite::Cut cut,
                   Progress& progress,
                   const std::function<void(std::span<const std::uint8_t>)>& visit,
                   bool letGo = true) {
    const auto bytes = input.bytes();
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    std::size_t released = 0;  // on a page border: everything before it has been let go
    for (std::size_t at = start; at < bytes.size();) {
        const std::size_t end = cutAt(bytes, at, at + windowBytes(), cut);
        input.prefetch(at, end - at);
        visit(bytes.subspan(at, end - at));
        at = end;
        if (letGo) {
            input.release(released, at - released);
            released = at / page * page;
        }
        progress.advance(at, bytes.size());
    }
}

}  // namespace

Text::EncodingScan scanInWindows(const InputBytes& input, Progress& progress, bool letGo) {
    progress.stage("reading");
    Text::EncodingScan scan;
    forEachWindow(
        input, 0, PieceRewrite::Cut::anywhere, progress,
        [&scan](std::span<const std::uint8_t> window) { scan.append(window); }, letGo);
    return scan;
}

bool runInWindows(const InputBytes& input, PieceRewrite& rewrite, bool isReport, Output& output,
                  Progress& progress) {
    if (windowBytes() == 0) return false;
    const auto encoding = settledUtf8Encoding(scanInWindows(input, progress));
    if (!encoding) return false;

    if (!isReport) output.write(encoding->byteOrderMark);
    progress.stage(isReport ? "counting" : "writing");
    std::string out;
    forEachWindow(
        input, encoding->byteOrderMark.size(), rewrite.cut(), progress,
        [&](std::span<const std::uint8_t> window) {
            out.clear();
            rewrite.rewrite({reinterpret_cast<const char*>(window.data()), window.size()}, out);
            output.write(out);
        });
    out.clear();
    rewrite.finish(out);
    output.write(out);
    return true;
}

bool runOnWholeUtf8(const InputBytes& input, const WholeRewrite& rewrite, Output& output,
                    Progress& progress) {
    if (windowBytes() == 0) return false;
    // The rewrite reads all of the text again, so its pages stay.
    const auto encoding = settledUtf8Encoding(scanInWindows(input, progress, false));
    if (!encoding) return false;
    output.write(encoding->byteOrderMark);
    const auto bytes = input.bytes().subspan(encoding->byteOrderMark.size());
    progress.stage("working");
    rewrite({reinterpret_cast<const char*>(bytes.data()), bytes.size()},
            [&output](std::string_view piece) { output.write(piece); });
    return true;
}

}  // namespace quod::tool
