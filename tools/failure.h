#pragma once

#include <stdexcept>
#include <string>

namespace tarnwick::tool {

// What the tool ends with: statuses for the shell.
enum ExitStatus : int { EXIT_OPTIMUM = 0, EXIT_NO_OPTIMUM = 1, EXIT_FAILED = 2 };

// Bad usage, unreadable input, a report that could not be written: the text is all there is to say,
// and the tool ends with EXIT_FAILED.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The command line asks for something that can't be had.
class BadUsage : public Failure {
  public:
    explicit BadUsage(const std::string& text) : Failure("tarnwick: " + text) {}
};

}  // namespace tarnwick::tool
