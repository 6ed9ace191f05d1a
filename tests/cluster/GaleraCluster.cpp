#include "cluster/GaleraCluster.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <thread>

#include "orvmysql/Connection.h"

namespace orvmysql::devkit {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// Ports of node i: base + 10 i (client), + 1 (group communication), + 2
// (incremental state transfer), + 3 (full state transfer).
constexpr int kPortsPerNode = 10;
constexpr int kLowestBase = 20000;
constexpr int kHighestPort = 32767;

std::string Env(const char* name, const std::string& fallback) {
  const char* v = std::getenv(name);
  return v != nullptr && *v != '\0' ? std::string(v) : fallback;
}

bool PortIsFree(int port) {
  const int fd = socket(AF_INET, SOCK_STREAM, 0);
  if (fd < 0) return false;
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  addr.sin_port = htons(static_cast<uint16_t>(port));
  const bool free = bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0;
  close(fd);
  return free;
}

// A base port whose block of ports for every node is free now.
int FreePortBase(int nodes) {
  std::mt19937 random(std::random_device{}());
  const int span = nodes * kPortsPerNode;
  std::uniform_int_distribution<int> pick(kLowestBase / kPortsPerNode,
                                          (kHighestPort - span) / kPortsPerNode);
  for (int attempt = 0; attempt < 100; ++attempt) {
    const int base = pick(random) * kPortsPerNode;
    bool free = true;
    for (int n = 0; n < nodes && free; ++n) {
      for (int p = 0; p < 4 && free; ++p) free = PortIsFree(base + n * kPortsPerNode + p);
    }
    if (free) return base;
  }
  throw std::runtime_error("no free block of loopback ports below 32768");
}

std::string StatusValue(const ServerAddress& address, const std::string& variable) {
  try {
    return NewConnection(address.Connector(""))
        ->ExecuteScalar(
            "SELECT VARIABLE_VALUE FROM information_schema.GLOBAL_STATUS WHERE VARIABLE_NAME = '" +
                variable + "'",
            "");
  } catch (const std::exception&) {
    return {};
  }
}

void Chown(const fs::path& path, const RunAs& user) {
  if (chown(path.c_str(), user.uid, user.gid) != 0) {
    throw std::runtime_error("cannot give " + path.string() + " to " + user.name);
  }
}

std::string FileSince(const fs::path& file, std::uintmax_t offset) {
  std::ifstream in(file);
  in.seekg(static_cast<std::streamoff>(offset));
  return std::string(std::istreambuf_iterator<char>(in), {});
}

std::uintmax_t SizeOf(const fs::path& file) {
  std::error_code ec;
  const auto size = fs::file_size(file, ec);
  return ec ? 0 : size;
}

}  // namespace

