#pragma once

// The whole public API of orvmysql.

#include "orvmysql/Connection.h"
#include "orvmysql/DataHandler.h"
#include "orvmysql/Error.h"
#include "orvmysql/Keys.h"
#include "orvmysql/List.h"
#include "orvmysql/Object.h"
#include "orvmysql/Variant.h"
