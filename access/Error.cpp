#include "orvmysql/Error.h"

#include <cstdio>
#include <string>

namespace orvmysql {

namespace {

// Lines of a description longer than this (long statements, mostly) are
// shortened in what(); Description() keeps them whole.
constexpr std::size_t kLongestLine = 240;
// The server's code for a table that does not exist.
constexpr unsigned kNoSuchTable = 1146;

// Cuts a line at a UTF-8 character boundary.
void AppendShortened(std::string& out, std::string_view line) {
  if (line.size() <= kLongestLine) {
    out += line;
    return;
  }
  std::size_t cut = kLongestLine;
  while (cut > 0 && (static_cast<unsigned char>(line[cut]) & 0xC0) == 0x80) --cut;
  out += line.substr(0, cut);
  out += "...";
}

// The description on one line: the lines joined by " | ", and a location that
// a description carries after " => " kept beside it.
std::string OneLine(std::string_view text) {
  std::string out;
  std::string_view separator;
  while (!text.empty()) {
    const std::size_t end = text.find_first_of("\r\n");
    out += separator;
    AppendShortened(out, text.substr(0, end));
    if (end == std::string_view::npos) break;
    const bool continues_location = out.size() >= 3 && out.compare(out.size() - 3, 3, "=> ") == 0;
    separator = continues_location ? "" : " | ";
    text.remove_prefix(end);
    while (!text.empty() && (text.front() == '\r' || text.front() == '\n' || text.front() == ' ')) {
      text.remove_prefix(1);
    }
  }
  return out;
}

// The first location the error passed through: the line after its origin in
// the source trail.
std::string_view InnermostLocation(std::string_view source) {
  constexpr std::string_view kStep = " => \r\n";
  const std::size_t first = source.find(kStep);
  if (first == std::string_view::npos) return {};
  source.remove_prefix(first + kStep.size());
  return source.substr(0, source.find(kStep));
}

std::string Hex(int32_t number) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%X", static_cast<unsigned>(number));
  return text;
}

}  // namespace

Error::Error(int32_t number, std::string source, std::string description)
    : number_(number), source_(std::move(source)), description_(std::move(description)) {}

const char* Error::what() const noexcept {
  try {
    std::string text = "orvmysql error " + std::to_string(number_) + " (" + Hex(number_) +
                       "): " + OneLine(description_);
    if (native_error_ != 0) {
      // Connector/C numbers its own errors from 2000; the server's are below.
      text += native_error_ >= 2000 && native_error_ < 3000 ? " [client error " : " [server error ";
      text += std::to_string(native_error_);
      if (!sql_state_.empty()) text += ", SQLSTATE " + sql_state_;
      text += "]";
    }
    const std::string_view location = InnermostLocation(source_);
    if (!location.empty()) {
      text += " at ";
      text += location;
    }
    if (native_error_ == kNoSuchTable) {
      text +=
          " (hint: the database lacks a table of the schema; run \"orvmysql-schema create\" for a "
          "new database or \"orvmysql-schema upgrade\" for one made by an older version)";
    }
    what_ = std::move(text);
    return what_.c_str();
  } catch (...) {
    return "orvmysql error";
  }
}

void Error::SetNative(unsigned native_error, std::string sql_state) {
  native_error_ = native_error;
  sql_state_ = std::move(sql_state);
}

void Error::AppendLocation(std::string_view location) {
  source_ += " => \r\n";
  source_ += location;
}

void Error::SetDescription(std::string description) {
  description_ = std::move(description);
}

std::string_view RuntimeErrorText(int32_t number) {
  switch (number) {
    case kErrInvalidCall:
      return "Invalid procedure call or argument";
    case kErrOverflow:
      return "Overflow";
    case kErrOutOfMemory:
      return "Out of memory";
    case kErrSubscript:
      return "Subscript out of range";
    case kErrTypeMismatch:
      return "Type mismatch";
    case kErrInternal:
      return "Internal error";
    case kErrObjectNotSet:
      return "Object variable or With block variable not set";
    case kErrInvalidUseOfNull:
      return "Invalid use of Null";
    case kErrResourceNotFound:
      return "Resource with identifier not found";
    case kErrCannotCreateObject:
      return "ActiveX component can't create object";
    case kErrDuplicateKey:
      return "This key is already associated with an element of this collection";
    default:
      return {};
  }
}

void ThrowRuntimeError(int32_t number, std::string_view detail) {
  std::string description(RuntimeErrorText(number));
  if (description.empty()) description = "Application-defined or object-defined error";
  if (!detail.empty()) {
    description += ": ";
    description += detail;
  }
  throw Error(number, "orvmysql", std::move(description));
}

}  // namespace orvmysql
