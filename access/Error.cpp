#include "orvmysql/Error.h"

#include <string>

namespace orvmysql {

Error::Error(int32_t number, std::string source, std::string description)
    : number_(number), source_(std::move(source)), description_(std::move(description)) {}

const char* Error::what() const noexcept {
  try {
    what_ = "Error " + std::to_string(number_) + ": " + description_ + "\nSource: " + source_;
    if (native_error_ != 0) {
      what_ += "\nNative error " + std::to_string(native_error_) + " [" + sql_state_ + "]";
    }
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
