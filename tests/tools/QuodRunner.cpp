#include "QuodRunner.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "tests/support/TemporaryFolder.h"

extern char** environ;

namespace quod::testing {

QuodRun runQuod(const std::vector<std::string>& arguments, const std::string& input) {
    // Files rather than pipes: no deadlock however much either side writes.
    const TemporaryFolder io("quod-run");
    const std::string in = io.write("in", input);
    const std::string out = (io.path() / "out").string();
    const std::string err = (io.path() / "err").string();
    const pid_t child = startQuod(arguments, in, out, err);
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
    }
    QuodRun run;
    run.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    run.out = readFile(out);
    run.err = readFile(err);
    return run;
}

pid_t startQuod(const std::vector<std::string>& arguments, const std::string& input,
                const std::string& output, const std::string& errors) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, input.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    posix_spawn_file_actions_addopen(&actions, 2, errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    std::vector<std::string> all{QUOD_BINARY};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& argument : all)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    pid_t child = 0;
    const int spawned = posix_spawn(&child, QUOD_BINARY, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) throw std::runtime_error("cannot start " QUOD_BINARY);
    return child;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace quod::testing
