// Encoding detection over whole files of 1 and 100 MB:
//   - guessEncoding on valid UTF-8 without a declaration, with one in the first kilobyte, and on
//     a storm of "=" (its worst case for the keyword search). The UTF-8 check covers the whole
//     buffer in every case, so all three should run at about the same speed.
//   - detectEncoding on Latin-1 text (it stops at the first byte that is not UTF-8 and sends a
//     bounded sample to ICU, so its time hardly depends on the size), and on ASCII whose only
//     Latin-1 byte is the last one (the UTF-8 check then covers the whole buffer).
//   - detectEncoding on 100 MB of Russian in windows-1251: the scoring path where every byte is
//     outside ASCII and the multibyte candidates must be tried, and dismissed, before the answer.
//   - The uchardet command on the same Latin-1 text written to a file: its time per call, whether
//     its answer is the same encoding, and how many times longer it takes than detectEncoding.
// "MB/s" counts the input's bytes.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <random>
#include <string>

#include "DocumentGenerator.h"
#include "quoddle/strings/EncodingConversion.h"
#include "quoddle/strings/EncodingDetection.h"
#include "quoddle/strings/IanaCharsetNames.h"

namespace quod::bench {
namespace {

std::span<const std::uint8_t> bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// German and French prose in ISO 8859-1: words with umlauts, accents and ß, no C1 controls, so
// that the text is Latin-1 and not just any Windows code page.
const std::string& latin1Document(int64_t bytes) {
    static std::map<int64_t, std::string> documents;
    auto [entry, inserted] = documents.try_emplace(bytes);
    if (!inserted) return entry->second;
    static const char* const words[] = {"der",
                                        "die",
                                        "und",
                                        "nicht",
                                        "f\xFCr",
                                        "\xFC"
                                        "ber",
                                        "Gr\xF6\xDF"
                                        "e",
                                        "Stra\xDF"
                                        "e",
                                        "sch\xF6n",
                                        "M\xE4"
                                        "dchen",
                                        "B\xE4ume",
                                        "h\xF6ren",
                                        "k\xF6nnen",
                                        "\xC4hnlich",
                                        "K\xE4se",
                                        "Br\xFC"
                                        "cke",
                                        "wei\xDF",
                                        "le",
                                        "la",
                                        "et",
                                        "est",
                                        "\xE9t\xE9",
                                        "tr\xE8s",
                                        "fran\xE7"
                                        "ais",
                                        "gar\xE7on",
                                        "\xE9l\xE8ve",
                                        "o\xF9",
                                        "d\xE9j\xE0",
                                        "apr\xE8s",
                                        "c\xF4t\xE9",
                                        "fen\xEAtre",
                                        "h\xF4tel",
                                        "ch\xE2teau",
                                        "na\xEFve",
                                        "No\xEBl",
                                        "cr\xE8me",
                                        "p\xE8re"};
    std::string& text = entry->second;
    text.reserve(static_cast<std::size_t>(bytes) + 16);
    std::mt19937 random(1252);
    for (int count = 1; std::ssize(text) < bytes; ++count) {
        text += words[random() % std::size(words)];
        text += count % 12 == 0 ? ".\n" : " ";
    }
    return text;
}

void BM_GuessEncodingUtf8(benchmark::State& state) {
    const std::string& text = utf8Document(state.range(0) * megabyte);
    for (auto _ : state)
        benchmark::DoNotOptimize(Text::guessEncoding(bytesOf(text)));
    state.SetBytesProcessed(state.iterations() * std::ssize(text));
}
BENCHMARK(BM_GuessEncodingUtf8)->Arg(1)->Arg(100)->Unit(benchmark::kMillisecond);

void BM_GuessEncodingDeclaredUtf8(benchmark::State& state) {
    static std::map<int64_t, std::string> documents;
    std::string& text = documents[state.range(0)];
    if (text.empty()) {
        text = "<html><head><meta charset=\"utf-8\"><title>x</title></head><body>\n" +
               utf8Document(state.range(0) * megabyte);
    }
    for (auto _ : state) {
        if (Text::guessEncoding(bytesOf(text)) != Encodings::utf8) state.SkipWithError("not UTF-8");
    }
    state.SetBytesProcessed(state.iterations() * std::ssize(text));
}
BENCHMARK(BM_GuessEncodingDeclaredUtf8)->Arg(1)->Arg(100)->Unit(benchmark::kMillisecond);

void BM_GuessEncodingEqualsSigns(benchmark::State& state) {
    const std::string text(static_cast<std::size_t>(state.range(0) * megabyte), '=');
    for (auto _ : state)
        benchmark::DoNotOptimize(Text::guessEncoding(bytesOf(text)));
    state.SetBytesProcessed(state.iterations() * std::ssize(text));
}
BENCHMARK(BM_GuessEncodingEqualsSigns)->Arg(100)->Unit(benchmark::kMillisecond);

void BM_DetectEncodingLatin1(benchmark::State& state) {
    const std::string& text = latin1Document(state.range(0) * megabyte);
    for (auto _ : state) {
        if (Text::detectEncoding(bytesOf(text)) != Encodings::windowsCP1252) {
            state.SkipWithError("not detected as Latin-1");
        }
    }
    state.SetBytesProcessed(state.iterations() * std::ssize(text));
}
BENCHMARK(BM_DetectEncodingLatin1)->Arg(1)->Arg(100)->Unit(benchmark::kMillisecond);

void BM_DetectEncodingLatin1AtTheEnd(benchmark::State& state) {
    static std::map<int64_t, std::string> documents;
    std::string& text = documents[state.range(0)];
    if (text.empty()) {
        while (std::ssize(text) < state.range(0) * megabyte)
            text += "plain ASCII text, ";
        text += latin1Document(1000);
    }
    for (auto _ : state) {
        if (Text::detectEncoding(bytesOf(text)) != Encodings::windowsCP1252) {
            state.SkipWithError("not detected as Latin-1");
        }
    }
    state.SetBytesProcessed(state.iterations() * std::ssize(text));
}
BENCHMARK(BM_DetectEncodingLatin1AtTheEnd)->Arg(1)->Arg(100)->Unit(benchmark::kMillisecond);

void BM_DetectEncodingCyrillic(benchmark::State& state) {
    static std::map<int64_t, std::string> documents;
    std::string& text = documents[state.range(0)];
    // "Съешь же ещё этих мягких французских булок, да выпей чаю. " in windows-1251
    const std::string sentence =
        "\xD1\xFA\xE5\xF8\xFC \xE6\xE5 \xE5\xF9\xB8 \xFD\xF2\xE8\xF5 \xEC\xFF\xE3\xEA\xE8\xF5 "
        "\xF4\xF0\xE0\xED\xF6\xF3\xE7\xF1\xEA\xE8\xF5 \xE1\xF3\xEB\xEE\xEA, \xE4\xE0 "
        "\xE2\xFB\xEF\xE5\xE9 \xF7\xE0\xFE. ";
    while (std::ssize(text) < state.range(0) * megabyte)
        text += sentence;
    for (auto _ : state) {
        if (Text::detectEncoding(bytesOf(text)) != Encodings::windowsCP1251) {
            state.SkipWithError("not detected as windows-1251");
        }
    }
    state.SetBytesProcessed(state.iterations() * std::ssize(text));
}
BENCHMARK(BM_DetectEncodingCyrillic)->Arg(100)->Unit(benchmark::kMillisecond);

// The uchardet command over the Latin-1 document in a temporary file. Each iteration is one run of
// the command, reading the file from the page cache; detectEncoding is timed on the same bytes
// (the best of five calls) for the ratio. uchardet reads every byte, at about 2 MB/s here, so the
// largest run is 10 MB (about five seconds); at 100 MB it takes nearly a minute.
void BM_UchardetLatin1(benchmark::State& state) {
    const std::string& text = latin1Document(state.range(0) * megabyte);
    char path[] = "/tmp/quoddle-latin1-XXXXXX";
    const int descriptor = mkstemp(path);
    if (descriptor < 0) {
        state.SkipWithError("cannot create a temporary file");
        return;
    }
    close(descriptor);
    std::ofstream(path, std::ios::binary) << text;
    const std::string command = std::string("uchardet ") + path + " 2>/dev/null";

    using Clock = std::chrono::steady_clock;
    EncodingNumber detected = Encodings::none;
    double ourTime = 1e9;
    for (int call = 0; call < 5; ++call) {
        const auto start = Clock::now();
        detected = Text::detectEncoding(bytesOf(text));
        ourTime = std::min(ourTime, std::chrono::duration<double>(Clock::now() - start).count());
    }

    std::string answer;
    double theirTime = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        FILE* output = popen(command.c_str(), "r");
        char line[256] = {};
        const bool read = output != nullptr && std::fgets(line, sizeof line, output) != nullptr;
        const int status = output != nullptr ? pclose(output) : -1;
        const std::chrono::duration<double> elapsed = Clock::now() - start;
        if (!read || status != 0) {
            state.SkipWithError("uchardet failed (scripts/install-deps installs it)");
            break;
        }
        state.SetIterationTime(elapsed.count());
        theirTime += elapsed.count();
        answer = line;
        answer.erase(answer.find_last_not_of("\r\n") + 1);
    }
    std::remove(path);
    if (answer.empty()) return;
    // ISO-8859-1 and windows-1252 are the same answer for text without C1 bytes.
    const bool same = decodeText(bytesOf(text), encodingForIanaCharsetName(answer)) ==
                      decodeText(bytesOf(text), detected);
    state.SetLabel("uchardet: " + answer + (same ? " (the same encoding)" : " (DIFFERENT)"));
    state.counters["times_detectEncoding"] =
        theirTime / static_cast<double>(state.iterations()) / ourTime;
    state.SetBytesProcessed(state.iterations() * std::ssize(text));
    if (!same) state.SkipWithError("uchardet and detectEncoding disagree");
}
BENCHMARK(BM_UchardetLatin1)->Arg(1)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UchardetLatin1)
    ->Arg(10)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quod::bench
