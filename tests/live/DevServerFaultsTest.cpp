// The private server's fault controls, which the fault tests build on: a paused
// server answers once resumed, a killed one refuses connections, and a restart
// brings it back on the same address with its data.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <memory>

#include "orvmysql/orvmysql.h"
#include "tools/DevServer.h"

using namespace orvmysql;

namespace {

TEST(DevServerFaults, PauseResumeKillRestart) {
  const char* mariadbd = std::getenv("ORVMYSQL_MARIADBD");
  if (!std::filesystem::exists(mariadbd != nullptr ? mariadbd : "/usr/sbin/mariadbd")) {
    GTEST_SKIP() << "no server binaries to start a private server with (mariadb-server-core)";
  }
  auto server = devkit::DevServer::AcquirePrivate({});
  const devkit::ServerAddress address = server->Address();
  devkit::AdminExecute(address, "CREATE DATABASE faults_devserver");
  devkit::AdminExecute(address, "CREATE TABLE faults_devserver.t (v INT) ENGINE=InnoDB");
  devkit::AdminExecute(address, "INSERT INTO faults_devserver.t VALUES (7)");
  auto count = [&] {
    return NewConnection(address.Connector("faults_devserver"))
        ->ExecuteScalar("SELECT SUM(v) FROM t", "");
  };

  server->Pause();
  auto pending = std::async(std::launch::async, count);
  EXPECT_EQ(pending.wait_for(std::chrono::milliseconds(500)), std::future_status::timeout)
      << "a paused server answered";
  server->Resume();
  EXPECT_EQ(pending.get(), "7");

  server->Kill();
  EXPECT_THROW(count(), std::exception);

  server->Restart();
  EXPECT_EQ(server->Address().socket, address.socket);
  EXPECT_EQ(server->Address().port, address.port);
  EXPECT_EQ(count(), "7");
  // A running server restarts too (killed first).
  server->Restart();
  EXPECT_EQ(count(), "7");
}

}  // namespace
