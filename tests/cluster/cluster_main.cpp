// orvmysql-cluster-test: the library on a 3-node Galera cluster, with a crash.
//
//   orvmysql-cluster-test [--seconds 30] [--kill-node 2] [--kill-at 8] [--down 4]
//                         [--max-stall 8]
//
// Starts a cluster on loopback (tests/cluster/GaleraCluster.h), installs the
// schema through node 1, and runs one writer per node, each with a data handler
// of its own in one session, adding process instances and a work item for each
// for the given time, and at least 5 s after the killed node is back: the node
// is killed with SIGKILL at --kill-at and started again --down seconds later.
// Then it checks:
//   - no two writers took overlapping keys (every compare-and-set on tblKeyGen
//     that reported a row is seen through the statement observer);
//   - every Add that returned true is on every node, exactly once;
//   - the writers on the nodes that stayed up never went longer than
//     --max-stall seconds without a successful Add;
//   - the killed node rejoined, the cluster is whole again, and the writer of
//     that node added again once it was back.
// Prints adds per writer, failures by error number, the longest stall per
// writer and the kill and rejoin times; exits 1 when a check fails.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "cluster/GaleraCluster.h"
#include "orvmysql/orvmysql.h"
#include "support/RuntimeFields.h"
#include "tools/SchemaInstaller.h"

namespace {

using Clock = std::chrono::steady_clock;
using orvmysql::Variant;
using orvmysql::devkit::GaleraCluster;

constexpr int kNodes = 3;
const char* const kDatabase = "orvmysql_cluster";

struct Options {
  double seconds = 30;
  int kill_node = 2;  // 1-based
  double kill_at = 8;
  double down = 4;
  double max_stall = 8;
};

[[noreturn]] void Usage() {
  std::cerr << "usage: orvmysql-cluster-test [--seconds 30] [--kill-node 2] [--kill-at 8]"
               " [--down 4] [--max-stall 8]\n";
  std::exit(2);
}

Options Parse(int argc, char** argv) {
  Options o;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (i + 1 >= argc) Usage();
    try {
      const double value = std::stod(argv[++i]);
      if (arg == "--seconds")
        o.seconds = value;
      else if (arg == "--kill-node")
        o.kill_node = static_cast<int>(value);
      else if (arg == "--kill-at")
        o.kill_at = value;
      else if (arg == "--down")
        o.down = value;
      else if (arg == "--max-stall")
        o.max_stall = value;
      else
        Usage();
    } catch (const std::logic_error&) {
      Usage();
    }
  }
  if (o.kill_node < 1 || o.kill_node > kNodes || o.seconds <= 0 || o.kill_at < 0 || o.down < 0 ||
      o.kill_at + o.down >= o.seconds) {
    Usage();
  }
  return o;
}

double Seconds(Clock::duration d) {
  return std::chrono::duration<double>(d).count();
}

std::string Fixed(double value, int digits = 1) {
  std::ostringstream out;
  out << std::fixed << std::setprecision(digits) << value;
  return out.str();
}

// The number a failure is counted under: the server's or client's code for
// database errors, the message number for the library's own (8196, 61441).
long FailureCode(const orvmysql::Error& e) {
  if (e.NativeError() != 0) return static_cast<long>(e.NativeError());
  if ((static_cast<uint32_t>(e.Number()) & 0xFFFF0000u) == 0x80040000u) return e.Number() & 0xFFFF;
  return e.Number();
}

// Failures after which the session's connection is gone or unusable: the
// writer ends the session and opens a new one, as an engine would.
bool ConnectionLost(long code) {
  return code == orvmysql::kMsgConnectFailed || code == 2002 || code == 2003 || code == 2006 ||
         code == 2013 || code == 1047 || code == 1927;
}

// Keys (after, last] of one entity type, taken by one compare-and-set.
struct Claim {
  long entity = 0;
  long long after = 0, last = 0;
  int writer = 0;
};

