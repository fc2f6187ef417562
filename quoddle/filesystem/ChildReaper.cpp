#include "quoddle/filesystem/ChildReaper.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace quod::internal {
namespace {

constexpr int pollingInterval = 50;  // milliseconds, for children we cannot be told about

class ChildReaper {
  public:
    ChildReaper() : wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

    void adopt(pid_t pid, FileDescriptor processHandle) {
        std::lock_guard lock(mutex_);
        children_.push_back({pid, std::move(processHandle)});
        startThread();
        if (wake_.valid()) ::eventfd_write(wake_.get(), 1);
    }

  private:
    struct Child {
        pid_t pid;
        FileDescriptor handle;
    };

    // Under mutex_. Without a thread the children wait in the list, and the next adoption tries
    // again: thread creation fails only when the system is out of resources.
    //
    // The thread is born with every signal blocked, so the host's signals keep going to the host's
    // own threads; a host that takes its signals with sigwait or signalfd relies on that.
    void startThread() {
        if (threadStarted_) return;
        sigset_t all;
        sigset_t previous;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &previous);
        try {
            std::thread([this] { run(); }).detach();
            threadStarted_ = true;
        } catch (const std::system_error&) {
        }
        ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    }

    [[noreturn]] void run() {
        std::vector<pollfd> polled;
        for (;;) {
            bool mustPoll = !wake_.valid();
            polled.clear();
            if (wake_.valid()) polled.push_back({wake_.get(), POLLIN, 0});
            {
                // Only this thread closes handles, so they stay valid while it polls unlocked.
                std::lock_guard lock(mutex_);
                for (const Child& child : children_) {
                    if (child.handle.valid())
                        polled.push_back({child.handle.get(), POLLIN, 0});
                    else
                        mustPoll = true;
                }
            }
            // EINTR and the rare failure alike just lead to another look at every child.
            (void)::poll(polled.data(), polled.size(), mustPoll ? pollingInterval : -1);
            if (wake_.valid()) {
                eventfd_t ignored = 0;
                (void)::eventfd_read(wake_.get(), &ignored);
            }
            std::lock_guard lock(mutex_);
            std::erase_if(children_,
                          [](const Child& child) { return reapIfExited(child.pid, child.handle); });
        }
    }

    FileDescriptor wake_;
    std::mutex mutex_;
    std::vector<Child> children_;
    bool threadStarted_ = false;
};

}  // namespace

bool reapIfExited(pid_t pid, const FileDescriptor& processHandle) {
    for (;;) {
        int result = 0;
        if (processHandle.valid()) {
            siginfo_t info{};
            result =
                ::waitid(P_PIDFD, static_cast<id_t>(processHandle.get()), &info, WEXITED | WNOHANG);
            if (result == 0 && info.si_pid == 0) return false;  // still running
        } else {
            result = ::waitpid(pid, nullptr, WNOHANG);
            if (result == 0) return false;
        }
        if (result >= 0) return true;
        if (errno != EINTR) return true;  // ECHILD: a host that reaps every child took it
    }
}

void reapInBackground(pid_t pid, FileDescriptor processHandle) {
    // Never destroyed: its detached thread may be polling when the process exits.
    static ChildReaper* const reaper = new ChildReaper;
    reaper->adopt(pid, std::move(processHandle));
}

}  // namespace quod::internal
