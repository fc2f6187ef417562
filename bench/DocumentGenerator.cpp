#include "DocumentGenerator.h"

#include <fstream>
#include <map>
#include <random>
#include <string>

#include "quoddle/base/Utf.h"

namespace quod::bench {

const std::string& utf8Document(int64_t bytes) {
    static std::map<int64_t, std::string> documents;
    auto [entry, inserted] = documents.try_emplace(bytes);
    if (!inserted) return entry->second;
    std::string& text = entry->second;
    text.reserve(static_cast<std::size_t>(bytes + 100));
    std::mt19937 random(42);
    static const char* const endings[] = {"\n", "\n",   "\n",   "\n", "\n",
                                          "\n", "\r\n", "\r\n", "\r", "\xE2\x80\xA8"};
    int64_t lineLength = 0;
    while (std::ssize(text) < bytes) {
        const int wordLength = 2 + static_cast<int>(random() % 8);
        for (int i = 0; i < wordLength; ++i) {
            if (random() % 97 == 0) {
                text += "\xC3\xA9";  // é
            } else {
                text += static_cast<char>('a' + random() % 26);
            }
        }
        lineLength += wordLength + 1;
        if (lineLength >= 50 + static_cast<int64_t>(random() % 20)) {
            text += endings[random() % 10];
            lineLength = 0;
        } else {
            text += ' ';
        }
    }
    return text;
}

const std::u16string& utf16Document(int64_t bytes) {
    static std::map<int64_t, std::u16string> documents;
    auto [entry, inserted] = documents.try_emplace(bytes);
    if (inserted) entry->second = toUtf16(utf8Document(bytes));
    return entry->second;
}

int64_t residentBytes() {
    std::ifstream status("/proc/self/statm");
    int64_t pages = 0, resident = 0;
    status >> pages >> resident;
    return resident * 4096;
}

}  // namespace quod::bench
