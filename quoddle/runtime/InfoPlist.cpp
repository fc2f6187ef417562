#include "quoddle/runtime/InfoPlist.h"

#include <plist/plist.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <vector>

namespace quod {
namespace {

// An Info.plist is a few kilobytes; anything past this is not one, and is not read into memory.
constexpr std::uintmax_t largestInfoPlist = 16 * 1024 * 1024;

struct PlistDeleter {
    void operator()(plist_t node) const { plist_free(node); }
};
using PlistPointer = std::unique_ptr<void, PlistDeleter>;

std::optional<std::string> stringValue(plist_t dictionary, const char* key) {
    plist_t node = plist_dict_get_item(dictionary, key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_STRING) return std::nullopt;
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    if (text == nullptr) return std::nullopt;
    return std::string(text, static_cast<std::size_t>(length));
}

}  // namespace

std::optional<InfoPlist> InfoPlist::fromPropertyList(std::span<const std::byte> data) {
    if (data.empty() || data.size() > largestInfoPlist) return std::nullopt;
    plist_t parsed = nullptr;
    plist_from_memory(reinterpret_cast<const char*>(data.data()),
                      static_cast<uint32_t>(data.size()), &parsed);
    const PlistPointer root(parsed);
    if (root == nullptr || plist_get_node_type(root.get()) != PLIST_DICT) return std::nullopt;
    auto build = stringValue(root.get(), "CFBundleVersion");
    auto executable = stringValue(root.get(), "CFBundleExecutable");
    auto version = stringValue(root.get(), "CFBundleShortVersionString");
    auto identifier = stringValue(root.get(), "CFBundleIdentifier");
    if (!build || !executable || !version || !identifier) return std::nullopt;
    return InfoPlist{std::move(*build), std::move(*executable), std::move(*version),
                     std::move(*identifier)};
}

std::optional<InfoPlist> InfoPlist::bundle(const Bundle& bundle) {
    std::error_code error;
    const std::filesystem::path path = bundle.infoPlistPath();
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error || size == 0 || size > largestInfoPlist) return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    std::vector<std::byte> data(static_cast<std::size_t>(size));
    if (!file.read(reinterpret_cast<char*>(data.data()),
                   static_cast<std::streamsize>(data.size()))) {
        return std::nullopt;
    }
    return fromPropertyList(data);
}

const std::optional<InfoPlist>& InfoPlist::main() {
    static const std::optional<InfoPlist>* const info =
        new std::optional<InfoPlist>(bundle(Bundle::main()));
    return *info;
}

}  // namespace quod
