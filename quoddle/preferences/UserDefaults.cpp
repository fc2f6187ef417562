#include "quoddle/preferences/UserDefaults.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "quoddle/base/FileDescriptor.h"
#include "quoddle/base/FileReplacement.h"
#include "quoddle/runtime/StringFormat.h"
#include "quoddle/runtime/SystemLog.h"

namespace quod {

// What the cached domain was parsed from, and the domain itself.
struct UserDefaults::FileState {
    bool loaded = false;
    bool exists = false;
    // The file was there but did not parse: `domain` is empty, not its content.
    bool damaged = false;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{};
    PlistDictionary domain;
    // The last write failed and was logged; cleared by the next one that succeeds.
    bool writeFailing = false;

    bool describes(const struct stat& status) const {
        return loaded && exists && device == status.st_dev && inode == status.st_ino &&
               size == status.st_size && modified.tv_sec == status.st_mtim.tv_sec &&
               modified.tv_nsec == status.st_mtim.tv_nsec;
    }
    void remember(const struct stat& status) {
        loaded = true;
        exists = true;
        device = status.st_dev;
        inode = status.st_ino;
        size = status.st_size;
        modified = status.st_mtim;
    }
};

namespace {

// The whole content of an open file, or no value on a read error.
std::optional<std::string> readAll(int descriptor, std::size_t sizeHint) {
    std::string bytes;
    bytes.reserve(std::min(sizeHint, maximumPropertyListBytes) + 1);
    char chunk[65536];
    for (;;) {
        const ssize_t count = ::read(descriptor, chunk, sizeof chunk);
        if (count == 0) return bytes;
        if (count < 0) {
            if (errno == EINTR) continue;
            return std::nullopt;
        }
        bytes.append(chunk, static_cast<std::size_t>(count));
        if (bytes.size() > maximumPropertyListBytes) return bytes;  // refused by the parser
    }
}

enum class Parsed { absent, dictionary, damaged };

// Reads and parses the file; fills `status` with what was read.
Parsed loadDomain(const std::filesystem::path& file, PlistDictionary& domain, struct stat& status) {
    domain.clear();
    const FileDescriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!descriptor.valid() || ::fstat(descriptor.get(), &status) != 0) return Parsed::absent;
    const auto bytes = readAll(descriptor.get(), static_cast<std::size_t>(status.st_size));
    if (!bytes) return Parsed::damaged;
    if (bytes->empty()) return Parsed::absent;
    const auto value = parsePropertyList(*bytes);
    const PlistDictionary* dictionary = value ? value->as<PlistDictionary>() : nullptr;
    if (dictionary == nullptr) return Parsed::damaged;
    domain = *dictionary;
    return Parsed::dictionary;
}

// NSString's boolValue: leading whitespace, then Y/y/T/t, or an optional sign, zeros and a digit
// 1-9.
bool stringBoolValue(std::string_view text) {
    std::size_t i = text.find_first_not_of(" \t\n\r\v\f");
    if (i == std::string_view::npos) return false;
    const char first = text[i];
    if (first == 'Y' || first == 'y' || first == 'T' || first == 't') return true;
    if (first == '+' || first == '-') ++i;
    while (i < text.size() && text[i] == '0')
        ++i;
    return i < text.size() && text[i] >= '1' && text[i] <= '9';
}

// NSString's integerValue: decimal, leading whitespace, optional sign, stops at a non-digit,
// saturates.
int64_t stringIntegerValue(std::string_view text) {
    std::size_t i = text.find_first_not_of(" \t\n\r\v\f");
    if (i == std::string_view::npos) return 0;
    bool negative = false;
    if (text[i] == '+' || text[i] == '-') negative = text[i++] == '-';
    uint64_t magnitude = 0;
    bool saturated = false;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        if (magnitude > (uint64_t{1} << 63) / 10) saturated = true;
        magnitude = magnitude * 10 + static_cast<uint64_t>(text[i] - '0');
        if (magnitude > (uint64_t{1} << 63)) saturated = true;
    }
    if (saturated) return negative ? INT64_MIN : INT64_MAX;
    if (negative)
        return magnitude == (uint64_t{1} << 63) ? INT64_MIN : -static_cast<int64_t>(magnitude);
    return magnitude > uint64_t(INT64_MAX) ? INT64_MAX : static_cast<int64_t>(magnitude);
}

// NSString's doubleValue: leading whitespace, then the longest C-locale decimal number.
double stringDoubleValue(std::string_view text) {
    std::size_t i = text.find_first_not_of(" \t\n\r\v\f");
    if (i == std::string_view::npos) return 0;
    bool negative = false;
    if (text[i] == '+' || text[i] == '-') negative = text[i++] == '-';
    double value = 0;
    const auto result = std::from_chars(text.data() + i, text.data() + text.size(), value,
                                        std::chars_format::general);
    if (result.ec != std::errc()) return 0;
    return negative ? -value : value;
}

