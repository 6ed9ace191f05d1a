// The date stamps of the three state changes on a fixed clock: which change
// stamps which column, where nothing may be stamped, set against add, and the
// activity note that every activity state change overwrites.

#include <cstdio>
#include <string>

#include "live/RuntimeFixture.h"
#include "unit/QueryTestSupport.h"

namespace orvtest {
namespace {

using orvmysql::Date;

constexpr int32_t kOpen = 0x4000000;
constexpr int32_t kStart = 0x4000004;
constexpr int32_t kClosed = 0x8000000;
constexpr int32_t kPaused = 0x20000000;

class RuntimeStamps : public RuntimeTest {
 protected:
  // Moves the fixed clock and returns the text the stamps will show.
  std::string At(int hour, int minute) {
    clock_.Set(Date::FromParts(2024, 5, 17, hour, minute, 0));
    char text[32];
    std::snprintf(text, sizeof text, "2024-05-17 %02d:%02d:00", hour, minute);
    return text;
  }

  FixedClock clock_{Date::FromParts(2024, 5, 17, 12, 0, 0)};
};

TEST_F(RuntimeStamps, ProcessStampsOnlyTheStartOfAnOpenInstance) {
  const int32_t id = AddProcess();
  auto row = [&] {
    return Read(processes_->GetProcessByID(id), {"State", "StartedOn", "FinishedOn"});
  };

  At(10, 0);
  EXPECT_TRUE(processes_->ChangeWIState(id, 0, kStart, false));  // current 0: no stamp
  EXPECT_EQ(row().at(0),
            (Expected{{"State", "67108868"}, {"StartedOn", "NULL"}, {"FinishedOn", "NULL"}}));
  EXPECT_TRUE(processes_->ChangeWIState(id, kClosed, 1, true));  // no finish rule here
  EXPECT_EQ(row().at(0).at("FinishedOn"), "NULL");

  const std::string started = At(10, 5);
  EXPECT_TRUE(processes_->ChangeWIState(id, kOpen, kStart, true));
  EXPECT_EQ(row().at(0), (Expected{{"State", std::to_string(67108869 + kStart)},
                                   {"StartedOn", started},
                                   {"FinishedOn", "NULL"}}));
  // Pausing adds a flag and resuming takes it away again; neither stamps.
  At(11, 0);
  EXPECT_TRUE(processes_->ChangeWIState(id, kStart, kPaused, true));
  EXPECT_TRUE(processes_->ChangeWIState(id, kStart | kPaused, -kPaused, true));
  EXPECT_EQ(processes_->GetCurrentState(id), 67108869 + kStart);
  EXPECT_EQ(row().at(0).at("StartedOn"), started);
}

TEST_F(RuntimeStamps, ActivityStampsStartFirstThenFinishAndAlwaysWritesTheNote) {
  const int32_t id = AddActivityInstance(AddProcess(), "Review it");
  auto row = [&] {
    return Read(activity_instances_->GetTaskByID(id),
                {"State", "StartedOn", "FinishedOn", "ActivityNote"})
        .at(0);
  };

  // Open with both bits of the start in the value: the start wins, also when
  // the current word is closed as well.
  const std::string started = At(9, 10);
  EXPECT_TRUE(activity_instances_->ChangeAIState(id, kOpen | kClosed, kStart, false, "begun"));
  EXPECT_EQ(row(), (Expected{{"State", "67108868"},
                             {"StartedOn", started},
                             {"FinishedOn", "NULL"},
                             {"ActivityNote", "begun"}}));

  // Not open: nothing stamped; the note is overwritten, an empty one with ''.
  At(9, 20);
  EXPECT_TRUE(activity_instances_->ChangeAIState(id, 0, kStart, false, ""));
  EXPECT_EQ(row(), (Expected{{"State", "67108868"},
                             {"StartedOn", started},
                             {"FinishedOn", "NULL"},
                             {"ActivityNote", ""}}));

  // Closed: any change stamps the finish, whatever the value.
  const std::string finished = At(9, 30);
  EXPECT_TRUE(activity_instances_->ChangeAIState(id, kClosed, 134217729, false, "it's done"));
  EXPECT_EQ(row(), (Expected{{"State", "134217729"},
                             {"StartedOn", started},
                             {"FinishedOn", finished},
                             {"ActivityNote", "it's done"}}));
}

TEST_F(RuntimeStamps, WorkItemStampsStartAndAcknowledgementTogetherUnlessTheWordIsZero) {
  const int32_t process = AddProcess();
  const int32_t task = AddActivityInstance(process, "Review it");
  const int32_t id = AddWorkitem(process, task, "ann");
  auto row = [&] {
    return Read(workitems_->GetWorkItemByID(id),
                {"State", "StartedOn", "AcknowledgedOn", "FinishedOn"})
        .at(0);
  };

  At(8, 0);
  EXPECT_TRUE(workitems_->ChangeWorkitemState(id, 0, kStart, false));
  EXPECT_EQ(row(), (Expected{{"State", "67108868"},
                             {"StartedOn", "NULL"},
                             {"AcknowledgedOn", "NULL"},
                             {"FinishedOn", "NULL"}}));

  // Any current word but 0 will do, not only an open one; a closed current
  // word does not stop it either.
  const std::string started = At(8, 15);
  EXPECT_TRUE(workitems_->ChangeWorkitemState(id, kClosed, kStart, false));
  EXPECT_EQ(row(), (Expected{{"State", "67108868"},
                             {"StartedOn", started},
                             {"AcknowledgedOn", started},
                             {"FinishedOn", "NULL"}}));

  // Closing stamps nothing; a change made while closed stamps the finish.
  At(8, 30);
  EXPECT_TRUE(workitems_->ChangeWorkitemState(id, kStart, kClosed, false));
  EXPECT_EQ(row().at("FinishedOn"), "NULL");
  const std::string finished = At(8, 45);
  EXPECT_TRUE(workitems_->ChangeWorkitemState(id, kClosed, 1, true));
  EXPECT_EQ(row(), (Expected{{"State", "134217729"},
                             {"StartedOn", started},
                             {"AcknowledgedOn", started},
                             {"FinishedOn", finished}}));
}

}  // namespace
}  // namespace orvtest
