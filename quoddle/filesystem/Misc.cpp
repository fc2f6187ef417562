#include "quoddle/filesystem/Misc.h"

#include <algorithm>
#include <cstdlib>
#include <unordered_set>
#include <vector>

#include "quoddle/filesystem/FileManager.h"

namespace quod {
namespace {

void appendPieces(std::vector<std::string>& entries, std::string_view text, char separator) {
    for (;;) {
        const std::size_t end = text.find(separator);
        entries.emplace_back(text.substr(0, end));
        if (end == std::string_view::npos) return;
        text.remove_prefix(end + 1);
    }
}

void appendLinesOfFile(std::vector<std::string>& entries, const Url& file) {
    if (const auto text = FileManager::textContents(file)) appendPieces(entries, *text, '\n');
}

}  // namespace

namespace internal {

std::string assembleSearchPath(const Url& pathsFile, const Url& pathsFolder,
                               std::optional<std::string_view> pathVariable) {
    std::vector<std::string> entries;
    appendLinesOfFile(entries, pathsFile);
    if (const auto files = FileManager::contentsOfDirectory(
            pathsFolder, DirectoryEnumerationOptions::skipsHiddenFiles)) {
        for (const Url& file : *files)
            appendLinesOfFile(entries, file);
    }
    if (pathVariable) appendPieces(entries, *pathVariable, ':');
    entries.emplace_back("/usr/local/bin");
    entries.emplace_back("/usr/local/sbin");

    std::unordered_set<std::string_view> seen;
    std::string path;
    for (const std::string& entry : entries) {
        if (!seen.insert(entry).second || !entry.starts_with('/')) continue;
        if (!path.empty()) path += ':';
        path += entry;
    }
    std::erase(path, '\n');
    return path;
}

}  // namespace internal

const std::string& Misc::defaultPATH() {
    static const std::string value = [] {
        const char* variable = std::getenv("PATH");
        return internal::assembleSearchPath(
            Url::fileURL("/private/etc/paths", false), Url::fileURL("/private/etc/paths.d/"),
            variable ? std::optional<std::string_view>(variable) : std::nullopt);
    }();
    return value;
}

}  // namespace quod