struct Writer {
  int index = 0;  // also the node it writes to
  long lookups_missed = 0, false_returns = 0;
  std::map<long, long> failures;
  std::map<long, std::pair<double, double>> failure_span;  // first and last, seconds
  std::map<long, std::string> failure_text;                // the first of each number
  std::vector<std::string> processes, workitems;           // what the successful Adds wrote
  std::vector<std::string> raised;                         // Adds that raised
  std::vector<Claim> claims;
  double longest_stall = 0, stall_from = 0;  // seconds, from the start of the run
  double last_success = 0;
};

// Reads the compare-and-set that took keys from the statement text; nullopt
// for every other statement.
std::optional<Claim> ClaimOf(const orvmysql::StatementEvent& event) {
  if (event.rows != 1 || event.sql.find("UPDATE tblKeyGen") == std::string_view::npos) {
    return std::nullopt;
  }
  static const std::regex shape(
      R"(UPDATE tblKeyGen SET LastAllocatedKey = (-?\d+) WHERE EntityTypeCode = (-?\d+) AND )"
      R"(LastAllocatedKey = (-?\d+))");
  std::match_results<std::string_view::const_iterator> m;
  if (!std::regex_search(event.sql.begin(), event.sql.end(), m, shape)) return std::nullopt;
  return Claim{std::stol(m[2].str()), std::stoll(m[3].str()), std::stoll(m[1].str()), 0};
}

std::string ByGuid(const std::string& guid) {
  orvmysql::CQuery query;
  auto all = std::make_shared<orvmysql::CConditionExpression>(orvmysql::dloAnd);
  all->Conditions()->Add(
      std::make_shared<orvmysql::CCondition>("GUID", orvmysql::dcoEqualto, Variant(guid)));
  query.SetCriteria(all);
  return query.ToXML();
}

// One writer: a handler of its own on its node, in one session, until the
// time in `until` (which may move on while it runs).
void Write(Writer& w, const orvmysql::devkit::ServerAddress& address, Clock::time_point start,
           const std::atomic<Clock::rep>& until) {
  orvmysql::CMYSqlDP handler;
  handler.Init(address.Connector(kDatabase));
  handler.SetStatementObserver([&w](const orvmysql::StatementEvent& event) {
    if (auto claim = ClaimOf(event)) {
      claim->writer = w.index;
      w.claims.push_back(*claim);
    }
  });
  auto processes = std::dynamic_pointer_cast<orvmysql::IProcInstanceDP>(
      handler.GetDataSource(orvmysql::kDsProcInstance));
  auto workitems = std::dynamic_pointer_cast<orvmysql::IWorkitemsDP>(
      handler.GetDataSource(orvmysql::kDsWorkitems));

  Clock::time_point last_success = start;
  auto gap_until = [&](Clock::time_point now) {
    if (Seconds(now - last_success) > w.longest_stall) {
      w.longest_stall = Seconds(now - last_success);
      w.stall_from = Seconds(last_success - start);
    }
  };
  bool in_session = false;
  auto end_session = [&] {
    if (!in_session) return;
    in_session = false;
    try {
      handler.EndSession();
    } catch (const orvmysql::Error&) {
    }
  };
  // Runs one call and tells whether it succeeded. A failure is counted; after
  // a lost connection the session ends, so that the next round opens another.
  auto attempt = [&](auto&& call) {
    try {
      call();
      return true;
    } catch (const orvmysql::Error& e) {
      const long code = FailureCode(e);
      const double now = Seconds(Clock::now() - start);
      if (w.failures[code]++ == 0) {
        w.failure_text[code] = e.what();
        w.failure_span[code].first = now;
      }
      w.failure_span[code].second = now;
      if (ConnectionLost(code)) {
        end_session();
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
      }
      return false;
    }
  };

  // One Add, true when it returned true. What it wrote goes to the list, or
  // to the raised ones when it failed (whether it committed is unknown then).
  auto add = [&](auto&& call, std::vector<std::string>& list, const std::string& value) {
    bool ok = false;
    if (!attempt([&] { ok = call(); })) {
      w.raised.push_back(value);
      return false;
    }
    if (!ok) {
      ++w.false_returns;
      return false;
    }
    const auto now = Clock::now();
    gap_until(now);
    last_success = now;
    w.last_success = Seconds(now - start);
    list.push_back(value);
    return true;
  };

  for (long n = 0; Clock::now().time_since_epoch().count() < until.load();) {
    if (!in_session && !attempt([&] { handler.StartSession(); })) continue;
    in_session = true;
    const std::string guid = "w" + std::to_string(w.index + 1) + "-" + std::to_string(++n);
    if (!add([&] { return processes->Add(orvtest::SampleProcessFields(guid, 1, 0)); }, w.processes,
             guid)) {
      continue;
    }
    // The engine finds its new instance by the GUID it gave.
    int32_t id = 0;
    if (!attempt([&] {
          auto rows = processes->Load(ByGuid(guid));
          if (rows->GetNext()) id = rows->CurrentItem()->GetValue("ProcInstanceID").ToLong();
        })) {
      continue;
    }
    if (id == 0) {
      ++w.lookups_missed;
      continue;
    }
    const std::string resource = guid + "/item";
    add([&] { return workitems->Add(orvtest::SampleWorkitemFields(id, 0, resource)); }, w.workitems,
        resource);
  }
  gap_until(Clock::now());
  end_session();
}

