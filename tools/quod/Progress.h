// A one-line progress report on standard error while a large input goes through its stages.
//
// Only inputs over 16 MB report, and only to a terminal: scripts and logs see nothing, and small
// files finish before a line would be worth reading. Each stage overwrites the line, with how far
// it has gone when it can tell; the line is erased when the command ends, so the terminal is left
// as if nothing had been printed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quod::tool {

class Progress {
  public:
    Progress(std::string_view command, std::size_t inputBytes);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    void stage(std::string_view what);
    // How far the current stage has gone: `done` of `total`.
    void advance(std::size_t done, std::size_t total);

  private:
    void show();

    std::string prefix_;
    std::string stage_;
    int percent_ = -1;  // none shown
    bool shown_ = false;
};

}  // namespace quod::tool
