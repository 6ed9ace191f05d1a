#pragma once

// Sections of the demo program. Each drives the library through the
// engine-facing API only and prints what it does.

#include <cstdint>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>

#include "orvmysql/DataHandler.h"

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

// Stores the purchase-order definition of the definitions section under the
// name and returns its key.
int32_t StorePurchaseOrder(orvmysql::CMYSqlDP& handler, const std::string& name, std::ostream& out);

}  // namespace orvdemo
