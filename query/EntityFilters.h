#pragma once

// The list filters of the work-item, process-instance, activity-instance and
// message providers. Each provider keeps its attribute map (the columns a
// filter may name) in a std::shared_ptr<CAttributes> member and passes it to
// its filter routine, which builds the map on first use, reads the filter's
// query document and renders WHERE and ORDER BY text against the map:
//
//   tail = " WHERE " + criteria (only when the criteria render to text)
//        + " " + " ORDER BY " + alias.column ASC|DESC, ... (only with sort keys)
//
// Failures keep their number and get the provider's location text
// ("CWorkitemsDP:ParseFilter Ln " ...) added to their source: error 5 for a
// bad document, 8194 for a condition or sort key naming an attribute that is
// not in the map, 8195 for an operator the attribute's type does not take.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "orvmysql/Attributes.h"

namespace orvmysql {

// The attribute maps, newly built.
std::shared_ptr<CAttributes> WorkitemAttributes();
std::shared_ptr<CAttributes> ProcInstanceAttributes();
std::shared_ptr<CAttributes> ActivityInstanceAttributes();
std::shared_ptr<CAttributes> MessageAttributes();

// The whole work-item statement: the select head chosen by the query's
// entity name ("" or "tblWorkitems": the work items; "vWorkitemsProcess":
// joined with their process instance; any other name raises error 5), then
// " " and the tail.
std::string ParseWorkitemFilter(std::string_view filter, std::shared_ptr<CAttributes>& attributes);

// The tail, which the provider puts after its select head and a blank.
std::string ParseProcInstanceFilter(std::string_view filter,
                                    std::shared_ptr<CAttributes>& attributes);
std::string ParseActivityInstanceFilter(std::string_view filter,
                                        std::shared_ptr<CAttributes>& attributes);

// The parts from which the message provider assembles its statement.
struct MessageFilter {
  std::string condition;  // the tail
  int32_t limit = -1;     // the query's MaxRows, -1 for no limit
  // "FROM tblMessages " or, when the query reaches recipient columns, the join
  // with tblMsgReceipent.
  std::string from;
  // "DISTINCT" with the recipient join or when the query asks for it, else "".
  std::string distinct;
  // The recipient view's columns for the entity "tblReceivedMessages", else
  // the plain message columns.
  std::string columns;
  // The first condition or sort key naming a tblMessages column, "" when
  // none does (a recipient list can take only recipient columns).
  std::string message_attribute;
};

// The query reaches recipient columns when its entity is "tblReceivedMessages"
// or a condition or sort key names a tblMsgReceipent attribute.
MessageFilter ParseMessageFilter(std::string_view filter, std::shared_ptr<CAttributes>& attributes);

}  // namespace orvmysql
