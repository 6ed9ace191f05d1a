#pragma once

// Starting server programs for the private servers of the tools and tests:
// spawning them (optionally as another user), reading the end of their logs,
// and the SQL that creates a fresh data directory's system tables.

#include <sys/types.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orvmysql::devkit {

// A user a child process runs as instead of the caller (only root can switch).
struct RunAs {
  uid_t uid = 0;
  gid_t gid = 0;
  std::string name;

  // The system user of that name; nullopt when there is none.
  static std::optional<RunAs> Lookup(const std::string& name);
};

struct SpawnOptions {
  std::filesystem::path input{};   // stdin, when given
  std::filesystem::path output{};  // stdout and stderr, appended
  std::optional<RunAs> user{};
  int death_signal = SIGTERM;  // sent to the child when this process dies
};

// Starts the program args[0] with the arguments and returns its process id.
pid_t Spawn(const std::vector<std::string>& args, const SpawnOptions& options);

// The last max_bytes of a file (for error messages quoting a server's log).
std::string ReadTail(const std::filesystem::path& file, std::size_t max_bytes = 2000);

// Writes the statements that create the system tables of a new data directory
// (run with mariadbd --bootstrap), from the server's SQL files in sql_dir.
void WriteBootstrapSql(const std::filesystem::path& file, const std::filesystem::path& sql_dir);

}  // namespace orvmysql::devkit