// How often each value of the column occurs on the node, read after the node
// has applied every write set the cluster committed before the read.
std::map<std::string, long> Occurrences(const orvmysql::devkit::ServerAddress& address,
                                        const std::string& table, const std::string& column) {
  orvmysql::CMYSqlDP handler;
  handler.Init(address.Connector(kDatabase));
  handler.StartSession();
  auto connection = handler.Connection();
  connection->ExecuteNonQuery("SET SESSION wsrep_sync_wait = 1");
  auto rows = connection->Execute("SELECT " + column + " AS v, COUNT(*) AS n FROM " + table +
                                  " GROUP BY " + column);
  std::map<std::string, long> seen;
  while (rows->GetNext()) {
    auto row = rows->CurrentItem();
    seen[row->GetValue("v").ToText()] = row->GetValue("n").ToLong();
  }
  handler.EndSession();
  return seen;
}

struct Outcome {
  std::vector<std::string> problems;
  void Check(bool ok, const std::string& problem) {
    if (!ok) problems.push_back(problem);
  }
};

// Overlapping key ranges of one entity type mean a key was handed out twice.
void CheckClaims(const std::vector<Writer>& writers, Outcome& outcome) {
  std::map<long, std::vector<Claim>> by_entity;
  for (const Writer& w : writers) {
    for (const Claim& c : w.claims) by_entity[c.entity].push_back(c);
  }
  for (const long entity : {-11L, -10L}) {
    auto& claims = by_entity[entity];
    long adds = 0;
    for (const Writer& w : writers)
      adds += entity == -11 ? static_cast<long>(w.processes.size())
                            : static_cast<long>(w.workitems.size());
    std::cout << "keys of entity type " << entity << ": " << claims.size()
              << " compare-and-set wins seen for " << adds << " successful Adds\n";
    // Every successful Add took a key: fewer wins than Adds means the observer
    // no longer recognises the key statement, and the check below would be empty.
    outcome.Check(static_cast<long>(claims.size()) >= adds,
                  "entity " + std::to_string(entity) + ": fewer key claims seen than Adds");
    std::sort(claims.begin(), claims.end(),
              [](const Claim& a, const Claim& b) { return a.after < b.after; });
    long overlaps = 0;
    for (std::size_t i = 1; i < claims.size(); ++i) {
      if (claims[i].after < claims[i - 1].last) {
        if (overlaps++ < 5) {
          std::cout << "  overlap: writer " << claims[i - 1].writer + 1 << " took ("
                    << claims[i - 1].after << ", " << claims[i - 1].last << "], writer "
                    << claims[i].writer + 1 << " took (" << claims[i].after << ", "
                    << claims[i].last << "]\n";
        }
      }
    }
    std::cout << "  duplicate keys: " << overlaps << "\n";
    outcome.Check(overlaps == 0, "entity " + std::to_string(entity) + ": " +
                                     std::to_string(overlaps) + " keys handed out twice");
  }
}

