#include <iomanip>
#include <string>

#include "orvmysql/orvmysql.h"
#include "tools/Demo.h"

namespace orvdemo {

namespace {

void Heading(std::ostream& out, const std::string& title) {
  out << "\n== " << title << "\n";
}

}  // namespace

void DemoFoundation(orvmysql::CMYSqlDP& handler, std::ostream& out) {
  using namespace orvmysql;
  auto connection = handler.Connection();

  Heading(out, "Data handler");
  out << "Type: " << handler.Type() << "\n";
  out << "Connection string: " << MaskedConnectionString(*connection) << "\n";

  Heading(out, "Sessions");
  handler.StartSession();
  handler.StartSession();
  out << "Two StartSession calls: one database connection serves both levels.\n";
  handler.EndSession();
  out << "First EndSession: the connection stays open (one level left).\n";
  handler.EndSession();
  out << "Second EndSession: the connection is closed.\n";

  Heading(out, "A data source per code");
  for (int code = 1; code <= 25; ++code) {
    out << "  code " << std::setw(2) << code << ": ";
    try {
      auto source = handler.GetDataSource(code);
      out << "provider created and initialised\n";
    } catch (const Error& e) {
      out << "no provider (error " << e.Number() << ")\n";
    }
  }

  Heading(out, "Keys");
  handler.StartSession();
  for (int i = 0; i < 3; ++i) {
    out << "  next work-item key (entity type -10): " << GetNextID(*connection, -10) << "\n";
  }
  handler.EndSession();

  Heading(out, "A query listed");
  auto rows = connection->Execute(
      "SELECT EntityTypeCode, LastAllocatedKey, Seed, Increment, `Offset` FROM tblKeyGen "
      "WHERE EntityTypeCode >= -11 ORDER BY EntityTypeCode DESC");
  out << "  " << rows->Count() << " rows of tblKeyGen:\n";
  out << "  code  last  seed  increment  offset\n";
  while (rows->GetNext()) {
    auto row = rows->CurrentItem();
    out << "  " << std::setw(4) << row->GetValue("EntityTypeCode").ToText() << std::setw(6)
        << row->GetValue("LastAllocatedKey").ToText() << std::setw(6)
        << row->GetValue("Seed").ToText() << std::setw(11) << row->GetValue("Increment").ToText()
        << std::setw(8) << row->GetValue("offset").ToText() << "\n";
  }

  Heading(out, "A failure and its error trail");
  try {
    handler.StartSession();
    connection->ExecuteNonQuery("UPDATE tblNoSuchTable SET x = 1");
  } catch (const Error& e) {
    out << "Number:      " << e.Number() << "\n";
    out << "Native:      " << e.NativeError() << " (SQLSTATE " << e.SqlState() << ")\n";
    out << "Description: " << e.Description() << "\n";
    out << "Source:      " << e.Source() << "\n";
  }
  handler.EndSession();
  try {
    GetNextID(*connection, -99);  // no key row for this code
  } catch (const Error& e) {
    out << "\nGetNextID(-99): error " << e.Number() << ", " << e.Description() << "\n";
    out << "Source: " << e.Source() << "\n";
  }
  try {
    handler.GetDataSource(12);
  } catch (const Error& e) {
    out << "\nGetDataSource(12): error " << e.Number() << ", " << e.Description() << "\n";
    out << "Source: " << e.Source() << "\n";
  }
}

}  // namespace orvdemo
