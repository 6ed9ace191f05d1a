#pragma once

// Shared by the live tests of the engine operations: the engine provider on
// the runtime fixture's handler, a process tree in mixed states built through
// the runtime providers, and the State words of its rows read directly.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "live/RuntimeFixture.h"
#include "orvmysql/Engine.h"

namespace orvtest {

class EngineTest : public RuntimeTest {
 protected:
  void SetUp() override;

  // A root (open and started) with two sub-processes (one open, one
  // completed); each has an open, a started and a completed activity
  // instance, with two work items on the open one (open, completed), one on
  // the started one (started) and one on the completed one (completed).
  // Completed rows carry FinishedOn 2024-05-01 08:00:00.
  struct Tree {
    int32_t root = 0, open_sub = 0, closed_sub = 0;
    std::vector<int32_t> tasks;  // three per process, in the order above
    std::string ids;             // the three process ids joined by ","
  };
  Tree AddTree();

  // The State word of every row of the process instances, their activity
  // instances and their work items, keyed "p<id>", "a<id>", "w<id>".
  static std::map<std::string, int32_t> States(const std::string& process_ids);
  // How many rows the ten tables that ClearLog empties hold for the processes.
  static long long LogRows(const std::string& process_ids);
  // One row in each of the tables that only ClearLog reaches (activity
  // instance properties and parameters, paths, splits, case data, instance
  // data, threads) for every activity instance of the process.
  static void AddLogData(int32_t process_id);

  std::shared_ptr<orvmysql::IOrvEngineDP> engine_;
};

}  // namespace orvtest
