// The defaults store: named settings of an application, persisted as a property-list file.
//
// A store has two domains, searched in order: the persistent domain (a dictionary kept in the
// store's file, or only in memory for an in-memory store) and the registration domain (values a
// host registers with `registerDefaults`; never written anywhere).
//
// File-backed stores never cache across changes on disk: every read checks the file (inode, size,
// nanosecond modification time) and parses it again only when it changed, so another process's
// write is seen at once. Every write locks the file's companion lock with flock (the kernel drops
// it if the writer dies), reads the file again, applies the change and replaces the file through
// FileReplacement (a new store file is made with mode 0600): concurrent writers lose no update,
// a crash never leaves a torn file or a readable copy, and a symbolic link to the store stays one.
// A write that changes nothing does not touch the file. A file that exists but does not parse reads
// as an empty domain and is kept beside as
// "<file>.corrupt" before the first write replaces it, with one line in the log.
//
// Typed getters coerce as the platform does (a stored string "YES" reads as true, 2.67 reads as
// integer 2, 42 reads as string "42"); a value of another kind reads as the type's absent answer:
// false, 0, 0.0 or no value. All members are thread-safe.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "quoddle/Export.h"
#include "quoddle/preferences/PropertyList.h"

namespace quod {

class QUODDLE_EXPORT UserDefaults {
  public:
    // A store kept in `file` (created on the first write, with its folder).
    [[nodiscard]] static std::shared_ptr<UserDefaults> persistent(std::filesystem::path file);
    // A store that lives only in this process, for tests and hosts that persist nothing.
    [[nodiscard]] static std::shared_ptr<UserDefaults> inMemory();

    // The process-wide store the typed preference accessors use. By default the file
    // "$XDG_CONFIG_HOME/<domain>.plist" (XDG_CONFIG_HOME defaults to ~/.config), where the domain
    // is what `setStandardDomain` named, else the executable's file name.
    [[nodiscard]] static std::shared_ptr<UserDefaults> standard();
    static void setStandard(std::shared_ptr<UserDefaults> store);
    static void setStandardDomain(std::string domain);

    [[nodiscard]] std::optional<PlistValue> objectForKey(std::string_view key) const;
    [[nodiscard]] bool boolForKey(std::string_view key) const;
    [[nodiscard]] int64_t integerForKey(std::string_view key) const;
    [[nodiscard]] float floatForKey(std::string_view key) const;
    [[nodiscard]] double doubleForKey(std::string_view key) const;
    [[nodiscard]] std::optional<std::string> stringForKey(std::string_view key) const;
    [[nodiscard]] std::optional<PlistArray> arrayForKey(std::string_view key) const;
    [[nodiscard]] std::optional<PlistDictionary> dictionaryForKey(std::string_view key) const;
    [[nodiscard]] std::optional<Data> dataForKey(std::string_view key) const;

    // Stores the value; no value removes the key. False when the file could not be written (a
    // full disk, a read-only file): the store then stays as it was, and the failure is logged
    // once ("File manager error: <file>: <reason>") until a write succeeds again.
    bool setObject(std::string_view key, std::optional<PlistValue> value);
    bool setBool(std::string_view key, bool value) { return setObject(key, PlistValue(value)); }
    bool setInteger(std::string_view key, int64_t value) {
        return setObject(key, PlistValue(value));
    }
    bool setFloat(std::string_view key, float value) {
        return setObject(key, PlistValue(double{value}));
    }
    bool setDouble(std::string_view key, double value) { return setObject(key, PlistValue(value)); }
    bool removeObject(std::string_view key) { return setObject(key, std::nullopt); }
    // Stores every entry of `values` in one write (one lock, one file replaced), as applying a
    // theme's seventeen entries wants; other processes see all of them or none.
    bool setObjects(const PlistDictionary& values);

    void registerDefaults(const PlistDictionary& defaults);

    // The persistent domain as it is now.
    [[nodiscard]] PlistDictionary persistentDomain() const;

    // The file behind a persistent store; empty for an in-memory one.
    [[nodiscard]] const std::filesystem::path& file() const { return file_; }

    ~UserDefaults();
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

  private:
    struct FileState;
    explicit UserDefaults(std::filesystem::path file);

    // The persistent domain, refreshed from the file when it changed. Caller holds mutex_.
    const PlistDictionary& currentDomain() const;
    // Runs `change` on the persistent domain as it is now and, if it says it changed something,
    // keeps the result (for a file-backed store: locked, re-read and replaced). False when the
    // file could not be written.
    bool modifyDomain(const std::function<bool(PlistDictionary&)>& change);
    // Logs a failed write unless the one before failed too; false.
    bool writeFailed(const std::filesystem::path& file, std::error_code reason) const;

    std::filesystem::path file_;
    mutable std::mutex mutex_;
    mutable std::unique_ptr<FileState> state_;
    PlistDictionary registered_;
};

}  // namespace quod
