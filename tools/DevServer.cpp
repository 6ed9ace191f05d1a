#include "tools/DevServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace orvmysql::devkit {

namespace {

namespace fs = std::filesystem;

std::string Env(const char* name, const std::string& fallback = {}) {
  const char* v = std::getenv(name);
  return v != nullptr && *v != '\0' ? std::string(v) : fallback;
}

std::string ReadTail(const fs::path& file, std::size_t max_bytes = 2000) {
  std::ifstream in(file);
  std::stringstream ss;
  ss << in.rdbuf();
  std::string text = ss.str();
  return text.size() > max_bytes ? text.substr(text.size() - max_bytes) : text;
}

unsigned FreeLoopbackPort() {
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  if (fd < 0) throw std::runtime_error("socket() failed");
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t len = sizeof addr;
  if (bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
      getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
    close(fd);
    throw std::runtime_error("cannot find a free loopback port");
  }
  close(fd);
  return ntohs(addr.sin_port);
}

// Starts the program with the arguments; the child dies with this process.
pid_t Spawn(const std::vector<std::string>& args, const fs::path& input, const fs::path& output) {
  // The child re-opens stdout; unwritten output of this process must not be
  // written a second time from the child's copy of the buffers.
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid < 0) throw std::runtime_error("fork() failed");
  if (pid == 0) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (!input.empty()) {
      if (std::freopen(input.c_str(), "r", stdin) == nullptr) _exit(126);
    }
    // The server writes a few lines to the terminal before its log takes over.
    if (std::freopen(output.c_str(), "a", stdout) == nullptr ||
        std::freopen(output.c_str(), "a", stderr) == nullptr) {
      _exit(126);
    }
    std::vector<char*> argv;
    for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }
  return pid;
}

bool CanConnect(const ServerAddress& address) {
  try {
    NewConnection(address.Connector(""))->ExecuteScalar("SELECT 1", "");
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

std::unique_ptr<DevServer> DevServer::Acquire(std::function<void(const std::string&)> log) {
  std::unique_ptr<DevServer> server(new DevServer());
  const std::string external = Env("ORVMYSQL_SERVER");
  if (!external.empty()) {
    server->address_ = ServerAddress::FromEnvironment(external);
    if (log) log("using the server named by ORVMYSQL_SERVER: " + external);
    return server;
  }
  server->StartPrivate(log);
  return server;
}

std::unique_ptr<DevServer> DevServer::AcquirePrivate(std::vector<std::string> server_options,
                                                     std::function<void(const std::string&)> log) {
  std::unique_ptr<DevServer> server(new DevServer());
  server->server_options_ = std::move(server_options);
  server->StartPrivate(log);
  return server;
}

void DevServer::StartPrivate(const std::function<void(const std::string&)>& log) {
  const std::string mariadbd = Env("ORVMYSQL_MARIADBD", "/usr/sbin/mariadbd");
  const fs::path sql_dir = Env("ORVMYSQL_MARIADB_SHARE", "/usr/share/mysql");
  if (!fs::exists(mariadbd)) {
    throw std::runtime_error(mariadbd +
                             " not found: install mariadb-server-core "
                             "(make deps) or set ORVMYSQL_SERVER to an existing server");
  }
  char pattern[] = "/tmp/orvmysql-server-XXXXXX";
  if (mkdtemp(pattern) == nullptr) throw std::runtime_error("cannot create a temporary directory");
  root_dir_ = pattern;
  const fs::path root(root_dir_);
  const fs::path data = root / "data";
  fs::create_directories(data);

  std::vector<std::string> common = {mariadbd,
                                     "--no-defaults",
                                     "--datadir=" + data.string(),
                                     "--innodb-log-file-size=16M",
                                     "--innodb-buffer-pool-size=128M",
                                     "--skip-log-bin"};
  if (geteuid() == 0) common.push_back("--user=root");

  // System tables, created the way the server's own installer does it.
  {
    std::ofstream boot(root / "bootstrap.sql");
    boot << "create database if not exists mysql;\nuse mysql;\n";
    for (const char* file : {"mysql_system_tables.sql", "mysql_system_tables_data.sql"}) {
      std::ifstream in(sql_dir / file);
      if (!in) throw std::runtime_error("missing " + (sql_dir / file).string());
      boot << in.rdbuf() << "\n";
    }
  }
  auto args = common;
  args.push_back("--bootstrap");
  args.push_back("--log-error=" + (root / "bootstrap.log").string());
  if (log) log("bootstrapping a private MariaDB server in " + root_dir_);
  int status = 0;
  const pid_t boot_pid = Spawn(args, root / "bootstrap.sql", root / "console.log");
  waitpid(boot_pid, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    const std::string tail = ReadTail(root / "bootstrap.log");
    Stop();
    throw std::runtime_error("server bootstrap failed:\n" + tail);
  }

  const unsigned port = FreeLoopbackPort();
  address_ = {"127.0.0.1", std::to_string(port), "root", "", (root / "mysqld.sock").string()};
  args = common;
  for (const std::string& a : std::vector<std::string>{
           "--socket=" + address_.socket, "--port=" + address_.port, "--bind-address=127.0.0.1",
           "--skip-name-resolve", "--innodb-flush-log-at-trx-commit=2", "--max-connections=500",
           "--log-error=" + (root / "server.log").string(),
           "--pid-file=" + (root / "mysqld.pid").string()}) {
    args.push_back(a);
  }
  args.insert(args.end(), server_options_.begin(), server_options_.end());
  run_args_ = std::move(args);
  Run();
  if (log) log("private server ready on 127.0.0.1:" + address_.port + " and " + address_.socket);
}

void DevServer::Run() {
  const fs::path root(root_dir_);
  pid_ = Spawn(run_args_, {}, root / "console.log");
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  int status = 0;
  while (!CanConnect(address_)) {
    const bool exited = waitpid(pid_, &status, WNOHANG) == pid_;
    if (exited || std::chrono::steady_clock::now() > deadline) {
      if (!exited) {
        kill(pid_, SIGKILL);
        waitpid(pid_, &status, 0);
      }
      pid_ = 0;
      const std::string tail = ReadTail(root / "server.log");
      Stop();
      throw std::runtime_error("private server did not start:\n" + tail);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

void DevServer::RequirePrivate(const char* what) const {
  if (!IsPrivate()) {
    throw std::logic_error(std::string(what) + " needs a private server, not ORVMYSQL_SERVER");
  }
}

void DevServer::Pause() {
  RequirePrivate("Pause");
  if (pid_ > 0) kill(pid_, SIGSTOP);
}

void DevServer::Resume() {
  RequirePrivate("Resume");
  if (pid_ > 0) kill(pid_, SIGCONT);
}

void DevServer::Kill() {
  RequirePrivate("Kill");
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = 0;
  }
}

void DevServer::Restart() {
  Kill();
  Run();
}

void DevServer::Stop() noexcept {
  if (pid_ > 0) {
    kill(pid_, SIGCONT);  // a paused server cannot act on SIGTERM
    kill(pid_, SIGTERM);
    int status = 0;
    for (int i = 0; i < 600 && waitpid(pid_, &status, WNOHANG) == 0; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    if (waitpid(pid_, &status, WNOHANG) == 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, &status, 0);
    }
    pid_ = 0;
  }
  if (!root_dir_.empty()) {
    std::error_code ec;
    fs::remove_all(root_dir_, ec);
    root_dir_.clear();
  }
}

DevServer::~DevServer() {
  Stop();
}

}  // namespace orvmysql::devkit
