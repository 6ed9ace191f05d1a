// Messaging: sending a message with 5 recipients and 2 attachments of 10 kB,
// and listing one recipient's inbox when tblMsgReceipent holds 200,000 rows,
// with the recipient index and, as the baseline, with the index ignored.
// The "statements" counter is the server's own count per iteration.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "bench/BenchSupport.h"
#include "orvmysql/Messaging.h"
#include "orvmysql/Query.h"

namespace {

using orvmysql::FieldArray;

constexpr int kRecipients = 5;
constexpr int kAttachments = 2;
constexpr std::size_t kAttachmentBytes = 10 * 1024;

using orvbench::Counted;
using orvbench::SetStatements;
using orvbench::Source;

// One handler in one session, with the messaging providers.
class Session : public orvbench::CountedSession {
 public:
  Session()
      : messages_(Source<orvmysql::IMessageDP>(Handler(), 18)),
        attachments_(Source<orvmysql::IAttachmentDP>(Handler(), 19)) {}

  orvmysql::IMessageDP& Messages() { return *messages_; }

  // An outgoing new message with its recipients and attachments.
  int32_t Compose(int n) {
    const int32_t id =
        messages_->Add({"u-1", "Benchmark " + std::to_string(n), "Please approve", "user", "Sender",
                        "s@example.org", 1, "", orvmysql::Date::Now(), true, 1, 2, 0});
    for (int r = 0; r < kRecipients; ++r) {
      const std::string who = "user" + std::to_string(r);
      messages_->AddReceipent(id, {who, "user", "User " + std::to_string(r), who + "@x", 1});
    }
    for (int a = 1; a <= kAttachments; ++a) {
      attachments_->Add({id, std::string(kAttachmentBytes, 'a'), "file.txt", "text/plain", a});
    }
    return id;
  }

 private:
  std::shared_ptr<orvmysql::IMessageDP> messages_;
  std::shared_ptr<orvmysql::IAttachmentDP> attachments_;
};

// SendMessage inside a session opened for it (it ends that level itself), as
// the engine calls it.
void BM_Message_Send(benchmark::State& state) {
  Session session;
  long long statements = 0;
  int n = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const int32_t id = session.Compose(n++);
    state.ResumeTiming();
    Counted(state, session, statements, [&] {
      session.Handler().StartSession();
      if (!session.Messages().SendMessage(id)) state.SkipWithError("not sent");
    });
  }
  SetStatements(state, statements);
}
BENCHMARK(BM_Message_Send)->Unit(benchmark::kMillisecond);

// 50,000 messages with four recipients each from 1,000 users: every user's
// inbox holds 200 rows. Written set-based once per run, with keys far above
// those the other benchmarks take.
void FillInboxes(orvmysql::IConnection& db) {
  static bool filled = false;
  if (filled) return;
  db.ExecuteNonQuery(
      "INSERT INTO tblMessages (MessageID,SenderID,Subject,Message,SenderType,SenderName,"
      "SenderEmailID,MessageType,MessageToken,MessageDate,HasAttachments,Direction,Priority,State) "
      "SELECT 100000000 + seq, CONCAT('sender', seq MOD 50), CONCAT('Subject ', seq), 'body', "
      "'user', 'Sender', 's@x', 1, CONCAT('MSG:1', 100000000 + seq), "
      "'2024-01-01' + INTERVAL seq MINUTE, 0, 0, 1, 0 FROM seq_1_to_50000");
  db.ExecuteNonQuery(
      "INSERT INTO tblMsgReceipent (PartyID,FKMessageID,RecepientID,RecepientType,RecepientName,"
      "RecepientEmailID,DisplayMask) SELECT 100000000 + seq, 100000000 + (seq + 3) DIV 4, "
      "CONCAT('user', seq MOD 1000), 'user', CONCAT('User ', seq MOD 1000), 'u@x', 0 "
      "FROM seq_1_to_200000");
  db.ExecuteNonQuery("ANALYZE TABLE tblMessages, tblMsgReceipent");
  filled = true;
}

std::string InboxFilter() {
  orvmysql::CQuery query;
  query.SetEntityName("tblReceivedMessages");
  auto all = std::make_shared<orvmysql::CConditionExpression>(orvmysql::dloAnd);
  all->Conditions()->Add(
      std::make_shared<orvmysql::CCondition>("RecepientID", orvmysql::dcoEqualto, "user7"));
  all->Conditions()->Add(
      std::make_shared<orvmysql::CCondition>("Direction", orvmysql::dcoEqualto, 0));
  query.SetCriteria(all);
  query.OrderBy()->Add(
      std::make_shared<orvmysql::COrderExpression>("MessageDate", orvmysql::dsDescending));
  query.SetMaxRows(50);
  return query.ToXML();
}

// Argument 1: with the recipient index; 0: the index ignored (the baseline).
void BM_Message_Inbox200k(benchmark::State& state) {
  Session session;
  auto& db = *session.Handler().Connection();
  FillInboxes(db);
  const bool indexed = state.range(0) == 1;
  db.ExecuteNonQuery(std::string("ALTER TABLE tblMsgReceipent ALTER INDEX "
                                 "ixMsgReceipentRecepientID ") +
                     (indexed ? "NOT IGNORED" : "IGNORED"));
  const std::string filter = InboxFilter();
  for (auto _ : state) {
    auto inbox = session.Messages().Load(filter);
    int rows = 0;
    while (inbox->GetNext()) {
      benchmark::DoNotOptimize(inbox->CurrentItem()->GetValue("Subject"));
      ++rows;
    }
    if (rows != 50) state.SkipWithError("the inbox did not list 50 messages");
  }
  db.ExecuteNonQuery(
      "ALTER TABLE tblMsgReceipent ALTER INDEX ixMsgReceipentRecepientID NOT IGNORED");
  state.SetLabel(indexed ? "indexed" : "index ignored (baseline)");
}
BENCHMARK(BM_Message_Inbox200k)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

}  // namespace
