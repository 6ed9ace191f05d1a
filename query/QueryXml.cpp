// The query document: CQuery::ToXML and CQuery::FromXML.
//
// <query entity=".." maxrows=".." distinct=".." columnset="">
//   <columnset/>
//   <criteria><conditionexpression logicaloperator="dloAnd">
//     <conditionexpressions>..nested conditionexpression..</conditionexpressions>
//     <conditions><condition attributename=".." operator=".."
//     valuetype="..">value</condition></conditions>
//   </conditionexpression></criteria>
//   <joins/>
//   <orderby><sort attributename=".." sortorder=".."/></orderby>
//   <parameters/>
// </query>
//
// Enumerations are written by name and read by name (any case) or number.
// A condition's value is its element text. Values that are not plain text
// carry a vartype attribute (null, boolean, long, double, date, and text for
// a text of blanks only) so that reading gives back the same value; without
// it the text is a text value, and an element without text has no value.

#include <pugixml.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>

#include "access/NumberText.h"
#include "orvmysql/Query.h"
#include "query/Nesting.h"
#include "query/Operators.h"
#include "query/TextUtil.h"

namespace orvmysql {

namespace {

using detail::EnumName;
using detail::TrimBlanks;

constexpr unsigned kParseOptions =
    pugi::parse_cdata | pugi::parse_escapes | pugi::parse_ws_pcdata;  // values kept as written

bool IsBlank(std::string_view text) {
  return TrimBlanks(text).empty();
}

// ---- writing ----

std::string EnumText(std::span<const EnumName> names, int32_t value) {
  const std::string_view name = detail::NameOf(names, value);
  return name.empty() ? std::to_string(value) : std::string(name);
}

// A date as "yyyy-mm-dd hh:mm:ss" when that reads back to the same day
// count, else as the day count itself.
std::string DateText(Date date) {
  try {
    std::string text = Variant(date).ToText();
    if (Variant(text).ToDate() == date) return text;
  } catch (const Error&) {
  }
  return DoubleText(date.Serial());
}

void WriteValue(pugi::xml_node condition, const Variant& value) {
  std::string text;
  std::string_view type;
  switch (value.GetType()) {
    case Variant::Type::Empty:
      return;
    case Variant::Type::Null:
      type = "null";
      break;
    case Variant::Type::Boolean:
      type = "boolean";
      text = value.ToBoolean() ? "true" : "false";
      break;
    case Variant::Type::Long:
      type = "long";
      text = std::to_string(value.ToLong());
      break;
    case Variant::Type::Double:
      type = "double";
      text = DoubleText(value.ToDouble());
      break;
    case Variant::Type::Date:
      type = "date";
      text = DateText(value.ToDate());
      break;
    case Variant::Type::Text:
      text = value.Text();
      if (IsBlank(text)) type = "text";
      break;
  }
  if (!type.empty()) condition.append_attribute("vartype") = std::string(type).c_str();
  if (!text.empty()) condition.append_child(pugi::node_pcdata).set_value(text.c_str());
}

void WriteExpression(pugi::xml_node parent, const CConditionExpression& expression) {
  pugi::xml_node node = parent.append_child("conditionexpression");
  node.append_attribute("logicaloperator") =
      EnumText(detail::LogicalOperatorNames(), expression.LogicalOperator()).c_str();
  pugi::xml_node nested = node.append_child("conditionexpressions");
  for (const auto& child : *expression.ConditionExpressions()) WriteExpression(nested, *child);
  pugi::xml_node conditions = node.append_child("conditions");
  for (const auto& condition : *expression.Conditions()) {
    pugi::xml_node item = conditions.append_child("condition");
    item.append_attribute("attributename") = condition->AttributeName().c_str();
    item.append_attribute("operator") =
        EnumText(detail::OperatorNames(), condition->Operator()).c_str();
    item.append_attribute("valuetype") =
        EnumText(detail::ValueTypeNames(), condition->ValueType()).c_str();
    WriteValue(item, condition->Value());
  }
}

// ---- reading ----

// Reads one document; every fault raises error 5 naming the fault and where
// it is in the text.
class DocumentReader {
 public:
  explicit DocumentReader(std::string_view xml) : xml_(xml) {}

