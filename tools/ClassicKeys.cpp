#include "tools/ClassicKeys.h"

#include <string>

namespace orvmysql::devkit {

std::optional<int32_t> ClassicNextKey(IConnection& connection, int32_t entity_type_code) {
  const std::string code = std::to_string(entity_type_code);
  auto rows = connection.Execute(
      "SELECT LastAllocatedKey,Seed,Increment,`Offset` FROM tblKeyGen WHERE EntityTypeCode = " +
      code);
  if (!rows->GetNext()) return std::nullopt;
  const auto row = rows->CurrentItem();
  int64_t expected = row->GetValue("LastAllocatedKey").ToLong();
  const int64_t seed = row->GetValue("Seed").ToLong();
  const int64_t step = row->GetValue("Increment").ToLong();
  int64_t key = (expected == seed || expected == 0) ? seed + row->GetValue("Offset").ToLong()
                                                    : expected + step;
  for (int attempt = 1; attempt <= 6; ++attempt, expected = key, key += step) {
    const int32_t matched = connection.ExecuteNonQuery(
        "UPDATE tblKeyGen SET LastAllocatedKey = " + std::to_string(key) +
        " WHERE EntityTypeCode = " + code + " AND LastAllocatedKey = " + std::to_string(expected));
    if (matched != 0) {
      if (matched == 1 && attempt < 6) return static_cast<int32_t>(key);
      return std::nullopt;
    }
  }
  return std::nullopt;
}

}  // namespace orvmysql::devkit
