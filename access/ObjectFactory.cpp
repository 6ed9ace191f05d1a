#include <algorithm>
#include <array>
#include <functional>
#include <string_view>
#include <utility>

#include "access/Connection.h"
#include "definitions/CActivitiesDP.h"
#include "definitions/CActivityParamBagDP.h"
#include "definitions/CActivityPropertyBagDP.h"
#include "definitions/COrvDefinitionsDP.h"
#include "definitions/CProcessParamsDP.h"
#include "definitions/CSwitchesDP.h"
#include "definitions/CTransitionsDP.h"
#include "messaging/PendingProviders.h"
#include "orvmysql/DataHandler.h"
#include "orvmysql/Error.h"
#include "runtime/PendingProviders.h"

namespace orvmysql {

IObject::~IObject() = default;

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
};

bool SameName(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
  });
}

}  // namespace

std::shared_ptr<IObject> CreateObject(std::string_view class_name) {
  for (const auto& [name, make] : kClasses) {
    if (SameName(name, class_name)) return make();
  }
  ThrowRuntimeError(kErrCannotCreateObject, class_name);
}

}  // namespace orvmysql
