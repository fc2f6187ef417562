#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "quoddle/filesystem/Task.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"

namespace quod {
namespace {

using namespace std::chrono_literals;

// Open descriptors, counting process descriptors (pidfds) apart: the reaper holds one per child
// until that child is collected, a moment after it leaves the process table.
struct Descriptors {
    int processHandles = 0;
    int others = 0;
};

Descriptors openDescriptors() {
    Descriptors open;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const auto target = std::filesystem::read_symlink(entry.path(), error);
        ++(target.string() == "anon_inode:[pidfd]" ? open.processHandles : open.others);
    }
    return open;
}

// This process's children, alive or zombie, from the process table.
std::vector<pid_t> childProcesses() {
    std::vector<pid_t> children;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        std::ifstream file(entry.path() / "stat");
        std::string stat;
        std::getline(file, stat);
        const std::size_t close = stat.rfind(')');  // the command name may hold anything
        if (close == std::string::npos) continue;
        char state = 0;
        pid_t parent = 0;
        if (std::sscanf(stat.c_str() + close + 1, " %c %d", &state, &parent) == 2 &&
            parent == ::getpid()) {
            children.push_back(std::stoi(name));
        }
    }
    return children;
}

template <typename Condition>
bool eventually(Condition condition, std::chrono::seconds limit = 20s) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

class TaskTests : public ::testing::Test {
  protected:
    std::string file(const std::string& name, const std::string& content,
                     std::filesystem::perms permissions = std::filesystem::perms::owner_read |
                                                          std::filesystem::perms::owner_write) {
        const std::filesystem::path path = scratch_.write(name, content);
        std::filesystem::permissions(path, permissions);
        return path;
    }

    const testing::TemporaryFolder scratch_{"quoddle-task"};
    testing::ScopedEnvironment environment;
    const std::string folder_ = scratch_.path();
};

TEST_F(TaskTests, ArgumentsShapeTheCommand) {
    EXPECT_EQ(Task::run("echo one; echo err >&2; echo two", "/bin/sh", true), "one\nerr\ntwo\n");
    // Only the shell gets "-c": anything else receives the string as its one argument.
    EXPECT_EQ(Task::run("echo one; echo two", "/bin/echo", true), "echo one; echo two\n");
    EXPECT_EQ(Task::run({"-n", "a  b", "$HOME"}, "/bin/echo", true), "a  b $HOME");
    environment.set("QUODDLE_TASK_PROBE", "inherited");
    EXPECT_EQ(Task::run("echo $QUODDLE_TASK_PROBE", "/bin/sh", true), "inherited\n");

    const std::string marker = folder_ + "/ran";
    const std::string tool = file("tool", "#!/bin/sh\ntouch '" + marker + "'\necho ran\n",
                                  std::filesystem::perms::owner_all);
    EXPECT_EQ(Task::run(TaskArguments(), tool, true), "");  // neither string nor list
    EXPECT_FALSE(std::filesystem::exists(marker));
    EXPECT_EQ(Task::run(std::vector<std::string>{}, tool, true), "ran\n");  // an empty list runs
}

TEST_F(TaskTests, MainDecidesWhetherTheToolSeesTheEndOfItsInput) {
    EXPECT_EQ(Task::run("read line; echo \"[$line]\"; cat; echo end", "/bin/sh", true),
              "[]\nend\n");
    // Without the newline and the close, a reader waits until something stops it.
    EXPECT_EQ(Task::run("timeout 0.3 cat; echo status $?", "/bin/sh", true), "\nstatus 0\n");
    EXPECT_EQ(Task::run("timeout 0.3 cat; echo status $?", "/bin/sh", false), "status 124\n");
}

TEST_F(TaskTests, ChunksThatAreNotUtf8OnTheirOwnAreDropped) {
    // cat writes each of these files with one write(2) of less than PIPE_BUF bytes, so the pipe
    // holds them whole and the reads split them exactly every 1,024 bytes.
    const std::string e = "\xC3\xA9";  // é, two bytes
    const std::string split = std::string(1023, 'a') + e + std::string(1023, 'b') + "ok\n";
    EXPECT_EQ(Task::run({file("split", split)}, "/bin/cat", true), "ok\n");

    const std::string whole = std::string(1022, 'a') + e + std::string(1023, 'b') + "ok\n";
    EXPECT_EQ(Task::run({file("whole", whole)}, "/bin/cat", true), whole);

    EXPECT_EQ(Task::run({file("bad", "fine\xFF")}, "/bin/cat", true), "");
}