int64_t truncatedInteger(double value) {
    if (std::isnan(value)) return 0;
    if (value >= 9.2233720368547758e18) return INT64_MAX;
    if (value <= -9.2233720368547758e18) return INT64_MIN;
    return static_cast<int64_t>(value);
}

std::filesystem::path configurationHome() {
    if (const char* configured = std::getenv("XDG_CONFIG_HOME"); configured && *configured == '/') {
        return configured;
    }
    const char* home = std::getenv("HOME");
    return std::filesystem::path(home && *home ? home : "/tmp") / ".config";
}

std::string executableName() {
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string("quoddle") : executable.filename().string();
}

struct StandardStore {
    std::mutex mutex;
    std::shared_ptr<UserDefaults> store;
    std::string domain;
};

StandardStore& standardStore() {
    static StandardStore* shared = new StandardStore;
    return *shared;
}

}  // namespace

UserDefaults::UserDefaults(std::filesystem::path file)
    : file_(std::move(file)), state_(std::make_unique<FileState>()) {}

UserDefaults::~UserDefaults() = default;

std::shared_ptr<UserDefaults> UserDefaults::persistent(std::filesystem::path file) {
    return std::shared_ptr<UserDefaults>(new UserDefaults(std::move(file)));
}

std::shared_ptr<UserDefaults> UserDefaults::inMemory() {
    return std::shared_ptr<UserDefaults>(new UserDefaults({}));
}

std::shared_ptr<UserDefaults> UserDefaults::standard() {
    StandardStore& shared = standardStore();
    std::lock_guard lock(shared.mutex);
    if (!shared.store) {
        const std::string domain = shared.domain.empty() ? executableName() : shared.domain;
        shared.store = persistent(configurationHome() / (domain + ".plist"));
    }
    return shared.store;
}

void UserDefaults::setStandard(std::shared_ptr<UserDefaults> store) {
    StandardStore& shared = standardStore();
    std::lock_guard lock(shared.mutex);
    shared.store = std::move(store);
}

void UserDefaults::setStandardDomain(std::string domain) {
    StandardStore& shared = standardStore();
    std::lock_guard lock(shared.mutex);
    shared.domain = std::move(domain);
    shared.store.reset();
}

const PlistDictionary& UserDefaults::currentDomain() const {
    if (file_.empty()) return state_->domain;
    struct stat status {};
    if (::stat(file_.c_str(), &status) != 0) {
        // No file (yet, or any more): an empty domain.
        state_->domain.clear();
        state_->loaded = true;
        state_->exists = false;
        return state_->domain;
    }
    if (state_->describes(status)) return state_->domain;
    struct stat read {};
    const Parsed parsed = loadDomain(file_, state_->domain, read);
    if (parsed == Parsed::absent) {
        state_->exists = false;
        state_->loaded = true;
    } else {
        state_->remember(read);
    }
    state_->damaged = parsed == Parsed::damaged;
    return state_->domain;
}

std::optional<PlistValue> UserDefaults::objectForKey(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const PlistDictionary& domain = currentDomain();
    if (auto found = domain.find(key); found != domain.end()) return found->second;
    if (auto found = registered_.find(key); found != registered_.end()) return found->second;
    return std::nullopt;
}

bool UserDefaults::boolForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    if (!value) return false;
    if (const bool* flag = value->as<bool>()) return *flag;
    if (const int64_t* integer = value->as<int64_t>()) return *integer != 0;
    if (const double* real = value->as<double>()) return *real != 0;
    if (const std::string* text = value->as<std::string>()) return stringBoolValue(*text);
    return false;
}

int64_t UserDefaults::integerForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    if (!value) return 0;
    if (const bool* flag = value->as<bool>()) return *flag ? 1 : 0;
    if (const int64_t* integer = value->as<int64_t>()) return *integer;
    if (const double* real = value->as<double>()) return truncatedInteger(*real);
    if (const std::string* text = value->as<std::string>()) return stringIntegerValue(*text);
    return 0;
}

double UserDefaults::doubleForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    if (!value) return 0;
    if (const bool* flag = value->as<bool>()) return *flag ? 1 : 0;
    if (const int64_t* integer = value->as<int64_t>()) return static_cast<double>(*integer);
    if (const double* real = value->as<double>()) return *real;
    if (const std::string* text = value->as<std::string>()) return stringDoubleValue(*text);
    return 0;
}

float UserDefaults::floatForKey(std::string_view key) const {
    return static_cast<float>(doubleForKey(key));
}

std::optional<std::string> UserDefaults::stringForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    if (!value) return std::nullopt;
    if (const std::string* text = value->as<std::string>()) return *text;
    if (const bool* flag = value->as<bool>()) return *flag ? "1" : "0";
    if (const int64_t* integer = value->as<int64_t>()) return std::to_string(*integer);
    if (const double* real = value->as<double>()) {
        char text[64];
        std::snprintf(text, sizeof text, "%.16g", *real);
        return std::string(text);
    }
    return std::nullopt;
}

