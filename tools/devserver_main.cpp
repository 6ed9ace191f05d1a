// orvmysql-devserver: runs a command against a private MariaDB server.
//
//   orvmysql-devserver COMMAND [ARG]...
//
// Starts a private server (or takes the one ORVMYSQL_SERVER names, see
// tools/DevServer.h), runs the command with ORVMYSQL_SERVER, ORVMYSQL_PORT,
// ORVMYSQL_USER and ORVMYSQL_PASSWORD naming it, stops the server again and
// exits with the command's status. Used by the tests that run programs built
// outside this tree.

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <iostream>

#include "tools/DevServer.h"

int main(int argc, char** argv) {
  if (argc < 2 || argv[1][0] == '-') {
    std::cerr << "usage: orvmysql-devserver COMMAND [ARG]...\n";
    return 2;
  }
  try {
    auto server = orvmysql::devkit::DevServer::Acquire(
        [](const std::string& line) { std::cerr << "[server] " << line << "\n"; });
    const auto& address = server->Address();
    setenv("ORVMYSQL_SERVER", address.server.c_str(), 1);
    setenv("ORVMYSQL_PORT", address.port.c_str(), 1);
    setenv("ORVMYSQL_USER", address.user.c_str(), 1);
    setenv("ORVMYSQL_PASSWORD", address.password.c_str(), 1);
    std::cout.flush();
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("fork() failed");
    if (child == 0) {
      execvp(argv[1], argv + 1);
      std::cerr << "orvmysql-devserver: cannot run " << argv[1] << "\n";
      _exit(127);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  } catch (const std::exception& e) {
    std::cerr << "orvmysql-devserver: " << e.what() << "\n";
    return 1;
  }
}
