#ifndef ORVMYSQL_C_H_
#define ORVMYSQL_C_H_

/* The library's C entry points: what a host needs to create the library's
 * objects by name after loading it with dlopen(), without linking against it.
 * Look each function up with dlsym() under its own name; the *_fn types below
 * are their pointer types. No entry point lets an exception escape.
 *
 *   void* lib = dlopen("liborvmysql.so.2", RTLD_NOW | RTLD_LOCAL);
 *   orvmysql_create_object_fn create =
 *       (orvmysql_create_object_fn)dlsym(lib, "orvmysql_create_object");
 *   orvmysql_object* handler = NULL;
 *   if (create("orvmysql.CMYSqlDP", &handler) != 0) {
 *     ... orvmysql_last_error() says why
 *   }
 *   void* object = orvmysql_object_get(handler);  (an orvmysql::IObject*)
 *   ...
 *   orvmysql_release_object(handler);
 *
 * A C++ host may use the interfaces of the public headers on the object
 * (dynamic_cast, virtual calls) without linking against the library: the
 * interfaces are abstract classes whose type information the host's compiler
 * emits itself. Errors thrown by those calls can be caught as std::exception
 * (what() gives number, description and source). Unload the library only after
 * every object that came from it is gone.
 */

#include <stdint.h>

#include "orvmysql/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Version of these entry points; it changes only when one of them changes. */
#define ORVMYSQL_C_ABI_VERSION 1

/* An owning handle of one object of the library. */
typedef struct orvmysql_object orvmysql_object;

/* ORVMYSQL_C_ABI_VERSION of the loaded library: a host checks it first. */
ORVMYSQL_EXPORT int32_t orvmysql_abi_version(void);

/* The library's version, "2.0.0". */
ORVMYSQL_EXPORT const char* orvmysql_library_version(void);

/* Creates the public class named class_name (for example "orvmysql.CMYSqlDP";
 * case does not matter) and stores an owning handle in *object. Returns 0, or
 * the error number with *object set to NULL: 429 for a name the library does
 * not know, 5 for a NULL argument. */
ORVMYSQL_EXPORT int32_t orvmysql_create_object(const char* class_name, orvmysql_object** object);

/* The object behind the handle, an orvmysql::IObject*. It stays valid as long
 * as the handle (or another reference to the object) does. */
ORVMYSQL_EXPORT void* orvmysql_object_get(const orvmysql_object* object);

/* Releases the handle; the object goes with its last reference. NULL does
 * nothing. */
ORVMYSQL_EXPORT void orvmysql_release_object(orvmysql_object* object);

/* What the last failing entry point of this thread reported, "" when none has
 * failed. Valid until the thread's next call of an entry point. */
ORVMYSQL_EXPORT const char* orvmysql_last_error(void);

/* The names of every class orvmysql_create_object creates, ended by NULL. */
ORVMYSQL_EXPORT const char* const* orvmysql_class_names(void);

typedef int32_t (*orvmysql_abi_version_fn)(void);
typedef const char* (*orvmysql_library_version_fn)(void);
typedef int32_t (*orvmysql_create_object_fn)(const char*, orvmysql_object**);
typedef void* (*orvmysql_object_get_fn)(const orvmysql_object*);
typedef void (*orvmysql_release_object_fn)(orvmysql_object*);
typedef const char* (*orvmysql_last_error_fn)(void);
typedef const char* const* (*orvmysql_class_names_fn)(void);

#ifdef __cplusplus
}
#endif

#endif /* ORVMYSQL_C_H_ */