  pugi::xml_node Root() {
    const pugi::xml_parse_result parsed =
        doc_.load_buffer(xml_.data(), xml_.size(), kParseOptions, pugi::encoding_utf8);
    if (!parsed) {
      Fail(std::string("not well-formed XML: ") + parsed.description(), parsed.offset);
    }
    pugi::xml_node root = doc_.child("query");
    if (!root) Fail("the root element 'query' is missing", 0);
    return root;
  }

  std::shared_ptr<CConditionExpression> Expression(pugi::xml_node node, int depth) {
    if (depth > kMaxExpressionDepth) {
      Fail("condition expressions are nested deeper than " + std::to_string(kMaxExpressionDepth) +
               " levels",
           node.offset_debug());
    }
    auto expression = std::make_shared<CConditionExpression>();
    if (pugi::xml_attribute op = node.attribute("logicaloperator")) {
      expression->SetLogicalOperator(
          static_cast<LogicalOperatorEnum>(Enum(detail::LogicalOperatorNames(), node, op)));
    }
    for (pugi::xml_node child :
         node.child("conditionexpressions").children("conditionexpression")) {
      expression->ConditionExpressions()->Add(Expression(child, depth + 1));
    }
    for (pugi::xml_node child : node.child("conditions").children("condition")) {
      expression->Conditions()->Add(Condition(child));
    }
    return expression;
  }

  std::shared_ptr<COrderExpression> Sort(pugi::xml_node node) {
    auto key = std::make_shared<COrderExpression>(node.attribute("attributename").value());
    if (pugi::xml_attribute order = node.attribute("sortorder")) {
      key->SetSortOrder(static_cast<SortOrderEnum>(Enum(detail::SortOrderNames(), node, order)));
    }
    return key;
  }

  int32_t MaxRows(pugi::xml_node root) {
    pugi::xml_attribute rows = root.attribute("maxrows");
    if (IsBlank(rows.value())) return 0;
    // A number only: the empty name list leaves just the decimal form.
    return Enum({}, root, rows);
  }

  bool Distinct(pugi::xml_node root) {
    pugi::xml_attribute distinct = root.attribute("distinct");
    bool flag = false;
    if (!IsBlank(distinct.value()) && !ParseFlag(TrimBlanks(distinct.value()), flag)) {
      Unknown(root, distinct);
    }
    return flag;
  }

 private:
  std::shared_ptr<CCondition> Condition(pugi::xml_node node) {
    auto condition = std::make_shared<CCondition>();
    condition->SetAttributeName(node.attribute("attributename").value());
    if (pugi::xml_attribute op = node.attribute("operator")) {
      condition->SetOperator(
          static_cast<ConditionOperatorEnum>(Enum(detail::OperatorNames(), node, op)));
    }
    if (pugi::xml_attribute type = node.attribute("valuetype")) {
      condition->SetValueType(
          static_cast<ConditionFieldValueTypeEnum>(Enum(detail::ValueTypeNames(), node, type)));
    }
    condition->SetValue(Value(node));
    return condition;
  }

  Variant Value(pugi::xml_node node) {
    std::string text;
    for (pugi::xml_node part : node.children()) {
      if (part.type() == pugi::node_pcdata || part.type() == pugi::node_cdata) text += part.value();
    }
    pugi::xml_attribute kind = node.attribute("vartype");
    if (!kind) return IsBlank(text) ? Variant() : Variant(std::move(text));
    const std::string_view type = kind.value();
    const std::string_view trimmed = TrimBlanks(text);
    if (type == "text") return Variant(std::move(text));
    if (type == "null") return Variant(Null);
    if (type == "boolean") {
      bool flag = false;
      if (ParseFlag(trimmed, flag)) return Variant(flag);
    } else if (type == "long") {
      int32_t number = 0;
      if (Parse(trimmed, number)) return Variant(number);
    } else if (type == "double") {
      double number = 0;
      if (Parse(trimmed, number)) return Variant(number);
    } else if (type == "date") {
      double serial = 0;
      if (Parse(trimmed, serial) && std::isfinite(serial)) return Variant(Date(serial));
      try {
        return Variant(Variant(std::string(trimmed)).ToDate());
      } catch (const Error&) {
      }
    } else {
      Unknown(node, kind);
    }
    Fail("the value '" + text + "' is not a valid " + std::string(type), node.offset_debug());
  }

