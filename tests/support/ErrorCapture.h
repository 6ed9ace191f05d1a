#pragma once

// Capturing the errors the library raises, for unit and live tests alike.

#include <gtest/gtest.h>

#include <cstdint>

#include "orvmysql/Error.h"

namespace orvtest {

// The error f raises; a test failure when it raises none.
template <class F>
orvmysql::Error Raised(F&& f) {
  try {
    f();
  } catch (const orvmysql::Error& e) {
    return e;
  }
  ADD_FAILURE() << "no error was raised";
  return orvmysql::Error(0, "", "");
}

// The number of the error f raises, 0 when it raises none.
template <class F>
int32_t ErrorOf(F&& f) {
  try {
    f();
  } catch (const orvmysql::Error& e) {
    return e.Number();
  }
  return 0;
}

}  // namespace orvtest
