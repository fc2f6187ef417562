// The identity and version of an application bundle, from its Info.plist.
//
// All four fields are required strings: "CFBundleVersion" (build), "CFBundleExecutable",
// "CFBundleShortVersionString" (version) and "CFBundleIdentifier". If the property list is
// missing, unreadable, not a dictionary, or lacks any of the four keys, or has one that is not a
// string (a build number stored as an integer, say), the result is no value: never a record with
// an empty field. Other keys are ignored. XML and binary property lists are both read.
//
//     if (auto info = InfoPlist::main()) about.setVersion(info->version + " (" + info->build +
//     ")");
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "quoddle/Export.h"
#include "quoddle/runtime/Bundle.h"

namespace quod {

struct QUODDLE_EXPORT InfoPlist {
    std::string build;
    std::string executable;
    std::string version;
    std::string identifier;

    // Reads the bundle's Info.plist now.
    [[nodiscard]] static std::optional<InfoPlist> bundle(const Bundle& bundle);

    // Of Bundle::main(), read on first use and kept: the version that is running.
    [[nodiscard]] static const std::optional<InfoPlist>& main();

    // From the bytes of a property list, XML or binary.
    [[nodiscard]] static std::optional<InfoPlist> fromPropertyList(std::span<const std::byte> data);

    friend bool operator==(const InfoPlist&, const InfoPlist&) = default;
};

}  // namespace quod