  // true, false (any case), 1, 0 or -1.
  static bool ParseFlag(std::string_view text, bool& flag) {
    static constexpr EnumName kFlags[] = {{1, "true"}, {0, "false"}};
    const std::optional<int32_t> value = detail::ValueOf(kFlags, text);
    if (!value || (*value != 0 && *value != 1 && *value != -1)) return false;
    flag = *value != 0;
    return true;
  }

  template <class Number>
  static bool Parse(std::string_view text, Number& number) {
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), number);
    return ec == std::errc() && end == text.data() + text.size() && !text.empty();
  }

  int32_t Enum(std::span<const EnumName> names, pugi::xml_node node,
               pugi::xml_attribute attribute) {
    const std::optional<int32_t> value = detail::ValueOf(names, TrimBlanks(attribute.value()));
    if (!value) Unknown(node, attribute);
    return *value;
  }

  [[noreturn]] void Unknown(pugi::xml_node node, pugi::xml_attribute attribute) {
    Fail("unknown value '" + std::string(attribute.value()) + "' of the attribute '" +
             attribute.name() + "' of the element '" + node.name() + "'",
         node.offset_debug());
  }

  [[noreturn]] void Fail(const std::string& what, std::ptrdiff_t offset) {
    ThrowRuntimeError(kErrInvalidCall,
                      "query document: " + what + " (" + detail::LineAndColumn(xml_, offset) + ")");
  }

  std::string_view xml_;
  pugi::xml_document doc_;
};

}  // namespace

std::string CQuery::ToXML() const {
  pugi::xml_document doc;
  pugi::xml_node query = doc.append_child("query");
  query.append_attribute("entity") = entity_name_.c_str();
  query.append_attribute("maxrows") = max_rows_;
  query.append_attribute("distinct") = distinct_ ? "true" : "false";
  query.append_attribute("columnset") = "";
  query.append_child("columnset");
  pugi::xml_node criteria = query.append_child("criteria");
  if (criteria_) {
    detail::RequireNestingWithinLimit(*criteria_);
    WriteExpression(criteria, *criteria_);
  }
  query.append_child("joins");
  pugi::xml_node order_by = query.append_child("orderby");
  for (const auto& key : *order_by_) {
    pugi::xml_node sort = order_by.append_child("sort");
    sort.append_attribute("attributename") = key->AttributeName().c_str();
    sort.append_attribute("sortorder") =
        EnumText(detail::SortOrderNames(), key->SortOrder()).c_str();
  }
  query.append_child("parameters");
  std::ostringstream out;
  doc.save(out, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
  return std::move(out).str();
}

void CQuery::FromXML(std::string_view xml) {
  DocumentReader reader(xml);
  const pugi::xml_node root = reader.Root();
  // Everything is read before anything is assigned, so a fault leaves this
  // query as it was.
  std::shared_ptr<CConditionExpression> criteria;
  if (pugi::xml_node top = root.child("criteria").child("conditionexpression")) {
    criteria = reader.Expression(top, 1);
  }
  auto order_by = std::make_shared<COrderExpressionList>();
  for (pugi::xml_node sort : root.child("orderby").children("sort")) {
    order_by->Add(reader.Sort(sort));
  }
  const int32_t max_rows = reader.MaxRows(root);
  const bool distinct = reader.Distinct(root);

  entity_name_ = root.attribute("entity").value();
  criteria_ = std::move(criteria);
  *order_by_ = *order_by;  // callers may hold the list
  distinct_ = distinct;
  SetMaxRows(max_rows);
}

}  // namespace orvmysql
