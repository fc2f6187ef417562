// The one way the tool reports that a command cannot go on.
//
// The framework answers bad input quietly (no value, false, empty text); the tool turns those
// answers into a Failure as soon as it meets them, and `main` prints its message as one line on
// standard error and exits non-zero. Nothing is written before the result is sure to be made
// (Document.h), so a Failure never leaves half an output behind.
#pragma once

#include <stdexcept>
#include <string>

namespace quod::tool {

// What went wrong with the input or the files: exit status 1.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// A command line the tool does not understand: exit status 2, like other POSIX tools.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace quod::tool
