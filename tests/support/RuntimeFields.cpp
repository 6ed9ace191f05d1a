#include "support/RuntimeFields.h"

#include "orvmysql/Variant.h"

namespace orvtest {

using orvmysql::Date;
using orvmysql::FieldArray;
using orvmysql::Variant;

FieldArray SampleProcessFields(const std::string& guid, int32_t definition_id, int32_t parent_id) {
  return {"Order 'A' \\ 1",
          definition_id,
          Date::FromParts(2024, 5, 17, 9, 0, 0),
          "u-7",
          Date::FromParts(2024, 5, 31, 18, 0, 0),
          67108864,
          3,
          Date::FromParts(2024, 6, 3, 12, 30, 0),
          guid,
          parent_id,
          "",
          "Ann",
          Date::FromParts(2024, 5, 17, 8, 59, 0),
          Variant(),
          Variant(),
          "first note"};
}

FieldArray SampleWorkitemFields(int32_t process_id, int32_t activity_instance_id,
                                const std::string& resource) {
  return {67108864,
          Date::FromParts(2024, 5, 17, 9, 6, 0),
          Variant(),
          Variant(),
          resource,
          "user",
          "",
          "Review order",
          "",
          activity_instance_id,
          process_id,
          1,
          Variant(),
          14,
          Date::FromParts(2024, 5, 17, 10, 0, 0),
          Variant(),
          Date::FromParts(2024, 5, 21, 12, 0, 0),
          4,
          8};
}

}  // namespace orvtest
