// orvmysql-keys: key allocation under load.
//
//   orvmysql-keys soak [--threads 8] [--processes 1] [--seconds 20] [--code -10] [--classic]
//     Starts a private server (or uses the one ORVMYSQL_SERVER names), creates a
//     database with the schema, and runs the given number of processes, each with
//     that many threads, every thread with a data handler of its own in one
//     session, taking keys for one entity type until the time is up. Prints the
//     share of requests that failed with 8196, duplicates, keys used up without
//     being handed out and key statements per key; exits 1 on a duplicate.
//   orvmysql-keys take --database NAME [--code -10] [--count N | --seconds S]
//                      [--threads 1] [--classic]
//     One writer process on an existing database (server from ORVMYSQL_SERVER,
//     ORVMYSQL_PORT, ORVMYSQL_USER, ORVMYSQL_PASSWORD): takes N keys in all
//     (8196 retried), or keys for S seconds, and prints each key on a line of
//     its own, then "# requests R failed F errors E".
//
// The library's writers take keys with GetNextID, in blocks when
// ORVMYSQL_KEY_BLOCK is set; --classic takes them with the older tools'
// protocol instead (tools/ClassicKeys.h).

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "orvmysql/DataHandler.h"
#include "orvmysql/Keys.h"
#include "tools/ClassicKeys.h"
#include "tools/DevServer.h"

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;
using orvmysql::devkit::ServerAddress;

struct Options {
  std::string command;
  std::string database;
  int32_t code = -10;
  long count = 0;
  double seconds = 0;
  int threads = 1;
  int processes = 1;
  bool classic = false;
};

[[noreturn]] void Usage() {
  std::cerr << "usage: orvmysql-keys soak [--threads 8] [--processes 1] [--seconds 20] [--code -10]"
               " [--classic]\n"
               "       orvmysql-keys take --database NAME [--code -10] [--count N | --seconds S]"
               " [--threads 1] [--classic]\n"
               "The library's writers take keys in blocks when ORVMYSQL_KEY_BLOCK is set.\n";
  std::exit(2);
}

Options Parse(int argc, char** argv) {
  if (argc < 2) Usage();
  Options o;
  o.command = argv[1];
  if (o.command == "soak") {
    o.threads = 8;
    o.seconds = 20;
  } else if (o.command != "take") {
    Usage();
  }
  for (int i = 2; i < argc; ++i) {
    const std::string arg = argv[i];
    auto value = [&] {
      if (i + 1 >= argc) Usage();
      return std::string(argv[++i]);
    };
    try {
      if (arg == "--database")
        o.database = value();
      else if (arg == "--code")
        o.code = std::stoi(value());
      else if (arg == "--count")
        o.count = std::stol(value());
      else if (arg == "--seconds")
        o.seconds = std::stod(value());
      else if (arg == "--threads")
        o.threads = std::stoi(value());
      else if (arg == "--processes")
        o.processes = std::stoi(value());
      else if (arg == "--classic")
        o.classic = true;
      else
        Usage();
    } catch (const std::logic_error&) {
      Usage();
    }
  }
  if (o.threads < 1 || o.processes < 1 || (o.command == "take" && o.database.empty()) ||
      (o.command == "take" && (o.count > 0) == (o.seconds > 0))) {
    Usage();
  }
  return o;
}

// What one writer did.
struct Tally {
  std::vector<int32_t> keys;
  long requests = 0, failed = 0, errors = 0;
};

// One thread: a handler of its own, one session, keys until the count or the
// time is reached.
Tally Write(const Options& o, const orvmysql::CDPConnector& connector, long count,
            Clock::time_point until) {
  Tally t;
  auto handler = std::make_shared<orvmysql::CMYSqlDP>();
  handler->Init(connector);
  auto connection = handler->Connection();
  connection->StartSession();
  auto more = [&] {
    return count > 0 ? static_cast<long>(t.keys.size()) < count : Clock::now() < until;
  };
  while (more()) {
    ++t.requests;
    try {
      if (o.classic) {
        if (auto key = orvmysql::devkit::ClassicNextKey(*connection, o.code))
          t.keys.push_back(*key);
        else
          ++t.failed;
      } else {
        t.keys.push_back(std::stoi(orvmysql::GetNextID(*connection, o.code)));
      }
    } catch (const orvmysql::Error& e) {
      if (e.Number() == static_cast<int32_t>(0x80040000u | orvmysql::kMsgPrimaryKey)) {
        ++t.failed;
      } else {
        if (t.errors++ == 0) std::cerr << "orvmysql-keys: " << e.what() << "\n";
        if (t.errors > 100) break;
      }
    }
  }
  connection->EndSession();
  return t;
}

int Take(const Options& o) {
  const auto server = orvmysql::devkit::DevServer::Acquire();
  const auto connector = server->Address().Connector(o.database);
  const auto until = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(o.seconds));
  std::vector<Tally> tallies(o.threads);
  std::vector<std::thread> threads;
  for (int i = 0; i < o.threads; ++i) {
    const long share = o.count / o.threads + (i < o.count % o.threads ? 1 : 0);
    threads.emplace_back([&, i, share] { tallies[i] = Write(o, connector, share, until); });
  }
  for (auto& thread : threads) thread.join();
  Tally all;
  for (const Tally& t : tallies) {
    for (int32_t key : t.keys) std::cout << key << "\n";
    all.requests += t.requests;
    all.failed += t.failed;
    all.errors += t.errors;
  }
  std::cout << "# requests " << all.requests << " failed " << all.failed << " errors " << all.errors
            << "\n";
  return all.errors == 0 ? 0 : 1;
}

