#pragma once

// The process's statement observer and the reporting of one statement.

#include <memory>

#include "orvmysql/Observer.h"

namespace orvmysql::detail {

// The process's observer, null when none is installed.
std::shared_ptr<const StatementObserver> ProcessStatementObserver();

// Reports the statement to each observer given; exceptions leaving them are
// dropped.
void ReportStatement(const StatementObserver* handler, const StatementObserver* process,
                     const StatementEvent& event) noexcept;

}  // namespace orvmysql::detail
