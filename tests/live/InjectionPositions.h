#pragma once

// Every place where a caller's text reaches SQL, as one table for the
// injection replay (InjectionLiveTest.cpp): each entry runs one operation
// with the text in one position. InjectionPositions.cpp says how to add one.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "orvmysql/DataHandler.h"

namespace orvtest {

// The handler under test and the rows that Update positions write to and
// name checks compare against.
struct InjectionTargets {
  std::shared_ptr<orvmysql::CMYSqlDP> handler;
  int32_t definition = 1;
  int32_t activity = 1;
  std::string activity_identifier = "step";
  int32_t transition = 1;
  int32_t switch_row = 1;
  int32_t process_param = 1;
  int32_t property = 1;
  int32_t parameter = 1;
  int32_t split = 1;
  int32_t message = 1;
  int32_t outgoing = 1;  // sent again and again, with one recipient
  int32_t attachment = 1;
  int32_t process = 1;
  int32_t activity_instance = 1;
  int32_t workitem = 1;
};

struct InjectionPosition {
  std::string name;  // operation and position, for the report
  // Runs the operation with the text in the position; a plain text must run
  // without error.
  std::function<void(const InjectionTargets&, const std::string& text)> run;
  // The text travels inside an XML document, which cannot carry NUL.
  bool document = false;
};

const std::vector<InjectionPosition>& InjectionPositions();

// Creates the rows the positions refer to through the handler's providers.
InjectionTargets PrepareInjectionTargets(std::shared_ptr<orvmysql::CMYSqlDP> handler);

}  // namespace orvtest
