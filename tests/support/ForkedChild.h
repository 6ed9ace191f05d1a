#pragma once

// Work run in a forked child of the test process, for what a child inherits.

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <functional>
#include <optional>
#include <string>

namespace orvtest {

// Runs work in a forked child and returns the text it returned; nothing when
// the child failed (its exception's text goes to stderr).
inline std::optional<std::string> TextFromChild(const std::function<std::string()>& work) {
  int pipe_ends[2];
  if (pipe(pipe_ends) != 0) return std::nullopt;
  const pid_t child = fork();
  if (child == 0) {
    close(pipe_ends[0]);
    int code = 2;
    try {
      const std::string text = work();
      code = write(pipe_ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0
                                                                                                : 1;
    } catch (const std::exception& e) {
      std::fprintf(stderr, "child: %s\n", e.what());
    }
    _exit(code);
  }
  close(pipe_ends[1]);
  if (child < 0) {
    close(pipe_ends[0]);
    return std::nullopt;
  }
  std::string text;
  char buffer[256];
  for (ssize_t got; (got = read(pipe_ends[0], buffer, sizeof buffer)) > 0;)
    text.append(buffer, got);
  close(pipe_ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return std::nullopt;
  return text;
}

}  // namespace orvtest
