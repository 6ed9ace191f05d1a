#include "orvmysql/Attributes.h"

#include "orvmysql/Error.h"
#include "query/TextUtil.h"

namespace orvmysql {

using detail::LowerCase;

void CAttributes::Add(std::string entity_alias, std::string schema_name, std::string name,
                      int32_t data_type) {
  auto attribute = std::make_shared<CAttribute>();
  attribute->SetEntityAlias(std::move(entity_alias));
  attribute->SetSchemaName(std::move(schema_name));
  attribute->SetName(std::move(name));
  attribute->SetDataType(data_type);
  if (!by_key_.emplace(LowerCase(attribute->SchemaName()), attribute).second) {
    ThrowRuntimeError(kErrDuplicateKey);
  }
  items_.push_back(std::move(attribute));
}

std::shared_ptr<CAttribute> CAttributes::Item(std::string_view key) const {
  auto found = by_key_.find(LowerCase(key));
  return found == by_key_.end() ? nullptr : found->second;
}

}  // namespace orvmysql
