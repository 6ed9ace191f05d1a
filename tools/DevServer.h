#pragma once

// A MariaDB server for tests, benchmarks and the demo: either a private one,
// started from the server binaries on a temporary data directory (unix socket
// plus a loopback port) and removed when done, or an existing one named by the
// environment:
//   ORVMYSQL_SERVER    host name, or the absolute path of a unix socket
//   ORVMYSQL_PORT      TCP port (default 3306)
//   ORVMYSQL_USER      user (default root)
//   ORVMYSQL_PASSWORD  password (default empty)
// The user must be allowed to create and drop databases.

#include <functional>
#include <memory>
#include <string>
#include <vector>

// The callers of the server also install the schema (InstallSchema).
#include "tools/SchemaInstaller.h"
#include "tools/ServerAddress.h"

namespace orvmysql::devkit {

class DevServer {
 public:
  // Starts a private server unless ORVMYSQL_SERVER is set. The log function,
  // when given, receives one line per step.
  static std::unique_ptr<DevServer> Acquire(std::function<void(const std::string&)> log = {});
  // Always starts a private server, with extra mariadbd options (for example
  // "--sql-mode=NO_BACKSLASH_ESCAPES" or "--performance-schema=ON").
  static std::unique_ptr<DevServer> AcquirePrivate(
      std::vector<std::string> server_options, std::function<void(const std::string&)> log = {});
  ~DevServer();  // stops a private server and removes its data directory

  const ServerAddress& Address() const { return address_; }
  bool IsPrivate() const { return !run_args_.empty(); }

  // Fault injection on a private server (std::logic_error on an existing one).
  // Pause freezes the server (SIGSTOP): connections stay open, nothing answers.
  // Resume lets it run again (SIGCONT).
  // Kill ends it at once (SIGKILL) and reaps it; the data directory stays.
  // Restart (after Kill, or killing it first) starts it again on the same data
  // directory, socket and port and returns once it accepts connections.
  void Pause();
  void Resume();
  void Kill();
  void Restart();

 private:
  DevServer() = default;
  void StartPrivate(const std::function<void(const std::string&)>& log);
  void Run();  // starts the server with run_args_ and waits until it answers
  void RequirePrivate(const char* what) const;
  void Stop() noexcept;

  ServerAddress address_;
  std::vector<std::string> server_options_;
  std::vector<std::string> run_args_;  // how the private server is started
  std::string root_dir_;
  int pid_ = 0;
};

}  // namespace orvmysql::devkit
