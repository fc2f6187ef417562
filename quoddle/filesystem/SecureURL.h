// A file or folder the user chose, kept across launches as a bookmark in the user defaults.
//
// `saveBookmark(key)` stores the bookmark of `url()` under a key the caller picks (the value is
// the raw bookmark bytes, a data value, nothing else); `fromKey(key)` turns it back into a
// `SecureURL` in a later run. Restoring opens the access scope of the location; destroying the
// object closes it, exactly once, and only if this object opened it. A `SecureURL` made from a
// plain URL opens nothing and so closes nothing. Keep the object alive while the file is in use.
//
// Linux has no sandbox scopes, so the bookmark is a small self-describing record of the path,
//
//   "QDLB"  version (1)  flags (bit 0: a directory URL)  path length (4 bytes, little-endian)  path
//
// opening the scope always succeeds and closing it changes nothing; the structure stays so that a
// host with a real sandbox can fill it in. The path bytes are kept as they are (a file name that
// is not UTF-8 survives). A record with another magic or version, unknown flags, a length that
// does not match its size, or a path that is empty, relative, longer than PATH_MAX - 1 or holds
// a NUL does not resolve. Resolution never reports a bookmark as stale (the path is the whole
// record), so a restore never rewrites the stored entry.
//
// Failure is quiet. `fromKey` and `fromData` give no value when there is nothing to restore; a
// broken entry (not data, or data that does not resolve) is removed from the defaults on the way
// so it is not tried again, while a missing entry leaves the defaults untouched. A bookmark can be
// made only of a URL whose path is absolute, at most PATH_MAX - 1 bytes, free of NUL and names
// something that exists now (links followed); `saveBookmark` of any other URL stores nothing,
// leaves the old value in place and writes "Couldn't save secure bookmark to defaults" to the
// system log.
//
// All defaults go through `UserDefaults::standard()`. Objects are move-only: the moved-to object
// takes over the open scope, so it is still closed once.
//
//   SecureURL(Url::fileURL(chosenPath)).saveBookmark("LastFolder");
//   // a later run:
//   if (auto folder = SecureURL::fromKey("LastFolder")) open(folder->url());
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "quoddle/Export.h"
#include "quoddle/filesystem/Url.h"
#include "quoddle/strings/Data.h"

namespace quod {

class QUODDLE_EXPORT SecureURL {
  public:
    explicit SecureURL(Url url) : url_(std::move(url)) {}

    // The reference stored under `key` in the standard defaults, scope opened; see above for what
    // happens to a missing or broken entry.
    [[nodiscard]] static std::optional<SecureURL> fromKey(std::string_view key);
    // The reference a bookmark in hand stands for, scope opened; no value if it does not resolve.
    [[nodiscard]] static std::optional<SecureURL> fromData(std::span<const uint8_t> data);

    [[nodiscard]] const Url& url() const { return url_; }

    // A fresh bookmark of `url()`; no value when one cannot be made of it.
    [[nodiscard]] std::optional<Data> bookmark() const;
    // Stores `bookmark()` under `key`, replacing what was there; logs when there is none.
    void saveBookmark(std::string_view key) const;

    SecureURL(SecureURL&& other) noexcept;
    SecureURL& operator=(SecureURL&& other) noexcept;
    SecureURL(const SecureURL&) = delete;
    SecureURL& operator=(const SecureURL&) = delete;
    ~SecureURL();

  private:
    void stopAccessing();

    bool hasStartedAccessing_ = false;
    Url url_;
};

namespace internal {

// How many access scopes SecureURL objects have closed in this process.
[[nodiscard]] int closedSecurityScopeCount();

}  // namespace internal
}  // namespace quod
