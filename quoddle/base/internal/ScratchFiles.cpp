#include "quoddle/base/internal/ScratchFiles.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <climits>
#include <cstring>
#include <ctime>
#include <functional>
#include <memory>
#include <mutex>

#include "quoddle/base/FileDescriptor.h"
#include "quoddle/base/internal/SystemCalls.h"

namespace quod::internal {
namespace {

constexpr std::string_view marker = ".qdl-";
constexpr std::string_view suffix = ".tmp";
constexpr std::size_t longestTargetName = 160;
constexpr std::size_t hexDigits = 16;
constexpr time_t staleAfterSeconds = 60;

uint64_t randomBits() {
    uint64_t bits = 0;
    if (::getrandom(&bits, sizeof bits, GRND_NONBLOCK) == sizeof bits) return bits;
    // No entropy yet (early boot): the clock and a counter still make the name unique here,
    // and open(O_EXCL) catches the rest.
    static std::atomic<uint64_t> counter{0};
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return static_cast<uint64_t>(now) * 0x9E3779B97F4A7C15ull + counter.fetch_add(1);
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isHexDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f');
}

// The writer's process id in a scratch name, or 0.
pid_t writerOf(std::string_view name) {
    const std::size_t start = name.rfind(marker);
    if (start == std::string_view::npos) return 0;
    const char* first = name.data() + start + marker.size();
    pid_t pid = 0;
    const auto [end, error] = std::from_chars(first, name.data() + name.size(), pid);
    return error == std::errc() && *end == '-' ? pid : 0;
}

bool writerIsAlive(pid_t pid) {
    return pid > 0 && (::kill(pid, 0) == 0 || errno == EPERM);
}

bool isRecent(const struct stat& status) {
    return std::time(nullptr) - status.st_mtim.tv_sec < staleAfterSeconds;
}

// The registry: fixed slots, so that the signal handler neither allocates nor follows a pointer
// that another thread may be freeing.
enum SlotState : int { freeSlot, busySlot, filledSlot, removingSlot };

struct Slot {
    std::atomic<int> state{freeSlot};
    bool removeOnSignal = false;
    char path[PATH_MAX];
};

// Serialises registering, unregistering and looking up among threads; the signal handler takes
// no lock and relies on the slot states alone.
std::mutex registryMutex;

constexpr int slotCount = 32;
std::array<Slot, slotCount> slots;
static_assert(std::atomic<int>::is_always_lock_free, "the signal handler needs lock-free atomics");

}  // namespace

std::string scratchPath(std::string_view folder, std::string_view target) {
    const std::string_view targetName = target.substr(target.rfind('/') + 1);
    const uint64_t bits = randomBits();
    char hex[hexDigits + 1];
    for (std::size_t digit = 0; digit < hexDigits; ++digit) {
        hex[digit] = "0123456789abcdef"[(bits >> (4 * digit)) & 0xF];
    }
    hex[hexDigits] = '\0';
    std::string name(folder);
    name += "/.";
    name += targetName.substr(0, longestTargetName);
    name += marker;
    name += std::to_string(::getpid());
    name += '-';
    name += hex;
    name += suffix;
    return name;
}

bool isScratchName(std::string_view name) {
    if (name.size() < 1 + marker.size() + 1 + 1 + hexDigits + suffix.size()) return false;
    if (name.front() != '.' || !name.ends_with(suffix)) return false;
    const std::string_view hex = name.substr(name.size() - suffix.size() - hexDigits, hexDigits);
    if (!std::all_of(hex.begin(), hex.end(), isHexDigit)) return false;
    const std::size_t start = name.rfind(marker);
    if (start == std::string_view::npos) return false;
    const std::string_view pid =
        name.substr(start + marker.size(),
                    name.size() - suffix.size() - hexDigits - 1 - (start + marker.size()));
    return !pid.empty() && std::all_of(pid.begin(), pid.end(), isDigit) &&
           name[name.size() - suffix.size() - hexDigits - 1] == '-';
}

int claimStaleScratchFile(const std::string& path) {
    const int flags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    FileDescriptor file(::open(path.c_str(), O_RDWR | flags));
    if (!file.valid()) file = FileDescriptor(::open(path.c_str(), O_RDONLY | flags));
    if (!file.valid()) return -1;
    struct stat status {};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_uid != ::geteuid()) {
        return -1;
    }
    if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return -1;  // its writer is still at work
    const pid_t writer = writerOf(path);  // the last marker is the one in the file's name
    // Between creating a file and locking it, a writer holds no lock yet: a file of a live
    // process is left alone for a minute, unless that process is this one and knows the file
    // is not being made.
    const bool ours = writer == ::getpid();
    if (ours ? isRegistered(path) : writerIsAlive(writer) && isRecent(status)) return -1;
    return file.release();
}

void forEachStaleScratchFile(const std::string& folder,
                             const std::function<void(const std::string&, int)>& use) {
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(folder.c_str()), ::closedir);
    if (!listing) return;
    while (const dirent* entry = ::readdir(listing.get())) {
        if (!isScratchName(entry->d_name)) continue;
        const std::string path = folder + "/" + entry->d_name;
        const FileDescriptor stale(claimStaleScratchFile(path));
        if (stale.valid()) use(path, stale.get());
    }
}

void removeStaleScratchFiles(const std::string& folder) {
    forEachStaleScratchFile(
        folder, [](const std::string& path, int) { systemCalls().unlink(path.c_str()); });
}

int registerScratchFile(const std::string& path, bool removeOnSignal) {
    if (path.size() >= PATH_MAX) return -1;
    const std::lock_guard lock(registryMutex);
    for (int index = 0; index < slotCount; ++index) {
        int expected = freeSlot;
        if (!slots[index].state.compare_exchange_strong(expected, busySlot)) continue;
        slots[index].removeOnSignal = removeOnSignal;
        std::memcpy(slots[index].path, path.c_str(), path.size() + 1);
        slots[index].state.store(filledSlot, std::memory_order_release);
        return index;
    }
    return -1;
}

bool isRegistered(const std::string& path) {
    const std::lock_guard lock(registryMutex);
    return std::any_of(slots.begin(), slots.end(), [&](const Slot& slot) {
        return slot.state.load(std::memory_order_acquire) != freeSlot && path == slot.path;
    });
}

void unregisterScratchFile(int slot) {
    if (slot < 0 || slot >= slotCount) return;
    const std::lock_guard lock(registryMutex);
    // A handler on another thread may be unlinking this very path; it is quick, so wait for it.
    int expected = filledSlot;
    while (!slots[slot].state.compare_exchange_weak(expected, busySlot)) {
        if (expected != removingSlot && expected != filledSlot) return;  // not registered
        expected = filledSlot;
    }
    slots[slot].state.store(freeSlot, std::memory_order_release);
}

void removeRegisteredScratchFiles() noexcept {
    for (Slot& slot : slots) {
        int expected = filledSlot;
        if (!slot.removeOnSignal) continue;
        if (!slot.state.compare_exchange_strong(expected, removingSlot)) continue;
        ::unlink(slot.path);
        slot.state.store(filledSlot, std::memory_order_release);
    }
}

}  // namespace quod::internal
