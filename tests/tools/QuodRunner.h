// Runs the built `quod` binary with given arguments and standard input, and collects what it did.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace quod::testing {

struct QuodRun {
    int exitStatus = -1;
    std::string out;
    std::string err;
};

// Standard input is `input` (empty: a 0-byte input).
QuodRun runQuod(const std::vector<std::string>& arguments, const std::string& input = {});

// Starts `quod` with its standard streams opened on the given files and answers its process id,
// without waiting for it; throws when it cannot start.
pid_t startQuod(const std::vector<std::string>& arguments, const std::string& input,
                const std::string& output, const std::string& errors);

std::string readFile(const std::string& path);

}  // namespace quod::testing
