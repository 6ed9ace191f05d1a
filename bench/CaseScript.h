#pragma once

// The floor a case's life is measured against: the statements the library
// sent for one case, recorded by a statement observer, sent again through
// bare Connector/C with fresh keys. The keys are taken from tblKeyGen with the
// same statements the library's key generator sends, one key or one block at
// a time, and threads of one process take them one at a time as the library's
// do; the GUID and the tree identifier of the recorded case are replaced by
// fresh ones. So the floor writes the same rows with the same statement texts
// and differs from the library only in what runs between the statements.

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "orvmysql/Connection.h"

struct st_mysql;

namespace orvbench {

// Keys recorded in a script are told from other numbers by their range: the
// key counter of entity type code c is moved to kScriptKeyBase + (-c) *
// kScriptKeySpan before the recorded case runs.
inline constexpr int64_t kScriptKeyBase = 900'000'000;
inline constexpr int64_t kScriptKeySpan = 1'000'000;

// Moves every key counter of tblKeyGen to the start of its range. Throws when
// a counter is past it already (keys handed out in the range would be mixed
// up with the recorded ones).
void MoveKeyCountersForScript(orvmysql::IConnection& connection);

// Hands out keys from tblKeyGen through Connector/C: each entity type's
// counter moved on by a compare-and-set UPDATE of `block` keys, the keys
// handed out one at a time under a lock per entity type. Shared by the
// threads of one floor run.
class FloorKeys {
 public:
  explicit FloorKeys(int32_t block) : block_(block) {}
  // A new key; counts the statements it sent.
  int32_t Next(st_mysql* db, int32_t entity_type_code, long long& statements);

  static std::string ReadStatement(int32_t entity_type_code);
  static std::string MoveStatement(int32_t entity_type_code, int64_t last, int64_t end);

 private:
  struct Reserve {
    std::mutex mutex;
    int64_t next = 0;
    int64_t left = 0;
    int64_t increment = 1;
  };
  Reserve& ReserveFor(int32_t entity_type_code);

  const int32_t block_;
  std::mutex mutex_;
  std::map<int32_t, std::unique_ptr<Reserve>> reserves_;
};

// The recorded statements of one case, as pieces of text between the places
// that differ from case to case: keys, the GUID and the tree identifier.
class CaseScript {
 public:
  // statements: what the case sent, in order, with its keys in their ranges
  // (see MoveKeyCountersForScript); guid and tree: the texts of the case's
  // GUID and tree identifier. The key generator's statements are left out
  // (FloorKeys sends its own); throws when one of them differs from what
  // FloorKeys sends.
  CaseScript(const std::vector<std::string>& statements, std::string guid, std::string tree);

  // Statements of the script, without the key statements.
  size_t Size() const { return statements_.size(); }

  // Sends the case's statements through the connection, with fresh keys from
  // keys and the given GUID and tree texts, reading every row of the results.
  // Returns the statements sent, the key statements included.
  long long Play(st_mysql* db, FloorKeys& keys, const std::string& guid,
                 const std::string& tree) const;

 private:
  struct Piece {
    enum Kind { kText, kKey, kGuid, kTree } kind = kText;
    std::string text;  // kText
    int64_t key = 0;   // kKey: the recorded key
  };
  using Statement = std::vector<Piece>;
  Statement Split(const std::string& sql) const;

  std::string guid_, tree_;
  std::vector<Statement> statements_;
};

}  // namespace orvbench