GaleraCluster::GaleraCluster(int nodes, Log log) : log_(std::move(log)) {
  if (nodes < 1) throw std::invalid_argument("a cluster needs a node");
  mariadbd_ = Env("ORVMYSQL_MARIADBD", "/usr/sbin/mariadbd");
  const fs::path sql_dir = Env("ORVMYSQL_MARIADB_SHARE", "/usr/share/mysql");
  provider_ = Env("ORVMYSQL_GALERA", "/usr/lib/galera/libgalera_smm.so");
  for (const fs::path& needed : {fs::path(mariadbd_), fs::path(provider_)}) {
    if (!fs::exists(needed)) {
      throw std::runtime_error(needed.string() +
                               " not found: run scripts/install-deps.sh cluster (make test-cluster"
                               " does)");
    }
  }
  if (geteuid() == 0) {
    user_ = RunAs::Lookup("mysql");
    if (!user_) {
      throw std::runtime_error(
          "run as root, the servers run as the user mysql, which does not exist: run "
          "scripts/install-deps.sh cluster");
    }
  }

  char pattern[] = "/tmp/orvmysql-cluster-XXXXXX";
  if (mkdtemp(pattern) == nullptr) throw std::runtime_error("cannot create a temporary directory");
  root_ = pattern;
  try {
    if (user_) Chown(root_, *user_);
    const int base = FreePortBase(nodes);
    std::string cluster_address = "gcomm://";
    nodes_.resize(nodes);
    for (int i = 0; i < nodes; ++i) {
      Node& node = nodes_[i];
      node.name = "node" + std::to_string(i + 1);
      node.dir = root_ / node.name;
      node.option_file = node.dir / "my.cnf";
      node.group_port = base + i * kPortsPerNode + 1;
      node.address = {"127.0.0.1", std::to_string(base + i * kPortsPerNode), "root", "",
                      (node.dir / "mysqld.sock").string()};
      fs::create_directories(node.dir / "data");
      if (user_) {
        Chown(node.dir, *user_);
        Chown(node.dir / "data", *user_);
      }
      cluster_address += (i > 0 ? ",127.0.0.1:" : "127.0.0.1:") + std::to_string(node.group_port);
    }
    for (const Node& node : nodes_) WriteOptionFile(node, cluster_address);

    // Only the first node gets system tables; the others receive everything
    // from it by a full state transfer when they join.
    Node& first = nodes_[0];
    WriteBootstrapSql(root_ / "bootstrap.sql", sql_dir);
    if (log_) log_("bootstrapping " + first.name + " in " + root_.string());
    const pid_t boot = Spawn(
        {mariadbd_, "--no-defaults", "--datadir=" + (first.dir / "data").string(),
         "--innodb-log-file-size=16M", "--innodb-buffer-pool-size=128M", "--skip-log-bin",
         "--bootstrap", "--log-error=" + (first.dir / "bootstrap.log").string()},
        {.input = root_ / "bootstrap.sql", .output = first.dir / "console.log", .user = user_});
    int status = 0;
    waitpid(boot, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
      throw std::runtime_error("bootstrap of " + first.name + " failed:\n" +
                               ReadTail(first.dir / "bootstrap.log"));
    }

    Start(first, {"--wsrep-new-cluster"});
    WaitSynced(first, std::chrono::seconds(60));
    for (int i = 1; i < nodes; ++i) Start(nodes_[i], {});
    for (int i = 1; i < nodes; ++i) WaitSynced(nodes_[i], std::chrono::seconds(180));
  } catch (...) {
    StopAll();
    throw;
  }
}

GaleraCluster::~GaleraCluster() {
  StopAll();
}

void GaleraCluster::WriteOptionFile(const Node& node, const std::string& cluster_address) const {
  const int g = node.group_port;
  std::ofstream out(node.option_file);
  // The servers and their state-transfer scripts read only this file: the
  // machine's own option files do not apply.
  out << "[mysqld]\n"
      << "datadir=" << (node.dir / "data").string() << "\n"
      << "socket=" << node.address.socket << "\n"
      << "port=" << node.address.port << "\n"
      << "bind-address=127.0.0.1\n"
      << "skip-name-resolve\n"
      << "log-error=" << (node.dir / "server.log").string() << "\n"
      << "pid-file=" << (node.dir / "mysqld.pid").string() << "\n"
      << "innodb-log-file-size=16M\n"
      << "innodb-buffer-pool-size=128M\n"
      << "innodb-flush-log-at-trx-commit=2\n"
      << "max-connections=200\n"
      // Galera replicates row events and needs interleaved auto-increment locks.
      << "binlog-format=ROW\n"
      << "innodb-autoinc-lock-mode=2\n"
      << "wsrep-on=ON\n"
      << "wsrep-provider=" << provider_ << "\n"
      << "wsrep-cluster-name=orvmysql\n"
      << "wsrep-cluster-address=" << cluster_address << "\n"
      << "wsrep-node-name=" << node.name << "\n"
      << "wsrep-node-address=127.0.0.1\n"
      // A lost node is suspected after 3 s of silence and declared inactive
      // after 5 s at the latest: the survivors stall for about 4 s, and not
      // much over 6 s (defaults: 5 s and 15 s).
      << "wsrep-provider-options=\"base_port=" << g << ";gmcast.listen_addr=tcp://127.0.0.1:" << g
      << ";ist.recv_addr=127.0.0.1:" << g + 1
      << ";gcache.size=128M;evs.suspect_timeout=PT3S;evs.inactive_timeout=PT5S"
         ";evs.install_timeout=PT5S\"\n"
      << "wsrep-sst-receive-address=127.0.0.1:" << g + 2 << "\n"
      << "wsrep-sst-method=rsync\n";
  if (!out) throw std::runtime_error("cannot write " + node.option_file.string());
}

void GaleraCluster::Start(Node& node, const std::vector<std::string>& extra) {
  std::vector<std::string> args = {mariadbd_, "--defaults-file=" + node.option_file.string()};
  args.insert(args.end(), extra.begin(), extra.end());
  if (log_) log_("starting " + node.name + " on 127.0.0.1:" + node.address.port);
  // A joiner stuck in a state transfer ignores SIGTERM.
  node.pid =
      Spawn(args, {.output = node.dir / "console.log", .user = user_, .death_signal = SIGKILL});
}

