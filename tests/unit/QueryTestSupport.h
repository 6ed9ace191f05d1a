#pragma once

// Helpers shared by the query-model tests: building trees in one expression,
// catching the library's errors, and a fixed clock.

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>

#include "orvmysql/Attributes.h"
#include "orvmysql/ConditionBuilder.h"
#include "orvmysql/Error.h"
#include "orvmysql/Query.h"
#include "orvmysql/Variant.h"
#include "query/DateRanges.h"

#include "support/ErrorCapture.h"

namespace orvtest {

using namespace orvmysql;

// The select list of the work items (the whole head of the plain list).
inline const std::string kWorkitemSelect =
    "SELECT WorkitemID,ResourceID,ResourceType,resourceName,Subject,Note,tblWorkitems.State,"
    "FKActivityInstanceID,WorkitemActivityInstanceType,tblWorkitems.FKProcInstanceID,"
    "AcknowledgedOn,tblWorkitems.FinishedOn,tblWorkitems.CreatedOn,tblWorkitems.StartedOn,"
    "TaskIndex,tblWorkitems.Priority,tblWorkitems.ScheduledStartTime,tblWorkitems.ScheduledEndTime,"
    "tblWorkitems.ScheduledTimeout,tblWorkitems.DisplayMask,tblActivityInstance.FKActivityID FROM "
    "tblWorkitems INNER JOIN tblActivityInstance ON tblWorkitems.FKActivityInstanceID = "
    "tblActivityInstance.ActivityInstanceID ";

inline int32_t OwnError(int32_t message) {
  return kObjectErrorBase | message;
}

inline std::shared_ptr<CCondition> Cond(std::string attribute, ConditionOperatorEnum op,
                                        Variant value = {},
                                        ConditionFieldValueTypeEnum type = dcfvtConstant) {
  auto condition = std::make_shared<CCondition>(std::move(attribute), op, std::move(value));
  condition->SetValueType(type);
  return condition;
}

inline std::shared_ptr<CConditionExpression> Group(
    LogicalOperatorEnum op, std::initializer_list<std::shared_ptr<CCondition>> conditions,
    std::initializer_list<std::shared_ptr<CConditionExpression>> nested = {}) {
  auto group = std::make_shared<CConditionExpression>(op);
  for (const auto& c : conditions) group->Conditions()->Add(c);
  for (const auto& e : nested) group->ConditionExpressions()->Add(e);
  return group;
}

// Fixes Date::Now for the lifetime of the object, and weeks to start on Sunday.
class FixedClock {
 public:
  explicit FixedClock(Date now) {
    Now() = now;
    SetClockForTesting([] { return Now(); });
    detail::SetFirstDayOfWeekForTesting(1);
  }
  ~FixedClock() {
    SetClockForTesting(nullptr);
    detail::SetFirstDayOfWeekForTesting(0);
  }
  void Set(Date now) { Now() = now; }

 private:
  static Date& Now() {
    static Date now;
    return now;
  }
};

}  // namespace orvtest
