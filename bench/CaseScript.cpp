#include "bench/CaseScript.h"

#include <mysql.h>

#include <cctype>
#include <stdexcept>
#include <utility>

namespace orvbench {

namespace {

constexpr int kKeyAttempts = 6;

bool IsWordChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// The number that follows the first occurrence of label in sql.
int64_t NumberAfter(const std::string& sql, const std::string& label) {
  const size_t at = sql.find(label);
  if (at == std::string::npos) throw std::runtime_error("no \"" + label + "\" in: " + sql);
  return std::stoll(sql.substr(at + label.size()));
}

void Send(MYSQL* db, const std::string& sql) {
  if (mysql_real_query(db, sql.data(), sql.size()) != 0) {
    throw std::runtime_error(std::string(mysql_error(db)) + " in: " + sql.substr(0, 200));
  }
}

}  // namespace

void MoveKeyCountersForScript(orvmysql::IConnection& connection) {
  const std::string start =
      std::to_string(kScriptKeyBase) + " - EntityTypeCode * " + std::to_string(kScriptKeySpan);
  connection.ExecuteNonQuery("UPDATE tblKeyGen SET LastAllocatedKey = " + start +
                             " WHERE LastAllocatedKey < " + start);
  const std::string past = connection.ExecuteScalar(
      "SELECT COUNT(*) FROM tblKeyGen WHERE LastAllocatedKey <> " + start, "0");
  if (past != "0") {
    throw std::runtime_error(past + " key counters are past the range the case script reads");
  }
}

std::string FloorKeys::ReadStatement(int32_t entity_type_code) {
  return " SELECT LastAllocatedKey,Seed,Increment,`Offset` FROM tblKeyGen WHERE EntityTypeCode = " +
         std::to_string(entity_type_code);
}

std::string FloorKeys::MoveStatement(int32_t entity_type_code, int64_t last, int64_t end) {
  return " UPDATE tblKeyGen SET LastAllocatedKey = " + std::to_string(end) +
         " WHERE EntityTypeCode = " + std::to_string(entity_type_code) +
         " AND LastAllocatedKey = " + std::to_string(last);
}

FloorKeys::Reserve& FloorKeys::ReserveFor(int32_t entity_type_code) {
  std::lock_guard hold(mutex_);
  auto& reserve = reserves_[entity_type_code];
  if (!reserve) reserve = std::make_unique<Reserve>();
  return *reserve;
}

int32_t FloorKeys::Next(MYSQL* db, int32_t entity_type_code, long long& statements) {
  Reserve& reserve = ReserveFor(entity_type_code);
  std::lock_guard hold(reserve.mutex);
  if (reserve.left > 0) {
    --reserve.left;
    const int64_t key = reserve.next;
    reserve.next += reserve.increment;
    return static_cast<int32_t>(key);
  }
  for (int attempt = 0; attempt < kKeyAttempts; ++attempt) {
    Send(db, ReadStatement(entity_type_code));
    ++statements;
    MYSQL_RES* result = mysql_store_result(db);
    MYSQL_ROW row = result != nullptr ? mysql_fetch_row(result) : nullptr;
    if (row == nullptr) {
      if (result != nullptr) mysql_free_result(result);
      throw std::runtime_error("no key counter for " + std::to_string(entity_type_code));
    }
    const int64_t last = std::stoll(row[0]), seed = std::stoll(row[1]),
                  increment = std::stoll(row[2]), offset = std::stoll(row[3]);
    mysql_free_result(result);
    const int64_t first = (last == seed || last == 0) ? seed + offset : last + increment;
    const int64_t end = first + (block_ - 1) * increment;
    Send(db, MoveStatement(entity_type_code, last, end));
    ++statements;
    if (mysql_affected_rows(db) == 1) {
      reserve.next = first + increment;
      reserve.left = block_ - 1;
      reserve.increment = increment;
      return static_cast<int32_t>(first);
    }
  }
  throw std::runtime_error("every attempt at a key for " + std::to_string(entity_type_code) +
                           " lost");
}

CaseScript::CaseScript(const std::vector<std::string>& statements, std::string guid,
                       std::string tree)
    : guid_(std::move(guid)), tree_(std::move(tree)) {
  for (const std::string& sql : statements) {
    if (sql.find("tblKeyGen") == std::string::npos) {
      statements_.push_back(Split(sql));
      continue;
    }
    const auto code = static_cast<int32_t>(NumberAfter(sql, "EntityTypeCode = "));
    const std::string floor =
        sql.find(" UPDATE ") == 0
            ? FloorKeys::MoveStatement(code, NumberAfter(sql, "AND LastAllocatedKey = "),
                                       NumberAfter(sql, "SET LastAllocatedKey = "))
            : FloorKeys::ReadStatement(code);
    if (floor != sql) {
      throw std::runtime_error("the floor's key statement\n  " + floor +
                               "\ndiffers from the library's\n  " + sql);
    }
  }
}

CaseScript::Statement CaseScript::Split(const std::string& sql) const {
  Statement pieces;
  std::string text;
  auto push = [&](Piece piece) {
    if (!text.empty()) pieces.push_back({Piece::kText, std::move(text), 0});
    text.clear();
    pieces.push_back(std::move(piece));
  };
  for (size_t i = 0; i < sql.size();) {
    if (!guid_.empty() && sql.compare(i, guid_.size(), guid_) == 0) {
      push({Piece::kGuid, {}, 0});
      i += guid_.size();
      continue;
    }
    if (!tree_.empty() && sql.compare(i, tree_.size(), tree_) == 0) {
      push({Piece::kTree, {}, 0});
      i += tree_.size();
      continue;
    }
    if (std::isdigit(static_cast<unsigned char>(sql[i])) && (i == 0 || !IsWordChar(sql[i - 1]))) {
      size_t end = i;
      while (end < sql.size() && std::isdigit(static_cast<unsigned char>(sql[end]))) ++end;
      if (end - i <= 10 && (end == sql.size() || !IsWordChar(sql[end]))) {
        const int64_t number = std::stoll(sql.substr(i, end - i));
        if (number > kScriptKeyBase && number < kScriptKeyBase + 100 * kScriptKeySpan) {
          push({Piece::kKey, {}, number});
          i = end;
          continue;
        }
      }
      text.append(sql, i, end - i);
      i = end;
      continue;
    }
    text += sql[i++];
  }
  if (!text.empty()) pieces.push_back({Piece::kText, std::move(text), 0});
  return pieces;
}

long long CaseScript::Play(MYSQL* db, FloorKeys& keys, const std::string& guid,
                           const std::string& tree) const {
  // The recorded keys and the fresh keys that stand for them in this case.
  std::vector<std::pair<int64_t, int32_t>> fresh;
  long long statements = 0;
  std::string sql;
  for (const Statement& statement : statements_) {
    sql.clear();
    for (const Piece& piece : statement) {
      switch (piece.kind) {
        case Piece::kText:
          sql += piece.text;
          break;
        case Piece::kGuid:
          sql += guid;
          break;
        case Piece::kTree:
          sql += tree;
          break;
        case Piece::kKey: {
          auto known = fresh.begin();
          while (known != fresh.end() && known->first != piece.key) ++known;
          if (known == fresh.end()) {
            const auto code =
                static_cast<int32_t>(-((piece.key - kScriptKeyBase) / kScriptKeySpan));
            fresh.emplace_back(piece.key, keys.Next(db, code, statements));
            known = fresh.end() - 1;
          }
          sql += std::to_string(known->second);
          break;
        }
      }
    }
    Send(db, sql);
    ++statements;
    if (MYSQL_RES* result = mysql_store_result(db)) {
      while (mysql_fetch_row(result) != nullptr) {
      }
      mysql_free_result(result);
    } else if (mysql_field_count(db) != 0) {
      throw std::runtime_error(std::string(mysql_error(db)) + " reading the rows of: " + sql);
    }
  }
  return statements;
}

}  // namespace orvbench
