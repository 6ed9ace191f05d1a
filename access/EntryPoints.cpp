// The C entry points of orvmysql/c.h: creation by name for hosts that load the
// library with dlopen.

#include <memory>
#include <new>
#include <string>
#include <vector>

#include "access/ObjectFactory.h"
#include "access/Version.h"
#include "orvmysql/Error.h"
#include "orvmysql/Object.h"
#include "orvmysql/c.h"

struct orvmysql_object {
  std::shared_ptr<orvmysql::IObject> object;
};

namespace {

thread_local std::string last_error;

int32_t Fail(int32_t number, std::string text) {
  last_error = std::move(text);
  return number;
}

}  // namespace

extern "C" {

int32_t orvmysql_abi_version(void) {
  return ORVMYSQL_C_ABI_VERSION;
}

const char* orvmysql_library_version(void) {
  return ORVMYSQL_VERSION_STRING;
}

int32_t orvmysql_create_object(const char* class_name, orvmysql_object** object) {
  if (object == nullptr) return Fail(orvmysql::kErrInvalidCall, "no place for the object (NULL)");
  *object = nullptr;
  if (class_name == nullptr) return Fail(orvmysql::kErrInvalidCall, "no class name (NULL)");
  try {
    *object = new orvmysql_object{orvmysql::CreateObject(class_name)};
    last_error.clear();
    return 0;
  } catch (const orvmysql::Error& e) {
    return Fail(e.Number(), e.Description());
  } catch (const std::bad_alloc&) {
    return Fail(orvmysql::kErrOutOfMemory,
                std::string(orvmysql::RuntimeErrorText(orvmysql::kErrOutOfMemory)));
  } catch (const std::exception& e) {
    return Fail(orvmysql::kErrInternal, e.what());
  }
}

void* orvmysql_object_get(const orvmysql_object* object) {
  return object != nullptr ? object->object.get() : nullptr;
}

void orvmysql_release_object(orvmysql_object* object) {
  delete object;
}

const char* orvmysql_last_error(void) {
  return last_error.c_str();
}

const char* const* orvmysql_class_names(void) {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> v;
    for (auto name : orvmysql::CreatableClassNames()) v.emplace_back(name);
    return v;
  }();
  static const std::vector<const char*> pointers = [] {
    std::vector<const char*> v;
    for (const auto& name : names) v.push_back(name.c_str());
    v.push_back(nullptr);
    return v;
  }();
  return pointers.data();
}

}  // extern "C"
