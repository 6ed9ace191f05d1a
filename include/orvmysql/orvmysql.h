#pragma once

// The whole public API of orvmysql.

#include "orvmysql/Attributes.h"
#include "orvmysql/ConditionBuilder.h"
#include "orvmysql/Connection.h"
#include "orvmysql/DataHandler.h"
#include "orvmysql/Definitions.h"
#include "orvmysql/Engine.h"
#include "orvmysql/Error.h"
#include "orvmysql/InstanceData.h"
#include "orvmysql/Keys.h"
#include "orvmysql/Language.h"
#include "orvmysql/List.h"
#include "orvmysql/Messaging.h"
#include "orvmysql/Object.h"
#include "orvmysql/Observer.h"
#include "orvmysql/Query.h"
#include "orvmysql/Routing.h"
#include "orvmysql/Runtime.h"
#include "orvmysql/Variant.h"
#include "orvmysql/Visitor.h"
