#pragma once

#include <memory>
#include <string_view>

#include "orvmysql/Export.h"

namespace orvmysql {

// Common root of every interface and class the library hands out. Objects are
// reference counted through std::shared_ptr; asking an object for another of
// its interfaces is std::dynamic_pointer_cast. The destructor is inline so
// that a host which loads the library with dlopen (see orvmysql/c.h) can cast
// to the abstract interfaces without linking against it.
class ORVMYSQL_EXPORT IObject {
 public:
  virtual ~IObject() = default;
};

// Creates a public class by its name, for example "orvmysql.CMYSqlDP" or
// "orvmysql.CQuery". Raises error 429 for a name the library does not know.
ORVMYSQL_EXPORT std::shared_ptr<IObject> CreateObject(std::string_view class_name);

// Creates a public class by name and casts it to interface T; raises error 13
// when the object does not implement T.
template <class T>
std::shared_ptr<T> CreateObjectAs(std::string_view class_name);

}  // namespace orvmysql

#include "orvmysql/Error.h"

template <class T>
std::shared_ptr<T> orvmysql::CreateObjectAs(std::string_view class_name) {
  auto typed = std::dynamic_pointer_cast<T>(CreateObject(class_name));
  if (!typed) ThrowRuntimeError(kErrTypeMismatch);
  return typed;
}
