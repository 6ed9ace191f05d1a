#include "tools/ServerProcess.h"

#include <grp.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace orvmysql::devkit {

namespace fs = std::filesystem;

std::optional<RunAs> RunAs::Lookup(const std::string& name) {
  const passwd* pw = getpwnam(name.c_str());
  if (pw == nullptr) return std::nullopt;
  return RunAs{pw->pw_uid, pw->pw_gid, name};
}

pid_t Spawn(const std::vector<std::string>& args, const SpawnOptions& options) {
  // Everything the child needs is prepared here: between fork and exec it
  // only switches user, redirects and executes.
  std::vector<char*> argv;
  for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  // The child re-opens stdout; unwritten output of this process must not be
  // written a second time from the child's copy of the buffers.
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid < 0) throw std::runtime_error("fork() failed");
  if (pid == 0) {
    if (options.user) {
      const gid_t gid = options.user->gid;
      if (setgroups(1, &gid) != 0 || setgid(gid) != 0 || setuid(options.user->uid) != 0) _exit(126);
    }
    // Set after the switch of user, which clears it.
    prctl(PR_SET_PDEATHSIG, options.death_signal);
    if (!options.input.empty()) {
      if (std::freopen(options.input.c_str(), "r", stdin) == nullptr) _exit(126);
    }
    // A server writes a few lines to the terminal before its log takes over.
    if (!options.output.empty() && (std::freopen(options.output.c_str(), "a", stdout) == nullptr ||
                                    std::freopen(options.output.c_str(), "a", stderr) == nullptr)) {
      _exit(126);
    }
    execv(argv[0], argv.data());
    _exit(127);
  }
  return pid;
}

std::string ReadTail(const fs::path& file, std::size_t max_bytes) {
  std::ifstream in(file);
  std::stringstream ss;
  ss << in.rdbuf();
  std::string text = ss.str();
  return text.size() > max_bytes ? text.substr(text.size() - max_bytes) : text;
}

// System tables, created the way the server's own installer does it.
void WriteBootstrapSql(const fs::path& file, const fs::path& sql_dir) {
  std::ofstream boot(file);
  boot << "create database if not exists mysql;\nuse mysql;\n";
  for (const char* name : {"mysql_system_tables.sql", "mysql_system_tables_data.sql"}) {
    std::ifstream in(sql_dir / name);
    if (!in) throw std::runtime_error("missing " + (sql_dir / name).string());
    boot << in.rdbuf() << "\n";
  }
  if (!boot) throw std::runtime_error("cannot write " + file.string());
}

}  // namespace orvmysql::devkit
