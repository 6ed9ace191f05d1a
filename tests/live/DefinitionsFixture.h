#pragma once

// Shared by the live tests of the definition providers: the seven providers on
// one handler, complete field arrays with recognisable values, and readers
// that turn rows into texts for comparison.

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "orvmysql/Definitions.h"
#include "support/LiveDb.h"

#include "support/ErrorCapture.h"

namespace orvtest {

// A value as the tests compare it: "NULL" for Null, else its text.
std::string Show(const orvmysql::Variant& v);

// Column name to expected text ("NULL" for a NULL).
using Expected = std::map<std::string, std::string>;

class DefinitionsTest : public LiveTest {
 protected:
  void SetUp() override;

  // Field arrays holding every position, with the given identity and
  // distinct values elsewhere (see the definitions in the .cpp file).
  static orvmysql::FieldArray DefinitionFields(const std::string& name);
  static orvmysql::FieldArray ActivityFields(int32_t definition_id, const std::string& name,
                                             const std::string& identifier);
  static orvmysql::FieldArray PropertyFields(int32_t activity_id, const std::string& name);
  static orvmysql::FieldArray ParameterAddFields(int32_t activity_id, const std::string& name);
  static orvmysql::FieldArray ProcessParamFields(int32_t definition_id, const std::string& name);
  static orvmysql::FieldArray SwitchFields(int32_t definition_id, int32_t type,
                                           const std::string& identifier);
  static orvmysql::FieldArray TransitionFields(int32_t definition_id, int32_t from,
                                               int32_t from_type, int32_t to, int32_t to_type,
                                               const std::string& identifier);

  // A name no other test of the suite uses.
  static std::string Unique(const std::string& stem);

  // Adds a definition or activity and returns the key the database gave it.
  int32_t AddDefinition(const std::string& name);
  int32_t AddDefinition(const orvmysql::FieldArray& fields);
  int32_t AddActivity(int32_t definition_id, const std::string& identifier);

  // Rows of the list as texts of the named columns, in the list's order.
  static std::vector<Expected> Read(const std::shared_ptr<orvmysql::IListIterator>& rows,
                                    const std::vector<std::string>& columns);
  // Expects exactly one row with these column texts.
  static void ExpectOneRow(const std::shared_ptr<orvmysql::IListIterator>& rows,
                           const Expected& expected);

  std::shared_ptr<orvmysql::CMYSqlDP> handler_;
  std::shared_ptr<orvmysql::IOrvDefinitionsDP> definitions_;
  std::shared_ptr<orvmysql::IActivitiesDP> activities_;
  std::shared_ptr<orvmysql::ITransitionsDP> transitions_;
  std::shared_ptr<orvmysql::ISwitchesDP> switches_;
  std::shared_ptr<orvmysql::IProcessParamsDP> process_params_;
  std::shared_ptr<orvmysql::IPropertyValueDP> properties_;
  std::shared_ptr<orvmysql::IParameterValueDP> parameters_;
};

}  // namespace orvtest