// Reads a writer's output: its keys and its counts.
Tally ReadOutput(const std::filesystem::path& file) {
  Tally t;
  std::ifstream in(file);
  std::string line;
  while (std::getline(in, line)) {
    if (line.rfind("# requests ", 0) == 0) {
      std::string word;
      std::istringstream fields(line.substr(2));
      fields >> word >> t.requests >> word >> t.failed >> word >> t.errors;
    } else if (!line.empty()) {
      t.keys.push_back(std::stoi(line));
    }
  }
  return t;
}

long long GlobalStatus(orvmysql::IConnection& connection, const std::string& name) {
  return std::stoll(connection.ExecuteScalar(
      "SELECT VARIABLE_VALUE FROM information_schema.GLOBAL_STATUS WHERE VARIABLE_NAME = '" + name +
          "'",
      "0"));
}

int Soak(const Options& o) {
  const auto server = orvmysql::devkit::DevServer::Acquire();
  const ServerAddress& a = server->Address();
  const std::string database = "orvkeys_" + std::to_string(getpid());
  orvmysql::devkit::InstallSchema(a, database);
  // The writers reach the same server through the environment.
  setenv("ORVMYSQL_SERVER", a.server.c_str(), 1);
  setenv("ORVMYSQL_PORT", a.port.c_str(), 1);
  setenv("ORVMYSQL_USER", a.user.c_str(), 1);
  setenv("ORVMYSQL_PASSWORD", a.password.c_str(), 1);
  auto connection = orvmysql::NewConnection(a.Connector(database));
  connection->StartSession();
  // Every reading of the counters is itself a SELECT; two fall between the
  // first reading and the last.
  const long long selects = GlobalStatus(*connection, "COM_SELECT");
  const long long updates = GlobalStatus(*connection, "COM_UPDATE");

  const auto dir = std::filesystem::temp_directory_path() / database;
  std::filesystem::create_directories(dir);
  std::vector<std::string> args = {"orvmysql-keys", "take",
                                   "--database",    database,
                                   "--code",        std::to_string(o.code),
                                   "--seconds",     std::to_string(o.seconds),
                                   "--threads",     std::to_string(o.threads)};
  if (o.classic) args.push_back("--classic");
  std::vector<char*> argv;
  for (auto& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);
  std::vector<pid_t> children;
  for (int p = 0; p < o.processes; ++p) {
    const std::string out = (dir / ("writer" + std::to_string(p))).string();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t pid = 0;
    if (posix_spawn(&pid, "/proc/self/exe", &actions, nullptr, argv.data(), environ) != 0) {
      std::cerr << "orvmysql-keys: cannot start a writer\n";
      return 1;
    }
    posix_spawn_file_actions_destroy(&actions);
    children.push_back(pid);
  }
  bool writers_ok = true;
  for (pid_t pid : children) {
    int status = 0;
    waitpid(pid, &status, 0);
    writers_ok = writers_ok && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  }
  const long long key_selects = GlobalStatus(*connection, "COM_SELECT") - selects - 2;
  const long long key_updates = GlobalStatus(*connection, "COM_UPDATE") - updates;
  const long long used = std::stoll(connection->ExecuteScalar(
      "SELECT LastAllocatedKey FROM tblKeyGen WHERE EntityTypeCode = " + std::to_string(o.code),
      "0"));
  connection->EndSession();

  Tally all;
  std::set<int32_t> unique;
  for (int p = 0; p < o.processes; ++p) {
    Tally t = ReadOutput(dir / ("writer" + std::to_string(p)));
    all.requests += t.requests;
    all.failed += t.failed;
    all.errors += t.errors;
    all.keys.insert(all.keys.end(), t.keys.begin(), t.keys.end());
    unique.insert(t.keys.begin(), t.keys.end());
  }
  std::filesystem::remove_all(dir);
  orvmysql::devkit::AdminExecute(a, "DROP DATABASE IF EXISTS `" + database + "`");

  const long duplicates = static_cast<long>(all.keys.size() - unique.size());
  const long beyond = unique.empty() ? 0 : (*unique.rbegin() > used ? 1 : 0);
  const char* block = std::getenv("ORVMYSQL_KEY_BLOCK");
  const double keys = static_cast<double>(all.keys.size());
  std::cout << "writer: " << (o.classic ? "classic protocol" : "GetNextID")
            << (!o.classic && block != nullptr ? std::string(", ORVMYSQL_KEY_BLOCK=") + block : "")
            << "; " << o.processes << " process(es) x " << o.threads << " thread(s), " << o.seconds
            << " s, entity type " << o.code << "\n"
            << "requests " << all.requests << ", keys " << all.keys.size() << " ("
            << keys / o.seconds << " per s), 8196: " << all.failed << " ("
            << (all.requests > 0 ? 100.0 * all.failed / all.requests : 0) << "%), other errors "
            << all.errors << "\n"
            << "duplicates " << duplicates << ", keys beyond the row " << beyond
            << ", keys used up " << used << ", not handed out "
            << used - static_cast<long long>(unique.size()) << "\n"
            << "key statements: " << key_selects << " SELECT, " << key_updates << " UPDATE ("
            << (keys > 0 ? (key_selects + key_updates) / keys : 0) << " per key)\n";
  return duplicates == 0 && beyond == 0 && writers_ok ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const Options o = Parse(argc, argv);
  try {
    return o.command == "soak" ? Soak(o) : Take(o);
  } catch (const std::exception& e) {
    std::cerr << "orvmysql-keys: " << e.what() << "\n";
    return 1;
  }
}
