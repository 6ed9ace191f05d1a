#pragma once

// Attribute maps: the columns an entity's filter may name, with the table
// alias that qualifies them and the data type that selects how a condition on
// them is written as SQL.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "orvmysql/Object.h"

namespace orvmysql {

// Data type codes of CAttribute::DataType.
enum AttributeDataType : int32_t {
  kAttrLongText = 1,     // notes, message bodies: quoted, never cut
  kAttrText = 2,         // names, text identifiers: quoted, cut to 255 characters
  kAttrPrimaryKey = 3,   // numeric
  kAttrNumber = 4,       // numeric
  kAttrDateTime = 5,     // date and time
  kAttrDate = 6,         // date only
  kAttrTime = 7,         // time of day
  kAttrBoolean = 8,      // "1" or "0"
  kAttrBitMask = 9,      // state words and display masks
  kAttrForeignKey = 10,  // numeric
  kAttrSmallNumber = 11  // numeric: priorities, type codes
};

class ORVMYSQL_EXPORT CAttribute : public virtual IObject {
 public:
  const std::string& EntityAlias() const { return entity_alias_; }
  void SetEntityAlias(std::string v) { entity_alias_ = std::move(v); }
  int32_t DataType() const { return data_type_; }
  void SetDataType(int32_t v) { data_type_ = v; }
  // The column.
  const std::string& SchemaName() const { return schema_name_; }
  void SetSchemaName(std::string v) { schema_name_ = std::move(v); }
  // The name a filter uses; carried along, not a key.
  const std::string& Name() const { return name_; }
  void SetName(std::string v) { name_ = std::move(v); }

 private:
  std::string entity_alias_;
  int32_t data_type_ = 0;
  std::string schema_name_;
  std::string name_;
};

// Attributes keyed by schema name without regard to case, kept in the order
// they were added.
class ORVMYSQL_EXPORT CAttributes : public virtual IObject {
 public:
  // Creates the attribute. A schema name already in the map raises error 457.
  void Add(std::string entity_alias, std::string schema_name, std::string name, int32_t data_type);
  int32_t Count() const { return static_cast<int32_t>(items_.size()); }
  // The attribute whose schema name matches the key without regard to case,
  // or null for an unknown key.
  std::shared_ptr<CAttribute> Item(std::string_view key) const;

  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  std::vector<std::shared_ptr<CAttribute>> items_;
  std::unordered_map<std::string, std::shared_ptr<CAttribute>> by_key_;
};

}  // namespace orvmysql