TEST_F(TaskTests, AProgramThatCannotRunGivesEmptyTextAndLeavesNoChild) {
    for (const std::string& program : {std::string("/no/such/tool"), std::string(""), folder_,
                                       file("plain", "echo hi\n")})  // not executable
        EXPECT_EQ(Task::run("echo hi", program, true), "") << program;
    EXPECT_TRUE(childProcesses().empty());
}

TEST_F(TaskTests, TenMegabytesOnEachStreamArriveWhole) {
    // The host ignores SIGPIPE, as many do; the children must not inherit that, or each `yes`
    // would print "Broken pipe" into the output when its `head` is done.
    std::signal(SIGPIPE, SIG_IGN);
    const std::string text =
        Task::run("(yes aaaa | head -c 10000000) & (yes bbbb | head -c 10000000 >&2) & wait",
                  "/bin/sh", true);
    EXPECT_EQ(text.size(), 20'000'000u);
    EXPECT_EQ(std::count(text.begin(), text.end(), 'a'), 8'000'000);
    EXPECT_EQ(std::count(text.begin(), text.end(), 'b'), 8'000'000);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4'000'000);
}

TEST_F(TaskTests, TheChildGetsOnlyTheStandardDescriptors) {
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 1'048'576);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);

    const int source = ::open("/dev/null", O_RDONLY);  // inheritable, as a careless host leaves it
    ASSERT_GE(source, 0);
    std::vector<int> inheritable;
    for (int i = 0; i < 300; ++i)
        inheritable.push_back(::fcntl(source, F_DUPFD, 0));
    inheritable.push_back(::dup2(source, static_cast<int>(limit.rlim_cur) - 1));  // the very top
    ASSERT_EQ(inheritable.back(), static_cast<int>(limit.rlim_cur) - 1);

    EXPECT_EQ(Task::run("ls /proc/$$/fd", "/bin/sh", true), "0\n1\n2\n");

    for (const int descriptor : inheritable)
        ::close(descriptor);
    ::close(source);
}

TEST_F(TaskTests, TheChildStartsWithDefaultSignalsAndAnEmptyMask) {
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGTERM, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGUSR1);
    ::sigaddset(&blocked, SIGUSR2);
    ::sigaddset(&blocked, SIGHUP);
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &blocked, nullptr), 0);

    const auto field = [](const std::string& status, const std::string& name) {
        const std::size_t start = status.find("\n" + name + ":\t") + name.size() + 3;
        return start < name.size() + 3 ? "missing" : status.substr(start, 16);
    };
    const std::string child = Task::run({"/proc/self/status"}, "/bin/cat", true);
    EXPECT_EQ(field(child, "SigBlk"), "0000000000000000");
    // glibc's posix_spawn always leaves its two internal signals (32 and 33, below SIGRTMIN)
    // ignored in the child, and refuses to take them into the set to reset; no program uses them.
    const unsigned long long glibcInternal = (1ull << 31) | (1ull << 32);
    EXPECT_EQ(std::stoull(field(child, "SigIgn"), nullptr, 16) & ~glibcInternal, 0u);

    // The calling thread really does block and ignore them, so the child had something to undo.
    std::ifstream parentStatus("/proc/thread-self/status");
    const std::string parent((std::istreambuf_iterator<char>(parentStatus)), {});
    EXPECT_NE(field(parent, "SigBlk"), "0000000000000000");
    EXPECT_NE(field(parent, "SigIgn"), "0000000000000000");
}

TEST_F(TaskTests, SpawningStaysFastUnderAHugeDescriptorLimit) {
    const rlimit huge{1'048'576, 1'048'576};
    if (::setrlimit(RLIMIT_NOFILE, &huge) != 0) {
        GTEST_SKIP() << "cannot raise RLIMIT_NOFILE to 1,048,576 here (needs CAP_SYS_RESOURCE "
                        "or a hard limit that high)";
    }
    const int high = ::dup2(STDIN_FILENO, 1'048'000);  // inheritable and far up
    ASSERT_EQ(high, 1'048'000);

    // Closing every possible descriptor one by one would cost a million system calls per spawn,
    // seconds for these hundred; closing the open ones costs about nothing. The limit is generous
    // for a loaded machine and still far below what the slow way takes.
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i)
        ASSERT_EQ(Task::run({"x"}, "/bin/echo", true), "x\n");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    EXPECT_EQ(Task::run("ls /proc/$$/fd", "/bin/sh", true), "0\n1\n2\n");
    ::close(high);
}