void GaleraCluster::WaitSynced(Node& node, std::chrono::seconds limit) {
  const auto deadline = Clock::now() + limit;
  while (StatusValue(node.address, "WSREP_LOCAL_STATE_COMMENT") != "Synced" ||
         StatusValue(node.address, "WSREP_READY") != "ON") {
    int status = 0;
    if (node.pid > 0 && waitpid(node.pid, &status, WNOHANG) == node.pid) {
      node.pid = 0;
      throw std::runtime_error(node.name + " stopped while starting:\n" +
                               ReadTail(node.dir / "server.log"));
    }
    if (Clock::now() > deadline) {
      throw std::runtime_error(node.name + " not synced after " + std::to_string(limit.count()) +
                               " s:\n" + ReadTail(node.dir / "server.log"));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  if (log_) log_(node.name + " synced");
}

void GaleraCluster::Kill(int index) {
  Node& node = nodes_.at(index);
  if (node.pid <= 0) throw std::logic_error(node.name + " is not running");
  kill(node.pid, SIGKILL);
  int status = 0;
  waitpid(node.pid, &status, 0);
  node.pid = 0;
  if (log_) log_(node.name + " killed");
}

// After a crash the state file holds no position; the server finds the last
// committed write set in its storage engine and logs it.
std::optional<std::string> GaleraCluster::RecoveredPosition(Node& node) {
  const fs::path recover_log = node.dir / "recover.log";
  std::error_code ec;
  fs::remove(recover_log, ec);
  const pid_t pid =
      Spawn({mariadbd_, "--defaults-file=" + node.option_file.string(), "--wsrep-recover",
             "--log-error=" + recover_log.string()},
            {.output = node.dir / "console.log", .user = user_, .death_signal = SIGKILL});
  int status = 0;
  waitpid(pid, &status, 0);
  const std::string text = FileSince(recover_log, 0);
  const std::string marker = "WSREP: Recovered position: ";
  const auto at = text.rfind(marker);
  if (at == std::string::npos) return std::nullopt;
  const auto start = at + marker.size();
  std::string position = text.substr(start, text.find('\n', start) - start);
  if (position.empty() || position.ends_with(":-1")) return std::nullopt;
  return position;
}

std::string GaleraCluster::Rejoin(int index, std::chrono::seconds limit) {
  Node& node = nodes_.at(index);
  if (node.pid > 0) throw std::logic_error(node.name + " is running");
  const auto position = RecoveredPosition(node);
  if (log_) log_(node.name + " recovered position " + position.value_or("(none)"));
  const auto log_size = SizeOf(node.dir / "server.log");
  std::vector<std::string> extra;
  if (position) extra.push_back("--wsrep-start-position=" + *position);
  Start(node, extra);
  WaitSynced(node, limit);
  const std::string log = FileSince(node.dir / "server.log", log_size);
  if (log.find("IST received") != std::string::npos) return "IST";
  if (log.find("SST") != std::string::npos) return "SST";
  return "none";
}

int GaleraCluster::ClusterSize(int node) const {
  const std::string size = StatusValue(Address(node), "WSREP_CLUSTER_SIZE");
  return size.empty() ? 0 : std::stoi(size);
}

void GaleraCluster::StopAll() noexcept {
  for (Node& node : nodes_) {
    if (node.pid > 0) kill(node.pid, SIGTERM);
  }
  for (Node& node : nodes_) {
    if (node.pid <= 0) continue;
    int status = 0;
    for (int i = 0; i < 600 && waitpid(node.pid, &status, WNOHANG) == 0; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    if (waitpid(node.pid, &status, WNOHANG) == 0) {
      kill(node.pid, SIGKILL);
      waitpid(node.pid, &status, 0);
    }
    node.pid = 0;
  }
  if (!root_.empty()) {
    if (Env("ORVMYSQL_KEEP_CLUSTER", "").empty()) {
      std::error_code ec;
      fs::remove_all(root_, ec);
    } else if (log_) {
      log_("kept " + root_.string() + " (ORVMYSQL_KEEP_CLUSTER)");
    }
    root_.clear();
  }
}

}  // namespace orvmysql::devkit
