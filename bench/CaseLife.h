#pragma once

// One case's life as the engine plays it through the library, as a list of
// steps run in order on one handler (outside any session, as the engine calls
// the providers): the process instance is started, three activities are
// given its parameter values, three activities are entered with two work
// items each, every activity instance and work item is started or
// acknowledged and finished. The keys the library hands out are
// found again the way the engine finds them (by the GUID it gave the process
// instance, by process and activity, by activity instance).

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "orvmysql/DataHandler.h"
#include "orvmysql/Engine.h"
#include "orvmysql/InstanceData.h"
#include "orvmysql/Runtime.h"

namespace orvbench {

inline constexpr int kCaseActivities = 3;
inline constexpr int kItemsPerActivity = 2;

// The definition every case runs: a process definition and its activities.
struct CaseDefinition {
  int32_t process = 0;
  std::array<int32_t, kCaseActivities> activities{};
};

// Stores a new definition through the providers.
CaseDefinition StoreCaseDefinition(orvmysql::CMYSqlDP& handler);

// The keys of one case, filled in as its steps run.
struct CaseKeys {
  int32_t process = 0;
  std::array<int32_t, kCaseActivities> tasks{};
  std::array<std::array<int32_t, kItemsPerActivity>, kCaseActivities> items{};
};

// The providers of one engine thread, on a handler of its own.
class CaseLife {
 public:
  CaseLife(std::shared_ptr<orvmysql::CMYSqlDP> handler, const CaseDefinition& definition);

  // Plays one case whose process instance gets the GUID; returns its keys.
  // A failing step is raised with its name in front of the message.
  CaseKeys Run(const std::string& guid);

  orvmysql::CMYSqlDP& Handler() { return *handler_; }

 private:
  struct Step;
  static const std::vector<Step>& Steps();

  void StartProcess(const std::string& guid, CaseKeys& keys);
  void RecordValues(const CaseKeys& keys);
  void EnterActivity(int activity, CaseKeys& keys);
  void OfferWorkItems(int activity, CaseKeys& keys);
  void FinishWorkItems(int activity, const CaseKeys& keys);
  void FinishActivity(int activity, const CaseKeys& keys);
  void CopyCaseData(const CaseKeys& keys);
  void EndProcess(const CaseKeys& keys);

  std::shared_ptr<orvmysql::CMYSqlDP> handler_;
  CaseDefinition definition_;
  std::shared_ptr<orvmysql::IProcInstanceDP> processes_;
  std::shared_ptr<orvmysql::IProcInstanceParamsDP> values_;
  std::shared_ptr<orvmysql::IActivityInstanceDP> tasks_;
  std::shared_ptr<orvmysql::IWorkitemsDP> items_;
  std::shared_ptr<orvmysql::IOrvEngineDP> engine_;
};

}  // namespace orvbench
