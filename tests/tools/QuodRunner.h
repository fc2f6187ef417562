// Runs the built `quod` binary with given arguments and standard input, and collects what it did.
#pragma once

#include <filesystem>
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

// A fresh folder for one test, removed with it.
class ScratchFolder {
  public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    // Writes a file and answers its path.
    std::string write(const std::string& name, const std::string& bytes) const;
    [[nodiscard]] std::vector<std::string> entries() const;
    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

std::string readFile(const std::string& path);

}  // namespace quod::testing
