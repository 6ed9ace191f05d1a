#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>

#include "orvmysql/Export.h"

namespace orvmysql {

// Run-time error numbers of the platform, raised with their usual texts.
//
// Every text a caller passes (field arrays, names, identifiers, filter
// documents, condition values) must be well-formed UTF-8. Anything else is
// refused with kErrInvalidCall before any session, key or statement, its
// description "Invalid procedure call or argument: text is not valid UTF-8 at
// byte N: ...", N the first bad byte counted from 1.
inline constexpr int32_t kErrInvalidCall = 5;    // Invalid procedure call or argument
inline constexpr int32_t kErrOverflow = 6;       // Overflow
inline constexpr int32_t kErrOutOfMemory = 7;    // Out of memory
inline constexpr int32_t kErrSubscript = 9;      // Subscript out of range
inline constexpr int32_t kErrTypeMismatch = 13;  // Type mismatch
inline constexpr int32_t kErrInternal = 51;      // Internal error
inline constexpr int32_t kErrObjectNotSet = 91;  // Object variable or With block variable not set
inline constexpr int32_t kErrInvalidUseOfNull = 94;     // Invalid use of Null
inline constexpr int32_t kErrResourceNotFound = 326;    // Resource with identifier '...' not found
inline constexpr int32_t kErrCannotCreateObject = 429;  // ActiveX component can't create object
inline constexpr int32_t kErrDuplicateKey = 457;        // This key is already associated with ...

// Base of the library's own error numbers: message number | 0x80040000.
inline constexpr int32_t kObjectErrorBase = static_cast<int32_t>(0x80040000u);
// A statement or connect failure reported by the database client.
inline constexpr int32_t kErrDatabase = static_cast<int32_t>(0x80004005u);  // -2147467259
// A failed connect: message 61441 ORed with the object-error base, as 0x8004F001.
inline constexpr int32_t kErrConnectFailed = static_cast<int32_t>(0x8004F001u);  // -2147160063

// Message numbers of the library's own table.
inline constexpr int32_t kMsgUnknownAttribute = 8194;
inline constexpr int32_t kMsgInvalidOperator = 8195;
inline constexpr int32_t kMsgPrimaryKey = 8196;
inline constexpr int32_t kMsgConnectFailed = 61441;
// A handler (its connection) called from a second thread while a call is under
// way; raised as 0x8004F002 (-2147160062).
inline constexpr int32_t kMsgConnectionInUse = 61442;

// The one exception type of the library. It carries the error's number, its
// source (a trail that grows by one line, " => \r\n" + location, for each
// operation the error passes through) and its description. Database errors
// also keep the server's native error code and SQLSTATE.
class ORVMYSQL_EXPORT Error : public std::exception {
 public:
  Error(int32_t number, std::string source, std::string description);

  int32_t Number() const noexcept { return number_; }
  const std::string& Source() const noexcept { return source_; }
  const std::string& Description() const noexcept { return description_; }
  // The database client's error code (for example 1064 or 2003), 0 for others.
  unsigned NativeError() const noexcept { return native_error_; }
  // Five-character SQLSTATE of a database error, empty for others.
  const std::string& SqlState() const noexcept { return sql_state_; }

  // One line for a log or a person: the number in decimal and hex, the
  // description (its lines joined by " | ", very long ones shortened), the
  // native code and SQLSTATE when there is one, and the innermost location of
  // the source trail. A missing table (1146) adds a hint to run the schema tool.
  const char* what() const noexcept override;

  void SetNative(unsigned native_error, std::string sql_state);
  // Appends " => \r\n" and the location text to the source.
  void AppendLocation(std::string_view location);
  void SetDescription(std::string description);
  void SetNumber(int32_t number) { number_ = number; }

 private:
  int32_t number_;
  std::string source_;
  std::string description_;
  unsigned native_error_ = 0;
  std::string sql_state_;
  mutable std::string what_;
};

// The text of a run-time error number ("Type mismatch" for 13), empty if unknown.
ORVMYSQL_EXPORT std::string_view RuntimeErrorText(int32_t number);

// Raises a run-time error with its usual text; detail, when given, is appended
// after ": " (for example the name of a missing resource).
[[noreturn]] ORVMYSQL_EXPORT void ThrowRuntimeError(int32_t number, std::string_view detail = {});

}  // namespace orvmysql