std::optional<PlistArray> UserDefaults::arrayForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    if (!value || !value->as<PlistArray>()) return std::nullopt;
    return *value->as<PlistArray>();
}

std::optional<PlistDictionary> UserDefaults::dictionaryForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    if (!value || !value->as<PlistDictionary>()) return std::nullopt;
    return *value->as<PlistDictionary>();
}

std::optional<Data> UserDefaults::dataForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    if (!value || !value->as<Data>()) return std::nullopt;
    return *value->as<Data>();
}

void UserDefaults::registerDefaults(const PlistDictionary& defaults) {
    std::lock_guard lock(mutex_);
    for (const auto& [key, value] : defaults)
        registered_.insert_or_assign(key, value);
}

PlistDictionary UserDefaults::persistentDomain() const {
    std::lock_guard lock(mutex_);
    return currentDomain();
}

bool UserDefaults::setObject(std::string_view key, std::optional<PlistValue> value) {
    return modifyDomain([&](PlistDictionary& domain) {
        if (value) {
            auto found = domain.find(key);
            if (found != domain.end() && found->second == *value) return false;
            domain.insert_or_assign(std::string(key), std::move(*value));
            return true;
        }
        return domain.erase(std::string(key)) > 0;
    });
}

bool UserDefaults::setObjects(const PlistDictionary& values) {
    return modifyDomain([&](PlistDictionary& domain) {
        bool changed = false;
        for (const auto& [key, value] : values) {
            auto found = domain.find(key);
            if (found != domain.end() && found->second == value) continue;
            domain.insert_or_assign(key, value);
            changed = true;
        }
        return changed;
    });
}

bool UserDefaults::modifyDomain(const std::function<bool(PlistDictionary&)>& apply) {
    std::lock_guard lock(mutex_);
    if (file_.empty()) {
        apply(state_->domain);
        return true;
    }

    std::error_code error;
    std::filesystem::create_directories(file_.parent_path(), error);
    // The lock lives in a file of its own: the store's file is replaced by every write, and a lock
    // on a replaced file would guard nothing. The kernel drops it if this process dies.
    const std::filesystem::path lockPath = file_.string() + ".lock";
    const FileDescriptor lockFile(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lockFile.valid())
        return writeFailed(lockPath, std::error_code(errno, std::system_category()));
    while (::flock(lockFile.get(), LOCK_EX) != 0) {
        if (errno != EINTR)
            return writeFailed(lockPath, std::error_code(errno, std::system_category()));
    }

    // Another process may have written since we last looked: start from what is on disk now,
    // parsing it again only if it is not the file we last read or wrote.
    PlistDictionary domain;
    struct stat read {};
    Parsed parsed;
    if (::stat(file_.c_str(), &read) == 0 && state_->describes(read) && !state_->damaged) {
        domain = state_->domain;
        parsed = Parsed::dictionary;
    } else {
        parsed = loadDomain(file_, domain, read);
    }
    if (!apply(domain)) {
        if (parsed == Parsed::dictionary) {
            state_->domain = std::move(domain);
            state_->remember(read);
            state_->damaged = false;
        }
        return true;
    }
    if (parsed == Parsed::damaged) {
        // Never destroy what we cannot read: keep it beside, under a name no later damage reuses.
        const auto stamp = std::chrono::system_clock::now().time_since_epoch().count();
        const std::filesystem::path backup = file_.string() + ".corrupt-" + std::to_string(stamp);
        std::filesystem::rename(file_, backup, error);
        std::fprintf(stderr, "Preferences file %s could not be read; kept as %s\n", file_.c_str(),
                     backup.c_str());
    }

    // Written as every file the framework writes: private until complete, then renamed over the
    // old one (or, for a store kept behind a hard link, overwritten after a backup).
    const std::string bytes = xmlPropertyList(PlistValue(domain));
    auto replacement =
        FileReplacement::replacing(file_, FileReplacement::NewFilePermissions::ownerOnly, &error);
    struct stat written {};
    if (!replacement ||
        !replacement->write(
            std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), &error) ||
        !replacement->commit(&error)) {
        return writeFailed(file_, error);
    }
    state_->writeFailing = false;
    if (::stat(file_.c_str(), &written) != 0) {
        state_->loaded = false;  // read again next time
        return true;
    }
    state_->domain = std::move(domain);
    state_->remember(written);
    state_->damaged = false;
    return true;
}

bool UserDefaults::writeFailed(const std::filesystem::path& file, std::error_code reason) const {
    // One line per outage, not one per setting tried while the disk stays full.
    if (!std::exchange(state_->writeFailing, true)) {
        systemLog(
            formatString("File manager error: %@", {file.string() + ": " + reason.message()}));
    }
    return false;
}

}  // namespace quod
