#pragma once

// Complete field arrays of the process-instance and work-item providers with
// recognisable values (a name with a quote and a backslash, dates, Null and
// empty texts), for the tests that add runtime rows.

#include <cstdint>
#include <string>

#include "orvmysql/Variant.h"

namespace orvtest {

orvmysql::FieldArray SampleProcessFields(const std::string& guid, int32_t definition_id,
                                         int32_t parent_id);
orvmysql::FieldArray SampleWorkitemFields(int32_t process_id, int32_t activity_instance_id,
                                          const std::string& resource);

}  // namespace orvtest