// Every successful Add exactly once on every node; the nodes hold the same rows.
void CheckPresence(const GaleraCluster& cluster, const std::vector<Writer>& writers,
                   Outcome& outcome) {
  struct Kind {
    const char* table;
    const char* column;
    std::vector<std::string> Writer::*added;
  };
  for (const Kind& kind : {Kind{"tblProcessInstance", "GUID", &Writer::processes},
                           Kind{"tblWorkitems", "ResourceID", &Writer::workitems}}) {
    std::vector<std::map<std::string, long>> nodes;
    for (int n = 0; n < cluster.Size(); ++n) {
      nodes.push_back(Occurrences(cluster.Address(n), kind.table, kind.column));
    }
    long expected = 0, missing = 0, doubled = 0, committed_raised = 0;
    for (const Writer& w : writers) {
      for (const std::string& value : w.*kind.added) {
        ++expected;
        for (const auto& seen : nodes) {
          const auto it = seen.find(value);
          if (it == seen.end()) {
            if (missing++ < 5) std::cout << "  missing on a node: " << value << "\n";
          } else if (it->second != 1) {
            ++doubled;
          }
        }
      }
      for (const std::string& value : w.raised) committed_raised += nodes[0].count(value);
    }
    std::cout << kind.table << ": " << expected << " successful Adds, rows per node";
    for (const auto& seen : nodes) {
      long rows = 0;
      for (const auto& [value, count] : seen) rows += count;
      std::cout << " " << rows;
    }
    std::cout << "; missing " << missing << ", more than once " << doubled
              << "; committed although the Add raised: " << committed_raised << "\n";
    outcome.Check(expected > 0, std::string(kind.table) + ": no Add succeeded");
    outcome.Check(missing == 0, std::string(kind.table) + ": " + std::to_string(missing) +
                                    " successful Adds missing on a node");
    outcome.Check(doubled == 0, std::string(kind.table) + ": rows stored more than once");
    for (std::size_t n = 1; n < nodes.size(); ++n) {
      outcome.Check(nodes[n] == nodes[0], std::string(kind.table) + ": node " +
                                              std::to_string(n + 1) +
                                              " holds other rows than node 1");
    }
  }
}

