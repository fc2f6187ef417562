#include "quoddle/interface/ContentTypeIcon.h"

#include <gio/gio.h>

#include <algorithm>
#include <string_view>

#include "quoddle/interface/GLibPointers.h"

namespace quod::Interface {
namespace {

using quod::internal::GObjectPointer;
using quod::internal::GString;

struct ContentType {
    GString name;
    bool folder = false;
};

ContentType contentType(const Url& url) {
    const GObjectPointer<GFile> file(g_file_new_for_path(url.path().c_str()));
    const GObjectPointer<GFileInfo> info(g_file_query_info(
        file.get(), G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE "," G_FILE_ATTRIBUTE_STANDARD_TYPE,
        G_FILE_QUERY_INFO_NONE, nullptr, nullptr));
    if (info && g_file_info_get_content_type(info.get()) != nullptr) {
        return {GString(g_strdup(g_file_info_get_content_type(info.get()))),
                g_file_info_get_file_type(info.get()) == G_FILE_TYPE_DIRECTORY};
    }
    if (url.hasDirectoryPath()) return {GString(g_strdup("inode/directory")), true};
    const std::string name = url.lastPathComponent();
    return {GString(g_content_type_guess(name.c_str(), nullptr, 0, nullptr)), false};
}

void add(std::vector<std::string>& names, std::string_view name) {
    if (!name.empty() && std::ranges::find(names, name) == names.end()) names.emplace_back(name);
}

bool isSymbolic(std::string_view name) {
    return name.ends_with("-symbolic");
}

}  // namespace

std::vector<std::string> iconNames(const Url& url) {
    std::vector<std::string> names;
    if (url.isEmpty()) {
        add(names, "application-octet-stream");
        return names;
    }
    const ContentType type = contentType(url);
    std::vector<std::string> symbolic;
    const GObjectPointer<GIcon> icon(g_content_type_get_icon(type.name.get()));
    if (icon && G_IS_THEMED_ICON(icon.get())) {
        for (const gchar* const* name = g_themed_icon_get_names(G_THEMED_ICON(icon.get()));
             name != nullptr && *name != nullptr; ++name) {
            add(isSymbolic(*name) ? symbolic : names, *name);
        }
    }
    const GString generic(g_content_type_get_generic_icon_name(type.name.get()));
    if (generic) add(names, generic.get());
    if (type.folder) {
        add(names, "folder");
    } else {
        if (g_content_type_is_a(type.name.get(), "text/plain")) add(names, "text-x-generic");
        add(names, "application-octet-stream");
    }
    // A one-colour symbolic icon only where the theme has no full-colour one at all.
    for (const std::string& name : symbolic)
        add(names, name);
    return names;
}

}  // namespace quod::Interface
