#include <array>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "access/AsciiCase.h"
#include "access/Connection.h"
#include "access/DataSourceFactory.h"
#include "access/ObjectFactory.h"
#include "definitions/CActivitiesDP.h"
#include "definitions/CActivityParamBagDP.h"
#include "definitions/CActivityPropertyBagDP.h"
#include "definitions/COrvDefinitionsDP.h"
#include "definitions/CProcessParamsDP.h"
#include "definitions/CSwitchesDP.h"
#include "definitions/CTransitionsDP.h"
#include "messaging/CAttachmentDP.h"
#include "messaging/CMessageDP.h"
#include "orvmysql/Attributes.h"
#include "orvmysql/ConditionBuilder.h"
#include "orvmysql/DataHandler.h"
#include "orvmysql/Error.h"
#include "orvmysql/Query.h"
#include "runtime/CAIPropertyDataDP.h"
#include "runtime/CActivityInstanceDP.h"
#include "runtime/CActivityInstanceDataDP.h"
#include "runtime/COrvEngineDP.h"
#include "runtime/CPIReleventDataDP.h"
#include "runtime/CPathInstanceDP.h"
#include "runtime/CProcInstDataDP.h"
#include "runtime/CProcInstanceDP.h"
#include "runtime/CSplitInstanceDP.h"
#include "runtime/CThreadInstanceDP.h"
#include "runtime/CWorkitemsDP.h"

namespace orvmysql {

namespace {

template <class T>
std::shared_ptr<IObject> Make() {
  return std::make_shared<T>();
}

using Maker = std::shared_ptr<IObject> (*)();

// Every class the engine may create by name. Providers created this way still
// need IDataSource::Init with a connection before use.
constexpr std::pair<std::string_view, Maker> kClasses[] = {
    {"orvmysql.CMYSqlDP", &Make<CMYSqlDP>},
    {"orvmysql.CDPContext", &Make<CDPContext>},
    {"orvmysql.CDPConnector", &Make<CDPConnector>},
    {"orvmysql.CConnection", &Make<CConnection>},
    {"orvmysql.COrvDefinitionsDP", &Make<COrvDefinitionsDP>},
    {"orvmysql.CTransitionsDP", &Make<CTransitionsDP>},
    {"orvmysql.CSwitchesDP", &Make<CSwitchesDP>},
    {"orvmysql.CActivitiesDP", &Make<CActivitiesDP>},
    {"orvmysql.CAIPropertyDataDP", &Make<CAIPropertyDataDP>},
    {"orvmysql.CActivityInstanceDataDP", &Make<CActivityInstanceDataDP>},
    {"orvmysql.CWorkitemsDP", &Make<CWorkitemsDP>},
    {"orvmysql.CProcInstanceDP", &Make<CProcInstanceDP>},
    {"orvmysql.COrvEngineDP", &Make<COrvEngineDP>},
    {"orvmysql.CActivityInstanceDP", &Make<CActivityInstanceDP>},
    {"orvmysql.CSplitInstanceDP", &Make<CSplitInstanceDP>},
    {"orvmysql.CPathInstanceDP", &Make<CPathInstanceDP>},
    {"orvmysql.CThreadInstanceDP", &Make<CThreadInstanceDP>},
    {"orvmysql.CMessageDP", &Make<CMessageDP>},
    {"orvmysql.CAttachmentDP", &Make<CAttachmentDP>},
    {"orvmysql.CActivityParamBagDP", &Make<CActivityParamBagDP>},
    {"orvmysql.CPIReleventDataDP", &Make<CPIReleventDataDP>},
    {"orvmysql.CProcInstDataDP", &Make<CProcInstDataDP>},
    {"orvmysql.CActivityPropertyBagDP", &Make<CActivityPropertyBagDP>},
    {"orvmysql.CProcessParamsDP", &Make<CProcessParamsDP>},
    {"orvmysql.CQuery", &Make<CQuery>},
    {"orvmysql.CCondition", &Make<CCondition>},
    {"orvmysql.CConditionExpression", &Make<CConditionExpression>},
    {"orvmysql.COrderExpression", &Make<COrderExpression>},
    {"orvmysql.CConditions", &Make<CConditions>},
    {"orvmysql.CConditionExpressionList", &Make<CConditionExpressionList>},
    {"orvmysql.COrderExpressionList", &Make<COrderExpressionList>},
    {"orvmysql.CConditionToStringBuilder", &Make<CConditionToStringBuilder>},
    {"orvmysql.CAttributes", &Make<CAttributes>},
    {"orvmysql.CAttribute", &Make<CAttribute>},
    {"orvmysql.CNode", &Make<CNode>},
};

}  // namespace

std::shared_ptr<IDataSource> NewDataSource(int32_t code) {
  switch (code) {
    case kDsDefinitions:
      return std::make_shared<COrvDefinitionsDP>();
    case kDsTransitions:
      return std::make_shared<CTransitionsDP>();
    case kDsSwitches:
      return std::make_shared<CSwitchesDP>();
    case kDsActivities:
      return std::make_shared<CActivitiesDP>();
    case kDsAIPropertyData:
      return std::make_shared<CAIPropertyDataDP>();
    case kDsActivityInstanceData:
      return std::make_shared<CActivityInstanceDataDP>();
    case kDsWorkitems:
      return std::make_shared<CWorkitemsDP>();
    case kDsProcInstance:
      return std::make_shared<CProcInstanceDP>();
    case kDsEngine:
      return std::make_shared<COrvEngineDP>();
    case kDsActivityInstance:
      return std::make_shared<CActivityInstanceDP>();
    case kDsSplitInstance:
      return std::make_shared<CSplitInstanceDP>();
    case kDsPathInstance:
      return std::make_shared<CPathInstanceDP>();
    case kDsThreadInstance:
      return std::make_shared<CThreadInstanceDP>();
    case kDsMessage:
      return std::make_shared<CMessageDP>();
    case kDsAttachment:
      return std::make_shared<CAttachmentDP>();
    case kDsActivityParamBag:
      return std::make_shared<CActivityParamBagDP>();
    case kDsPIReleventData:
      return std::make_shared<CPIReleventDataDP>();
    case kDsProcInstData:
      return std::make_shared<CProcInstDataDP>();
    case kDsActivityPropertyBag:
      return std::make_shared<CActivityPropertyBagDP>();
    case kDsProcessParams:
      return std::make_shared<CProcessParamsDP>();
    default:
      return nullptr;
  }
}

std::vector<std::string_view> CreatableClassNames() {
  std::vector<std::string_view> names;
  for (const auto& entry : kClasses) names.push_back(entry.first);
  return names;
}

std::shared_ptr<IObject> CreateObject(std::string_view class_name) {
  for (const auto& [name, make] : kClasses) {
    if (detail::AsciiSameText(name, class_name)) return make();
  }
  ThrowRuntimeError(kErrCannotCreateObject, class_name);
}

}  // namespace orvmysql
