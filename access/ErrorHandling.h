#pragma once

// The re-raise convention. Every public operation runs its body under Guard:
// an error leaving the body is raised again with the same number and
// description, and " => \r\n" + the operation's location text + the line
// number appended to its source. Location texts ending in "(" get the number
// and ")"; all others just the number.
//
// The line number is the line of the last statement call the body marked with
// MarkLine (the statement helpers do that, taking their caller's line through a
// __builtin_LINE() default argument), or else the line where the body was
// guarded.

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "orvmysql/Error.h"
#include "orvmysql/Variant.h"

namespace orvmysql::detail {

struct Handler {
  std::string_view location;
  // Error 91 (no connection object) gets " (Connection)" appended to its description.
  bool connection_on_91 = false;
  // When set, the failed statement's text and "\r\n" go in front of the description.
  const std::string* statement = nullptr;
};

class LineFrame {
 public:
  explicit LineFrame(int line);
  ~LineFrame();
  LineFrame(const LineFrame&) = delete;
  LineFrame& operator=(const LineFrame&) = delete;
  int Line() const { return line_; }

 private:
  friend void MarkLine(int line);
  int line_;
  LineFrame* previous_;
};

// Records the line of the call about to be made in the innermost guarded operation.
void MarkLine(int line);

// Converts the exception in flight into an Error (a foreign exception becomes
// run-time error 7 or 51), applies the handler and throws it. Call only from a
// catch block.
[[noreturn]] void Reraise(const Handler& handler, int line);

// Converts the exception in flight into an Error without changing it.
Error CurrentError();

template <class Body>
decltype(auto) Guard(const Handler& handler, Body&& body, int line = __builtin_LINE()) {
  LineFrame frame(line);
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    Reraise(handler, frame.Line());
  }
}

// As Guard, and runs cleanup (which must not throw; errors in it are dropped)
// before the error is raised again.
template <class Body, class Cleanup>
decltype(auto) Guard(const Handler& handler, Body&& body, Cleanup&& cleanup,
                     int line = __builtin_LINE()) {
  LineFrame frame(line);
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    try {
      cleanup();
    } catch (...) {
    }
    Reraise(handler, frame.Line());
  }
}

// The message text of a number: the host's lookup when one is installed and
// knows the number, else the current language's catalog, else the built-in
// table. Raises 326 for a number in none of them; problems with the language
// files never raise here.
std::string LoadMessage(int32_t number);

// One row of the library's own message table.
struct Message {
  int32_t number;
  const char* text;
};
std::span<const Message> BuiltInMessages();

// The text of the built-in table; raises 326 for a number not in it.
std::string BuiltInMessage(int32_t number);

// The installed host lookup's text, empty when there is none or it does not
// know the number.
std::string HostMessage(int32_t number);

// Raises one of the library's own errors: number | 0x80040000, source
// "pelOrv=> [Err:<number>][Ver:<major>.<minor>.<revision>]", and the message
// with "%0", "%1", ... replaced by the parameters' texts. The location is
// accepted and not used.
[[noreturn]] void RaiseError(int32_t number, std::string_view location,
                             std::initializer_list<Variant> params = {});

// Installs a per-language message lookup; it returns an empty text for a
// number it does not know. Null restores the built-in table alone.
void SetMessageLookup(std::string (*lookup)(int32_t number));

}  // namespace orvmysql::detail