int Run(const Options& o) {
  const auto begun = Clock::now();
  auto log = [begun](const std::string& line) {
    std::cout << "[" << Fixed(Seconds(Clock::now() - begun)) << " s] " << line << std::endl;
  };
  GaleraCluster cluster(kNodes, log);
  std::cout << "cluster of " << kNodes << " nodes up in " << Fixed(Seconds(Clock::now() - begun))
            << " s, ports";
  for (int n = 0; n < kNodes; ++n) std::cout << " " << cluster.Address(n).port;
  std::cout << (cluster.User().empty() ? ", servers run as the caller"
                                       : ", servers run as " + cluster.User())
            << "\n";
  orvmysql::devkit::InstallSchema(cluster.Address(0), kDatabase);
  log("schema installed through node 1");

  std::vector<Writer> writers(kNodes);
  const int victim = o.kill_node - 1;
  const auto start = Clock::now();
  auto at = [start](double s) {
    return start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(s));
  };
  std::atomic<Clock::rep> until = at(o.seconds).time_since_epoch().count();
  std::vector<std::thread> threads;
  for (int n = 0; n < kNodes; ++n) {
    writers[n].index = n;
    threads.emplace_back(Write, std::ref(writers[n]), cluster.Address(n), start, std::cref(until));
  }
  double killed_at = 0, restarted_at = 0, synced_at = 0;
  std::string transfer, rejoin_error;
  std::this_thread::sleep_until(at(o.kill_at));
  cluster.Kill(victim);
  killed_at = Seconds(Clock::now() - start);
  std::this_thread::sleep_until(at(o.kill_at + o.down));
  restarted_at = Seconds(Clock::now() - start);
  try {
    transfer = cluster.Rejoin(victim);
    synced_at = Seconds(Clock::now() - start);
    // The rejoined node's writer gets a few seconds of its own.
    until = std::max(until.load(), at(synced_at + 5).time_since_epoch().count());
  } catch (const std::exception& e) {
    rejoin_error = e.what();
  }
  for (auto& t : threads) t.join();

  Outcome outcome;
  std::cout << "\nnode " << o.kill_node << " killed at " << Fixed(killed_at)
            << " s, started again at " << Fixed(restarted_at) << " s, ";
  if (rejoin_error.empty()) {
    std::cout << "synced at " << Fixed(synced_at) << " s (rejoin took "
              << Fixed(synced_at - restarted_at) << " s, state by " << transfer << ")\n";
  } else {
    std::cout << "did not rejoin: " << rejoin_error << "\n";
  }
  outcome.Check(rejoin_error.empty(), "node " + std::to_string(o.kill_node) + " did not rejoin");
  outcome.Check(rejoin_error.empty() && writers[victim].last_success > synced_at,
                "the writer of node " + std::to_string(o.kill_node) +
                    " added nothing after the node was back");
  for (int n = 0; n < kNodes; ++n) {
    outcome.Check(cluster.ClusterSize(n) == kNodes,
                  "node " + std::to_string(n + 1) + " does not see the whole cluster");
  }

  std::cout << "\nwriter  node  process adds  work-item adds  longest stall     failures\n";
  for (const Writer& w : writers) {
    std::ostringstream failures;
    for (const auto& [code, count] : w.failures) {
      const auto [first, last] = w.failure_span.at(code);
      failures << code << " x" << count << " (" << Fixed(first) << "-" << Fixed(last) << " s)  ";
    }
    if (w.lookups_missed > 0) failures << "not found by GUID x" << w.lookups_missed << "  ";
    if (w.false_returns > 0) failures << "Add returned false x" << w.false_returns;
    std::cout << std::setw(6) << w.index + 1 << std::setw(6) << w.index + 1 << std::setw(14)
              << w.processes.size() << std::setw(16) << w.workitems.size() << std::setw(8)
              << Fixed(w.longest_stall) << " s at " << std::setw(4) << Fixed(w.stall_from) << "  "
              << (failures.str().empty() ? "none" : failures.str()) << "\n";
    if (w.index != victim) {
      outcome.Check(w.longest_stall <= o.max_stall, "writer " + std::to_string(w.index + 1) +
                                                        " stalled " + Fixed(w.longest_stall) +
                                                        " s (limit " + Fixed(o.max_stall) + " s)");
      // A writer finds on its own node what it has just added there.
      outcome.Check(w.lookups_missed == 0, "writer " + std::to_string(w.index + 1) +
                                               " did not find an instance it had added");
    }
  }
  std::map<long, std::string> texts;
  for (const Writer& w : writers) texts.insert(w.failure_text.begin(), w.failure_text.end());
  for (const auto& [code, text] : texts) std::cout << "  " << code << ": " << text << "\n";
  std::cout << "\n";

  CheckClaims(writers, outcome);
  CheckPresence(cluster, writers, outcome);
  for (const Writer& w : writers) {
    outcome.Check(w.false_returns == 0,
                  "writer " + std::to_string(w.index + 1) + ": an Add returned false");
    // A duplicate key would surface as a failed INSERT.
    outcome.Check(w.failures.count(1062) == 0,
                  "writer " + std::to_string(w.index + 1) + " hit a duplicate entry (1062)");
  }

  std::cout << "\nwall time " << Fixed(Seconds(Clock::now() - begun)) << " s (before stopping)\n";
  if (!outcome.problems.empty()) {
    for (const auto& p : outcome.problems) std::cout << "FAILED: " << p << "\n";
    return 1;
  }
  std::cout << "cluster test passed\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = Parse(argc, argv);
  try {
    return Run(options);
  } catch (const std::exception& e) {
    std::cerr << "orvmysql-cluster-test: " << e.what() << "\n";
    return 1;
  }
}
