#pragma once

// Sections of the demo program. Each drives the library through the
// engine-facing API only and prints what it does.

#include <ostream>

#include "orvmysql/DataHandler.h"

namespace orvdemo {

void DemoFoundation(orvmysql::CMYSqlDP& handler, std::ostream& out);
void DemoDefinitions(orvmysql::CMYSqlDP& handler, std::ostream& out);
void DemoQueries(orvmysql::CMYSqlDP& handler, std::ostream& out);
void DemoLanguages(orvmysql::CMYSqlDP& handler, std::ostream& out);
void DemoMessaging(orvmysql::CMYSqlDP& handler, std::ostream& out);

}  // namespace orvdemo
