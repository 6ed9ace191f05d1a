#pragma once

// A MariaDB Galera cluster on loopback for the cluster test: every node a
// private mariadbd with its own data directory and option file under one
// temporary directory, its client port and its three Galera ports (group
// communication, incremental and full state transfer) below 32768, where
// Galera's reconnects cannot collide with ephemeral ports. Run as root, the
// servers run as the system user mysql (the rsync state transfer refuses to
// run as root); otherwise as the caller.
//
// Needs the server binaries, galera-4 and the rsync state-transfer script
// (scripts/install-deps.sh cluster).
//   ORVMYSQL_MARIADBD        server binary (default /usr/sbin/mariadbd)
//   ORVMYSQL_MARIADB_SHARE   its SQL files (default /usr/share/mysql)
//   ORVMYSQL_GALERA          provider (default /usr/lib/galera/libgalera_smm.so)
//   ORVMYSQL_KEEP_CLUSTER    when set, the directory with the nodes' logs is kept

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/ServerAddress.h"
#include "tools/ServerProcess.h"

namespace orvmysql::devkit {

class GaleraCluster {
 public:
  using Log = std::function<void(const std::string&)>;

  // Bootstraps node 0 as a new cluster and joins the others to it (each by a
  // full state transfer); returns when every node is synced.
  explicit GaleraCluster(int nodes, Log log = {});
  ~GaleraCluster();  // stops every node and removes the directory (see above)
  GaleraCluster(const GaleraCluster&) = delete;
  GaleraCluster& operator=(const GaleraCluster&) = delete;

  int Size() const { return static_cast<int>(nodes_.size()); }
  const ServerAddress& Address(int node) const { return nodes_.at(node).address; }
  // The user the servers run as ("" for the caller).
  std::string User() const { return user_ ? user_->name : std::string(); }

  // Ends the node's server with SIGKILL, as a crash would.
  void Kill(int node);
  // Starts a killed node again at the position its data directory recorded
  // (so that the cluster sends only the missing write sets), and waits until
  // it is synced. Returns how the state arrived ("IST", "SST" or "none").
  std::string Rejoin(int node, std::chrono::seconds limit = std::chrono::seconds(180));

  // wsrep_cluster_size as the node sees it, 0 when it does not answer.
  int ClusterSize(int node) const;

 private:
  struct Node {
    std::string name;
    std::filesystem::path dir;
    std::filesystem::path option_file;
    ServerAddress address;
    int group_port = 0;
    pid_t pid = 0;
  };

  void WriteOptionFile(const Node& node, const std::string& cluster_address) const;
  void Start(Node& node, const std::vector<std::string>& extra);
  void WaitSynced(Node& node, std::chrono::seconds limit);
  std::optional<std::string> RecoveredPosition(Node& node);
  void StopAll() noexcept;

  Log log_;
  std::optional<RunAs> user_;
  std::string mariadbd_;
  std::string provider_;
  std::filesystem::path root_;
  std::vector<Node> nodes_;
};

}  // namespace orvmysql::devkit
