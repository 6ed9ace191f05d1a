#pragma once

// Sections of the demo program. Each drives the library through the
// engine-facing API only and prints what it does.

#include <cstdint>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvmysql/DataHandler.h"
#include "orvmysql/Query.h"

namespace orvdemo {

// The provider for a data-source code, cast to the interface the section uses.
template <class T>
std::shared_ptr<T> Source(orvmysql::CMYSqlDP& handler, int32_t code) {
  auto typed = std::dynamic_pointer_cast<T>(handler.GetDataSource(code));
  if (!typed) throw std::runtime_error("provider without the expected interface");
  return typed;
}

void DemoFoundation(orvmysql::CMYSqlDP& handler, std::ostream& out);
void DemoDefinitions(orvmysql::CMYSqlDP& handler, std::ostream& out);
void DemoQueries(orvmysql::CMYSqlDP& handler, std::ostream& out);
void DemoLanguages(orvmysql::CMYSqlDP& handler, std::ostream& out);
void DemoMessaging(orvmysql::CMYSqlDP& handler, std::ostream& out);
void DemoRuntime(orvmysql::CMYSqlDP& handler, std::ostream& out);
void DemoInstanceData(orvmysql::CMYSqlDP& handler, std::ostream& out);
void DemoEngine(orvmysql::CMYSqlDP& handler, std::ostream& out);

// A State word as a person reads it: "open, started", "closed/terminated, paused".
std::string StateWords(int32_t state);
// A query document: every condition must hold; one optional sort key.
std::string Filter(const std::string& entity,
                   std::vector<std::shared_ptr<orvmysql::CCondition>> conditions,
                   const std::string& sort_key = {},
                   orvmysql::SortOrderEnum order = orvmysql::dsAscending);
// The condition "attribute = value".
std::shared_ptr<orvmysql::CCondition> Is(const std::string& attribute, orvmysql::Variant value);

// Stores the purchase-order definition of the definitions section under the
// name and returns its key.
int32_t StorePurchaseOrder(orvmysql::CMYSqlDP& handler, const std::string& name, std::ostream& out);

}  // namespace orvdemo