TEST(TaskBrokenPipeTests, AWriteToAPipeWithoutReaderFailsQuietlyAndLeavesOthersSignals) {
    std::signal(SIGPIPE, SIG_DFL);  // a broken pipe would kill the test process
    const auto pipeSignal = [](bool pendingSet) {
        sigset_t set;
        pendingSet ? ::sigpending(&set) : ::pthread_sigmask(SIG_SETMASK, nullptr, &set);
        return ::sigismember(&set, SIGPIPE) == 1;
    };
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    EXPECT_FALSE(internal::writeWithoutBrokenPipeSignal(ends[1], "\n"));
    EXPECT_FALSE(pipeSignal(true));   // not pending
    EXPECT_FALSE(pipeSignal(false));  // not left blocked
    ::close(ends[1]);

    // A SIGPIPE the host had pending (and blocked) before is the host's: it stays.
    sigset_t brokenPipe;
    ::sigemptyset(&brokenPipe);
    ::sigaddset(&brokenPipe, SIGPIPE);
    ASSERT_EQ(::pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr), 0);
    ASSERT_EQ(::pthread_kill(::pthread_self(), SIGPIPE), 0);
    ASSERT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    EXPECT_FALSE(internal::writeWithoutBrokenPipeSignal(ends[1], "\n"));
    EXPECT_TRUE(pipeSignal(true));
    EXPECT_TRUE(pipeSignal(false));
    ::close(ends[1]);
}

TEST(TaskBrokenPipeTests, ToolsThatExitWithoutReadingDoNotKillTheHost) {
    std::signal(SIGPIPE, SIG_DFL);
    for (int i = 0; i < 200; ++i)  // some of these lose the race and meet a closed input
        EXPECT_EQ(Task::run("exec 0<&-", "/bin/sh", true), "");
}

// The host's SIGCHLD handler only takes note, and the host collects its own child when it
// pleases, as an event loop does: the exit status must still be there for it then.
std::atomic<int> childSignals{0};

void onChildSignal(int) {
    ++childSignals;
}

TEST(TaskStressTests, AThousandRunsLeaveNoDescriptorNoZombieAndTheHostsChildAlone) {
    // No SA_RESTART: the signals of a thousand exiting children interrupt the reads.
    struct sigaction action {};
    action.sa_handler = onChildSignal;
    ::sigemptyset(&action.sa_mask);
    ASSERT_EQ(::sigaction(SIGCHLD, &action, nullptr), 0);

    int gate[2];
    ASSERT_EQ(::pipe2(gate, O_CLOEXEC), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::close(gate[1]);
        char byte;
        (void)::read(gate[0], &byte, 1);  // until the parent closes the gate
        ::_exit(42);
    }
    ::close(gate[0]);

    // A child that outlives its output, so the background reaper starts (and opens its one
    // descriptor for good) before the count.
    ASSERT_EQ(Task::run("exec >&- 2>&-; sleep 0.05", "/bin/sh", true), "");
    ASSERT_TRUE(eventually([&] { return childProcesses() == std::vector<pid_t>{child}; }));
    const int descriptorsBefore = openDescriptors().others - 1;  // less the gate, closed midway

    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            const std::string word = "run" + std::to_string(t);
            for (int i = 0; i < 250; ++i) {
                // The host's child exits while the runs go on, so a reaper that waited for any
                // child would have every chance to take it.
                if (t == 0 && i == 100) ::close(gate[1]);
                if (Task::run({word}, "/bin/echo", i % 2 == 0) != word + "\n") ++wrong;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong.load(), 0);

    EXPECT_GT(childSignals.load(), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child) << "someone else collected the host's child";
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 42);

    EXPECT_TRUE(eventually([] { return childProcesses().empty(); }))
        << childProcesses().size() << " children left";
    EXPECT_TRUE(eventually([&] {
        const Descriptors open = openDescriptors();
        return open.processHandles == 0 && open.others == descriptorsBefore;
    })) << openDescriptors().others
        << " descriptors open, " << descriptorsBefore << " before; "
        << openDescriptors().processHandles << " process descriptors";
    std::signal(SIGCHLD, SIG_DFL);
}

}  // namespace
}  // namespace quod
