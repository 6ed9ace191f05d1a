#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "orvmysql/Connection.h"
#include "orvmysql/Object.h"
#include "orvmysql/Observer.h"

namespace orvmysql {

// Implemented by every provider: receives the session's connection.
class ORVMYSQL_EXPORT IDataSource : public virtual IObject {
 public:
  virtual void Init(std::shared_ptr<IConnection> connection) = 0;
};

class ORVMYSQL_EXPORT IDataProvider : public virtual IObject {
 public:
  // Always "MYSQL".
  virtual std::string Type() const = 0;
};

// Data-source codes of IOrvDataHandler::GetDataSource.
enum DataSourceCode : int32_t {
  kDsDefinitions = 4,           // COrvDefinitionsDP, IOrvDefinitionsDP
  kDsTransitions = 5,           // CTransitionsDP, ITransitionsDP
  kDsSwitches = 6,              // CSwitchesDP, ISwitchesDP
  kDsActivities = 7,            // CActivitiesDP, IActivitiesDP
  kDsAIPropertyData = 8,        // CAIPropertyDataDP, ITaskPropertyDP
  kDsActivityInstanceData = 9,  // CActivityInstanceDataDP, ITaskParamsDP
  kDsWorkitems = 10,            // CWorkitemsDP, IWorkitemsDP
  kDsProcInstance = 11,         // CProcInstanceDP, IProcInstanceDP
  kDsEngine = 13,               // COrvEngineDP, IOrvEngineDP
  kDsActivityInstance = 14,     // CActivityInstanceDP, IActivityInstanceDP
  kDsSplitInstance = 15,        // CSplitInstanceDP
  kDsPathInstance = 16,         // CPathInstanceDP
  kDsThreadInstance = 17,       // CThreadInstanceDP
  kDsMessage = 18,              // CMessageDP
  kDsAttachment = 19,           // CAttachmentDP
  kDsActivityParamBag = 20,     // CActivityParamBagDP, IParameterValueDP
  kDsPIReleventData = 21,       // CPIReleventDataDP, IParameterValueDP
  kDsProcInstData = 22,         // CProcInstDataDP, IProcInstanceParamsDP
  kDsActivityPropertyBag = 23,  // CActivityPropertyBagDP, IPropertyValueDP
  kDsProcessParams = 24,        // CProcessParamsDP, IProcessParamsDP
};

class ORVMYSQL_EXPORT IOrvDataHandler : public virtual IObject {
 public:
  // Creates the session's connection from the connector, without connecting;
  // replaces any earlier one.
  virtual void Init(const IDPConnector& connector) = 0;
  // Raises 91 with " (Connection)" appended when Init was never called.
  virtual void StartSession() = 0;
  // A new provider for the code, initialised with the handler's connection.
  // An unknown code raises error 91.
  virtual std::shared_ptr<IDataSource> GetDataSource(int32_t code) = 0;
  virtual void EndSession(const Variant& unused = Variant()) = 0;
};

// The data handler the engine creates ("orvmysql.CMYSqlDP").
//
// Threading: a handler and the providers it hands out share one connection
// and are used from one thread at a time; give each thread a handler of its
// own. Handlers on different threads do not interfere.
class ORVMYSQL_EXPORT CMYSqlDP : public IDataProvider, public IOrvDataHandler {
 public:
  // IDataProvider
  std::string Type() const override;

  // IOrvDataHandler
  void Init(const IDPConnector& connector) override;
  void StartSession() override;
  std::shared_ptr<IDataSource> GetDataSource(int32_t code) override;
  void EndSession(const Variant& unused = Variant()) override;

  // The session's connection, null before Init.
  std::shared_ptr<IConnection> Connection() const { return connection_; }

  // Reports every statement of this handler and its providers to the observer
  // (as well as to the process's, see Observer.h); an empty function removes
  // it. It stays installed across Init.
  void SetStatementObserver(StatementObserver observer);

 private:
  std::shared_ptr<IConnection> connection_;
  std::shared_ptr<const StatementObserver> observer_;
};

// A holder that hands a connection on as one object ("orvmysql.CDPContext").
class ORVMYSQL_EXPORT CDPContext : public virtual IObject {
 public:
  std::shared_ptr<IConnection> Connection() const { return connection_; }
  void SetConnection(std::shared_ptr<IConnection> connection) {
    connection_ = std::move(connection);
  }

 private:
  std::shared_ptr<IConnection> connection_;
};

}  // namespace orvmysql
